#include "audioserver/Session.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>
#include <sstream>
#include <utility>

#include "audioserver/LineFormat.h"
#include "audioserver/Log.h"

namespace korvel::audioserver {
namespace {

constexpr int kSendBufferBytes = 256 * 1024;
/// Further unusable lines of a connection would only fill the log.
constexpr unsigned kMaxLoggedRefusals = 10;

std::string PeerName(const boost::asio::ip::tcp::socket& socket) {
    boost::system::error_code error;
    const auto peer = socket.remote_endpoint(error);
    std::ostringstream name;
    name << peer;
    return error ? "unknown peer" : name.str();
}

} // namespace

Session::Session(boost::asio::ip::tcp::socket socket, SessionContext context, Closed closed)
    : m_socket(std::move(socket)),
      m_context(context),
      m_closed(std::move(closed)),
      m_name(PeerName(m_socket)) {}

Session::~Session() {
    RemoveAllStreams();
}

void Session::Start() {
    boost::system::error_code ignored;
    m_socket.set_option(boost::asio::ip::tcp::no_delay(true), ignored);
    m_socket.set_option(boost::asio::socket_base::keep_alive(true), ignored);
    // The kernel's share of what waits to go out; the rest is bounded by kMaxPendingBytes.
    m_socket.set_option(boost::asio::socket_base::send_buffer_size(kSendBufferBytes), ignored);
    Log(m_name + " connected");
    Read();
}

void Session::Close(std::string_view reason) {
    if (!std::exchange(m_open, false)) {
        return;
    }
    Log(m_name + " closed: " + std::string(reason));
    RemoveAllStreams();
    boost::system::error_code ignored;
    m_socket.shutdown(boost::asio::ip::tcp::socket::shutdown_both, ignored);
    m_socket.close(ignored);
    m_closed(shared_from_this());
}

void Session::Read() {
    m_socket.async_read_some(
        boost::asio::buffer(m_chunk),
        [self = shared_from_this()](const boost::system::error_code& error, std::size_t count) {
            if (!self->m_open) {
                return;
            }
            if (error) {
                self->Close(error == boost::asio::error::eof ? "end of connection" : error.message());
                return;
            }
            self->OnBytes(count);
            if (self->m_open) {
                self->Read();
            }
        });
}

void Session::OnBytes(std::size_t count) {
    std::string_view bytes(m_chunk.data(), count);
    while (m_open && !bytes.empty()) {
        const auto end = bytes.find('\n');
        m_line.append(bytes.substr(0, end));
        // A carriage return that belongs to the line's end does not count.
        if (m_line.size() > kMaxLineBytes + 1 || (m_line.size() > kMaxLineBytes && m_line.back() != '\r')) {
            Close("line too long");
            return;
        }
        if (end == std::string_view::npos) {
            return;
        }
        bytes.remove_prefix(end + 1);
        if (!m_line.empty() && m_line.back() == '\r') {
            m_line.pop_back();
        }
        HandleLine(std::exchange(m_line, {}));
    }
}

void Session::HandleLine(std::string_view line) {
    const auto parsed = ParseLine(line);
    if (const auto* refusal = std::get_if<Refusal>(&parsed)) {
        LogRefusal(line);
        Send(AnnouncementEvent(refusal->command) +
             NoLine(refusal->sequence, refusal->command, refusal->stream));
        return;
    }
    Dispatch(std::get<Request>(parsed));
}

void Session::LogRefusal(std::string_view line) {
    if (m_loggedRefusals > kMaxLoggedRefusals) {
        return;
    }
    const bool last = m_loggedRefusals++ == kMaxLoggedRefusals;
    Log(m_name + (last ? " goes on sending unusable lines" : " sent an unusable line: " + OneLine(line)));
}

void Session::Send(std::string_view line) {
    if (!m_open) {
        return;
    }
    m_outgoing.append(line);
    if (m_outgoing.size() + m_inFlight.size() > kMaxPendingBytes) {
        Close("does not read its answers");
        return;
    }
    if (m_inFlight.empty()) {
        Write();
    }
}

/// Sends all that waits in one go; what comes meanwhile waits for the next.
void Session::Write() {
    m_inFlight.swap(m_outgoing);
    boost::asio::async_write(
        m_socket, boost::asio::buffer(m_inFlight),
        [self = shared_from_this()](const boost::system::error_code& error, std::size_t) {
            if (!self->m_open) {
                return;
            }
            if (error) {
                self->Close(error.message());
                return;
            }
            self->m_inFlight.clear();
            if (!self->m_outgoing.empty()) {
                self->Write();
            }
        });
}

} // namespace korvel::audioserver
