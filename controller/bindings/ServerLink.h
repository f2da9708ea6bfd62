#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>

#include "bindings/BackOff.h"
#include "bindings/LineSplitter.h"
#include "config/Config.h"
#include "host/Log.h"
#include "net/Asio.h"

namespace korvel::controller {

// The TCP connection to one server that speaks in lines. It connects again whenever it is lost, until Stop().
class ServerLink final : public std::enable_shared_from_this<ServerLink> {
public:
    static constexpr std::size_t kMaxWaiting = 1u << 20; // bytes that wait to go out
    static constexpr std::chrono::milliseconds kConnectTimeout{5000};
    static constexpr std::chrono::milliseconds kFirstDelay{250};
    static constexpr std::chrono::milliseconds kMostDelay{5000};

    // Told of everything that happens, on the loop, never from within a call of the link.
    class Listener {
    public:
        virtual void OnConnected(ServerLink& link, const std::string& address) = 0;
        virtual void OnLine(ServerLink& link, const std::string& line) = 0;
        virtual void OnLost(ServerLink& link) = 0;

    protected:
        ~Listener() = default;
    };

    // `listener` is used until Stop(). `kind` is what the log calls the server.
    ServerLink(asio::io_context& loop, ServerConfig config, Listener& listener, const Log& log,
               BackOff backOff = {kFirstDelay, kMostDelay}, std::string kind = "audio server");

    void Start() { Connect(); }
    // Closes the connection; the listener hears no more.
    void Stop();

    bool IsConnected() const { return m_connected; }
    const ServerConfig& GetConfig() const { return m_config; }
    std::string GetName() const { return m_config.host + ":" + std::to_string(m_config.port); }

    // Puts a complete line on its way; it is dropped when there is no connection. A server that leaves too
    // much unread loses the connection.
    void Send(const std::string& line);

private:
    void Connect();
    void OnResolved(const tcp::resolver::results_type& endpoints);
    void OnSocketConnected();
    void Read();
    void Write();
    // Ends this attempt or connection, says why when that is new, and plans the next attempt.
    void Fail(const std::string& why);

    // Wraps a handler so that it runs only for the attempt it was made in.
    template <class Body>
    auto InThisAttempt(Body body);

    const ServerConfig m_config;
    const std::string m_kind;
    Listener* m_listener; // null once stopped
    const Log& m_log;
    BackOff m_backOff;
    tcp::resolver m_resolver;
    tcp::socket m_socket;
    asio::steady_timer m_timer;
    unsigned m_attempt = 0;
    bool m_connected = false;
    std::string m_lastFailure;
    LineSplitter m_splitter;
    std::array<char, 8192> m_in{};
    std::string m_waiting; // to be written after m_writing
    std::string m_writing;
};

} // namespace korvel::controller
