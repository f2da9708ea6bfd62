// A connection that the program makes, and makes again.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "common/Address.h"
#include "common/Asio.h"
#include "common/BackOff.h"
#include "common/LineConnection.h"
#include "common/Log.h"

namespace korvel::common {

// The connection to one server that speaks in lines. Lives on one loop.
class OutgoingLink final : public std::enable_shared_from_this<OutgoingLink>,
                           private LineConnection::Listener {
public:
    struct Settings {
        HostPort server;
        std::string kind; // what the log calls the server
        LineLimits limits;
        std::chrono::milliseconds connectTime; // for the name and the connection
        // How long to wait before it is made again after a loss or a failure; without it, it is made again when
        // it is asked for by Start().
        std::optional<BackOff> again;
        bool onlyIPv4 = false;
    };

    // Told of everything that happens, on the loop, never from within a call of the link. May let go of the link
    // in any of its functions.
    class Listener {
    public:
        // `address` is the server's numeric one.
        virtual void OnConnected(OutgoingLink& link, const std::string& address) = 0;
        virtual void OnLine(OutgoingLink& link, const Line& line) = 0;
        // A connection has ended or could not be made. After a loss the next attempt is on its way already.
        virtual void OnLost(OutgoingLink& link, bool wasConnected, const std::string& why) = 0;

    protected:
        ~Listener() = default;
    };

    // `listener` is used until Stop(); `log` must outlive the link.
    OutgoingLink(asio::any_io_executor executor, Settings settings, Listener& listener, const Log& log);
    ~OutgoingLink();

    // Connects; nothing happens when there is a connection or an attempt at one.
    void Start();
    // Closes the connection for good; the listener hears no more.
    void Stop();
    // Gives up the present connection, if there is one, as lost for this reason; the listener hears of it soon.
    void Drop(const std::string& why);

    bool IsConnected() const { return m_connection != nullptr; }
    const HostPort& GetServer() const { return m_settings.server; }

    // Puts whole lines on their way; they are dropped when there is no connection.
    void Send(std::string_view lines);

private:
    void OnLine(const Line& line) override;
    void OnEnd(const std::string& why) override;

    void Connect();
    void ConnectTo(const tcp::resolver::results_type& endpoints);
    void OnConnected(tcp::socket socket);
    void Fail(const std::string& why);

    // Wraps a handler so that it runs only for the attempt that it was made in.
    template <class Body>
    auto InThisAttempt(Body body);

    const asio::any_io_executor m_executor;
    const Settings m_settings;
    Listener* m_listener; // null once stopped
    const Log& m_log;
    std::optional<BackOff> m_again;
    tcp::resolver m_resolver;
    tcp::socket m_socket; // while it connects
    asio::steady_timer m_timer;
    unsigned m_attempt = 0;
    bool m_busy = false; // an attempt is being made, or its next one waits
    std::shared_ptr<LineConnection> m_connection;
    std::string m_lastFailure;
};

} // namespace korvel::common
