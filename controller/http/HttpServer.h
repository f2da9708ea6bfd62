#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>

#include "http/Api.h"

namespace korvel::controller {

// Something that a connection is at present: a session of requests or of events.
class Session {
public:
    // Ends it now.
    virtual void Close() = 0;

protected:
    virtual ~Session() = default;
};

// Listens on one loopback address and serves the interface there.
class HttpServer {
public:
    static constexpr std::size_t kMaxSessions = 128; // further connections are closed at once

    // Throws std::runtime_error with one clear line when the address is taken or not one of this machine.
    HttpServer(asio::io_context& loop, Api& api, const std::string& address, std::uint16_t port,
               const Log& log);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    std::uint16_t GetPort() const { return m_port; }
    // Closes the listener and all sessions.
    void Stop();

    // For sessions: each is known here from its start to its end. Adding fails when there are too many.
    bool Add(Session& session);
    void Remove(Session& session) { m_sessions.erase(&session); }

    Api& GetApi() { return m_api; }
    const std::string& GetAddress() const { return m_address; }
    const Log& GetLog() const { return m_log; }

private:
    void Accept();

    Api& m_api;
    const Log& m_log;
    std::string m_address;
    std::uint16_t m_port = 0;
    tcp::acceptor m_acceptor;
    asio::steady_timer m_pause;
    std::set<Session*> m_sessions;
    // Handlers that are under way when the server goes find it gone by this.
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace korvel::controller
