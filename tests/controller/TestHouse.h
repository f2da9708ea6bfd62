// What the tests of a running core share: a scratch folder, an audio server that follows a script, an HTTP
// client.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "HeldPort.h"
#include "app/Core.h"
#include "front/http/HttpServer.h"

namespace korvel::controller {

class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    const std::string& Path() const { return m_path; }
    std::string File(const std::string& name) const { return m_path + "/" + name; }
    // Writes a file in the folder and returns its path.
    std::string Write(const std::string& name, const std::string& text) const;
    // The names in `folder`, a folder in this one, that begin with `start`, in order.
    std::vector<std::string> Names(const std::string& folder, const std::string& start) const;

private:
    std::string m_path;
};

std::string ReadFile(const std::string& path);

// The driver thread of a test. Waits for conditions, never for time.
class TestLoop {
public:
    asio::io_context loop{1};

    // Runs handlers until `condition` holds; false when that takes too long.
    bool RunUntil(const std::function<bool()>& condition);
    // Runs `body` on a thread of its own and handlers meanwhile; false when that takes too long.
    bool RunBeside(const std::function<void()>& body);
    // Runs what is due now.
    void RunReady();
};

// An audio server on the loop: takes one connection at a time, remembers every line and answers as a real one
// would. Stations play at once.
class ScriptedServer {
public:
    explicit ScriptedServer(TestLoop& loop);
    ~ScriptedServer();

    std::uint16_t GetPort() const { return m_port.Number(); }
    bool IsConnected() const { return m_connection != nullptr; }
    int GetConnections() const { return m_connections; }
    int GetPings() const { return m_pings; }
    // Without the core's pings.
    const std::vector<std::string>& GetLines() const { return m_lines; }
    // True when a line whose text after its number starts with `text` came.
    bool Heard(const std::string& text) const;

    // Waits for a connection first.
    void Send(const std::string& bytes);
    // As a server that dies: nothing is left listening.
    void Kill();
    // Listens on the same port again.
    void Restart();
    // From now on it answers nothing.
    void Mute() { m_mute = true; }
    void Unmute() { m_mute = false; }
    // As one that was written before there were pings.
    void IgnorePings() { m_ignoresPings = true; }
    // From now on it answers this command with NO; "" for none.
    void Refuse(const std::string& command) { m_refused = command; }
    // From now on each media ends at once: with "EOM", or with "BAD" and its reason.
    void EndMedia(const std::string& result, const std::string& reason = "") {
        m_end = result;
        m_reason = reason;
    }

private:
    struct Connection;
    void Listen();
    void Accept();
    void Read(std::shared_ptr<Connection> connection);
    void Answer(Connection& connection, const std::string& line);

    TestLoop& m_loop;
    tests::HeldPort m_port;
    std::unique_ptr<tcp::acceptor> m_acceptor;
    std::shared_ptr<Connection> m_connection;
    std::vector<std::string> m_lines;
    int m_connections = 0;
    int m_streams = 0;
    int m_pings = 0;
    bool m_mute = false;
    bool m_ignoresPings = false;
    std::string m_refused;
    std::string m_end; // "" while media do not end
    std::string m_reason;
};

struct RawReply {
    int status = 0;
    std::string head;
    std::string body;

    nlohmann::json Json() const { return nlohmann::json::parse(body, nullptr, false); }
};

// What is sent for a request, after whose answer the connection ends, and what comes back.
std::string PostText(const std::string& target, const std::string& body);
RawReply ParseReply(const std::string& bytes);

// A core with its HTTP server, on a scratch folder and a free port.
class TestHouse {
public:
    // `plugin` is a file; the rooms are 1 "Living room" and 2 "Kitchen". `adjust` may change that.
    TestHouse(TestLoop& loop, const std::string& plugin, const std::vector<std::uint16_t>& serverPorts,
              const ScratchFolder& state, const std::string& web = "",
              const std::function<void(Config&)>& adjust = {});

    Core& GetCore() { return *m_core; }
    std::uint16_t GetPort() const { return m_http->GetPort(); }
    // Ends the core as a signal does.
    void Stop();

    // Sends the bytes on a connection of their own and waits for the answer and the end of the connection.
    RawReply Exchange(const std::string& bytes);
    RawReply Get(const std::string& target);
    RawReply Post(const std::string& target, const std::string& body);
    RawReply Command(const std::string& name, const nlohmann::json& parameters);
    nlohmann::json Room(std::uint32_t id);
    bool IsRouted(std::uint32_t id) { return Room(id).at("routed").get<bool>(); }

private:
    TestLoop& m_loop;
    common::Log m_log{common::LogLevel::Error};
    std::unique_ptr<Core> m_core;
    std::unique_ptr<Api> m_api;
    std::unique_ptr<HttpServer> m_http;
};

inline std::string TestPlugin(const std::string& kind) {
    return std::string(KORVEL_TEST_PLUGINS) + "/korvel_test_plugin_" + kind + ".so";
}

} // namespace korvel::controller
