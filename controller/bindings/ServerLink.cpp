#include "bindings/ServerLink.h"

namespace korvel::controller {

using boost::system::error_code;

ServerLink::ServerLink(asio::io_context& loop, ServerConfig config, Listener& listener, const Log& log,
                       BackOff backOff, std::string kind)
    : m_config(std::move(config)),
      m_kind(std::move(kind)),
      m_listener(&listener),
      m_log(log),
      m_backOff(backOff),
      m_resolver(loop),
      m_socket(loop),
      m_timer(loop) {}

template <class Body>
auto ServerLink::InThisAttempt(Body body) {
    return [self = shared_from_this(), attempt = m_attempt, body = std::move(body)](error_code error,
                                                                                    auto&&... results) {
        if (self->m_listener && attempt == self->m_attempt)
            body(error, std::forward<decltype(results)>(results)...);
    };
}

void ServerLink::Stop() {
    m_listener = nullptr;
    m_connected = false;
    m_resolver.cancel();
    m_timer.cancel();
    error_code ignored;
    m_socket.close(ignored);
}

void ServerLink::Connect() {
    ++m_attempt;
    m_timer.expires_after(kConnectTimeout);
    m_timer.async_wait(InThisAttempt([this](error_code error) {
        if (!error && !m_connected)
            Fail("no connection in time");
    }));
    // IPv4 only: the address of a server tells whether it runs on this machine.
    m_resolver.async_resolve(
        tcp::v4(), m_config.host, std::to_string(m_config.port),
        InThisAttempt([this](error_code error, const tcp::resolver::results_type& endpoints) {
            if (error)
                Fail(error.message());
            else
                OnResolved(endpoints);
        }));
}

void ServerLink::OnResolved(const tcp::resolver::results_type& endpoints) {
    m_socket.async_connect(endpoints.begin()->endpoint(), InThisAttempt([this](error_code error) {
                               if (error)
                                   Fail(error.message());
                               else
                                   OnSocketConnected();
                           }));
}

void ServerLink::OnSocketConnected() {
    error_code error;
    const auto peer = m_socket.remote_endpoint(error);
    if (error) {
        Fail(error.message());
        return;
    }
    error_code ignored;
    m_socket.set_option(tcp::no_delay(true), ignored);
    // A server whose machine vanished sends nothing that would end the connection.
    m_socket.set_option(asio::socket_base::keep_alive(true), ignored);
    m_timer.cancel();
    m_connected = true;
    m_lastFailure.clear();
    m_log.Info(m_kind + " " + GetName() + " connected");
    Read();
    m_listener->OnConnected(*this, peer.address().to_string());
}

void ServerLink::Read() {
    m_socket.async_read_some(
        asio::buffer(m_in), InThisAttempt([this](error_code error, std::size_t count) {
            if (error) {
                Fail(error == asio::error::eof ? "closed by the server" : error.message());
                return;
            }
            const unsigned attempt = m_attempt;
            const bool fits = m_splitter.Feed({m_in.data(), count}, [this, attempt](const std::string& line) {
                // A server that talks is a good one: after its loss the first attempt comes soon.
                m_backOff.Reset();
                m_listener->OnLine(*this, line);
                return m_listener && attempt == m_attempt && m_connected;
            });
            if (!m_listener || attempt != m_attempt || !m_connected)
                return;
            if (!fits)
                Fail("a line longer than " + std::to_string(LineSplitter::kMaxLine) + " bytes arrived");
            else
                Read();
        }));
}

void ServerLink::Send(const std::string& line) {
    if (!m_connected) {
        m_log.Debug(m_kind + " " + GetName() + " is not connected, dropped: " + line);
        return;
    }
    if (m_waiting.size() + m_writing.size() + line.size() > kMaxWaiting) {
        // Not at once: the driver is in the middle of a call.
        asio::post(m_socket.get_executor(), [this, self = shared_from_this(), attempt = m_attempt] {
            if (m_listener && attempt == m_attempt)
                Fail("it reads too slowly");
        });
        return;
    }
    m_log.Debug("to " + GetName() + ": " + line);
    m_waiting += line;
    if (m_writing.empty())
        Write();
}

void ServerLink::Write() {
    m_writing = std::exchange(m_waiting, std::string());
    asio::async_write(m_socket, asio::buffer(m_writing), InThisAttempt([this](error_code error, std::size_t) {
                          if (error) {
                              Fail(error.message());
                              return;
                          }
                          m_writing.clear();
                          if (!m_waiting.empty())
                              Write();
                      }));
}

void ServerLink::Fail(const std::string& why) {
    const bool wasConnected = std::exchange(m_connected, false);
    ++m_attempt; // whatever is still under way comes to nothing
    m_resolver.cancel();
    error_code ignored;
    m_socket.close(ignored);
    m_splitter.Clear();
    m_waiting.clear();
    m_writing.clear();
    // One line for a server that stays away, not one each attempt.
    if (std::exchange(m_lastFailure, why) != why)
        m_log.Warning(m_kind + " " + GetName() + (wasConnected ? " lost: " : " not reached: ") + why);
    m_timer.expires_after(m_backOff.Next());
    m_timer.async_wait(InThisAttempt([this](error_code error) {
        if (!error)
            Connect();
    }));
    if (wasConnected)
        m_listener->OnLost(*this);
}

} // namespace korvel::controller
