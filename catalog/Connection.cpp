#include "Connection.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>
#include <nlohmann/json.hpp>
#include <utility>

namespace korvel::catalog {

using boost::asio::ip::tcp;
using boost::system::error_code;

Connection::Connection(tcp::socket socket, ConnectionId id, Service& service, Closed closed)
    : m_socket(std::move(socket)),
      m_timer(m_socket.get_executor()),
      m_id(id),
      m_service(service),
      m_closed(std::move(closed)) {}

void Connection::Start() {
    error_code ignored;
    m_socket.set_option(tcp::no_delay(true), ignored);
    m_socket.set_option(boost::asio::socket_base::keep_alive(true), ignored);
    Read();
}

void Connection::Close() {
    if (!std::exchange(m_open, false))
        return;
    m_timer.cancel();
    error_code ignored;
    m_socket.shutdown(tcp::socket::shutdown_both, ignored);
    m_socket.close(ignored);
    m_service.Forget(m_id);
    m_closed(shared_from_this());
}

void Connection::Read() {
    m_socket.async_read_some(boost::asio::buffer(m_chunk),
                             [self = shared_from_this()](error_code error, std::size_t count) {
                                 if (error)
                                     self->Close();
                                 else
                                     self->OnBytes({self->m_chunk.data(), count});
                                 if (self->m_open)
                                     self->Read();
                             });
}

void Connection::OnBytes(std::string_view bytes) {
    while (m_open && !bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        const std::string_view part = bytes.substr(0, end);
        if (!m_skipping)
            m_line.append(part);
        // One more for the first half of "\r\n".
        if (m_line.size() > kMaxRequestBytes + 1) {
            m_line.clear();
            m_skipping = true;
            Send(TooLongReply());
        }
        if (end == std::string_view::npos)
            return;
        bytes.remove_prefix(end + 1);
        if (!std::exchange(m_skipping, false))
            OnLine(std::exchange(m_line, {}));
    }
}

void Connection::OnLine(std::string line) {
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    if (line.size() > kMaxRequestBytes) {
        Send(TooLongReply());
        return;
    }
    const auto reply = m_service.Answer(line, m_id, m_waiting.size() >= kMaxWaiting);
    if (reply) {
        Send(*reply);
        return;
    }
    m_waiting.push_back({std::move(line), std::chrono::steady_clock::now() + kPlayingPatience});
    if (m_waiting.size() == 1)
        WaitForDeadline();
}

void Connection::LookAgain() {
    const auto now = std::chrono::steady_clock::now();
    for (Waiting& waiting : std::exchange(m_waiting, {})) {
        const auto reply = m_service.Answer(waiting.line, m_id, waiting.deadline <= now);
        if (reply)
            Send(*reply);
        else
            m_waiting.push_back(std::move(waiting));
    }
    if (m_open)
        WaitForDeadline();
}

void Connection::WaitForDeadline() {
    m_timer.cancel();
    if (m_waiting.empty())
        return;
    m_timer.expires_at(m_waiting.front().deadline);
    m_timer.async_wait([self = shared_from_this()](error_code cancelled) {
        if (!cancelled && self->m_open)
            self->LookAgain();
    });
}

void Connection::Send(const nlohmann::json& reply) {
    if (!m_open)
        return;
    m_outgoing += reply.dump();
    m_outgoing += '\n';
    if (m_outgoing.size() + m_inFlight.size() > kMaxPendingBytes)
        Close();
    else if (m_inFlight.empty())
        Write();
}

void Connection::Write() {
    m_inFlight.swap(m_outgoing);
    boost::asio::async_write(m_socket, boost::asio::buffer(m_inFlight),
                             [self = shared_from_this()](error_code error, std::size_t) {
                                 if (error) {
                                     self->Close();
                                     return;
                                 }
                                 self->m_inFlight.clear();
                                 if (self->m_open && !self->m_outgoing.empty())
                                     self->Write();
                             });
}

} // namespace korvel::catalog
