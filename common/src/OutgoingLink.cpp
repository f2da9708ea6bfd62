#include "common/OutgoingLink.h"

#include <boost/asio/connect.hpp>
#include <utility>

namespace korvel::common {

OutgoingLink::OutgoingLink(asio::any_io_executor executor, Settings settings, Listener& listener,
                           const Log& log)
    : m_executor(std::move(executor)),
      m_settings(std::move(settings)),
      m_listener(&listener),
      m_log(log),
      m_again(m_settings.again),
      m_resolver(m_executor),
      m_socket(m_executor),
      m_timer(m_executor) {}

OutgoingLink::~OutgoingLink() {
    Stop();
}

template <class Body>
auto OutgoingLink::InThisAttempt(Body body) {
    return [weak = weak_from_this(), attempt = m_attempt, body = std::move(body)](error_code error,
                                                                                  auto&&... results) {
        const auto self = weak.lock();
        if (self && self->m_listener && attempt == self->m_attempt)
            body(error, std::forward<decltype(results)>(results)...);
    };
}

void OutgoingLink::Start() {
    if (m_listener && !m_connection && !m_busy)
        Connect();
}

void OutgoingLink::Stop() {
    m_listener = nullptr;
    if (m_connection)
        m_connection->Close();
    m_connection.reset();
    m_resolver.cancel();
    m_timer.cancel();
    error_code ignored;
    m_socket.close(ignored);
}

void OutgoingLink::Drop(const std::string& why) {
    asio::post(m_executor, [drop = InThisAttempt([this, why](error_code) {
                                if (!m_connection)
                                    return;
                                m_connection->Close();
                                Fail(why);
                            })] { drop(error_code()); });
}

void OutgoingLink::Connect() {
    m_busy = true;
    ++m_attempt;
    m_timer.expires_after(m_settings.connectTime);
    m_timer.async_wait(InThisAttempt([this](error_code error) {
        if (!error && !m_connection)
            Fail("no connection in time");
    }));
    const std::string& host = m_settings.server.host;
    const std::uint16_t port = m_settings.server.port;
    // What is no name is not asked for: all look-ups of a program wait behind one that nobody answers.
    error_code isName;
    const auto address = asio::ip::make_address(host, isName);
    if (!isName && (address.is_v4() || !m_settings.onlyIPv4)) {
        ConnectTo(
            tcp::resolver::results_type::create(tcp::endpoint(address, port), host, std::to_string(port)));
        return;
    }
    auto resolved = InThisAttempt([this](error_code error, const tcp::resolver::results_type& endpoints) {
        if (error)
            Fail(error.message());
        else
            ConnectTo(endpoints);
    });
    if (m_settings.onlyIPv4)
        m_resolver.async_resolve(tcp::v4(), host, std::to_string(port), std::move(resolved));
    else
        m_resolver.async_resolve(host, std::to_string(port), std::move(resolved));
}

void OutgoingLink::ConnectTo(const tcp::resolver::results_type& endpoints) {
    asio::async_connect(m_socket, endpoints, InThisAttempt([this](error_code refused, const tcp::endpoint&) {
                            if (refused)
                                Fail(refused.message());
                            else
                                OnConnected(std::exchange(m_socket, tcp::socket(m_executor)));
                        }));
}

void OutgoingLink::OnConnected(tcp::socket socket) {
    error_code error;
    const auto peer = socket.remote_endpoint(error);
    if (error) {
        Fail(error.message());
        return;
    }
    m_timer.cancel();
    m_busy = false;
    m_lastFailure.clear();
    m_connection = std::make_shared<LineConnection>(std::move(socket), m_settings.limits,
                                                    static_cast<LineConnection::Listener&>(*this));
    m_log.Info(m_settings.kind + " " + ToText(m_settings.server) + " connected");
    m_connection->Start();
    m_listener->OnConnected(*this, peer.address().to_string());
}

void OutgoingLink::Send(std::string_view lines) {
    if (m_connection)
        m_connection->Send(lines);
}

void OutgoingLink::OnLine(const Line& line) {
    // A server that talks is a good one: after its loss the first attempt comes soon.
    if (m_again)
        m_again->Reset();
    m_listener->OnLine(*this, line);
}

void OutgoingLink::OnEnd(const std::string& why) {
    Fail(why);
}

// Ends this attempt or connection, says why when that is new, and plans the next attempt.
void OutgoingLink::Fail(const std::string& why) {
    const auto self = shared_from_this(); // the listener may let go of it
    const bool wasConnected = m_connection != nullptr;
    m_connection.reset();
    ++m_attempt; // whatever is still under way comes to nothing
    m_resolver.cancel();
    m_timer.cancel();
    error_code ignored;
    m_socket.close(ignored);
    // One line for a server that stays away, not one each attempt.
    if (std::exchange(m_lastFailure, why) != why)
        m_log.Warning(m_settings.kind + " " + ToText(m_settings.server) +
                      (wasConnected ? " lost: " : " not reached: ") + why);
    m_busy = m_again.has_value();
    if (m_again) {
        m_timer.expires_after(m_again->Next());
        m_timer.async_wait(InThisAttempt([this](error_code error) {
            if (!error)
                Connect();
        }));
    }
    m_listener->OnLost(*this, wasConnected, why);
}

} // namespace korvel::common
