#include "common/LineConnection.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>
#include <sstream>
#include <utility>

namespace korvel::common {
namespace {

std::string PeerOf(const tcp::socket& socket) {
    error_code error;
    const auto peer = socket.remote_endpoint(error);
    std::ostringstream text;
    text << peer;
    return error ? "unknown peer" : text.str();
}

// A peer whose machine has vanished ends no connection. The system asks for it when nothing is on its way, and gives
// up what it does not acknowledge, each within kPeerPatience.
void NoticeVanishedPeer(tcp::socket& socket) {
    constexpr int kProbes = 3;
    constexpr int kBetween = 2; // seconds
    constexpr int kSilence = static_cast<int>(kPeerPatience.count()) - kProbes * kBetween;
    constexpr int kUnacknowledged = static_cast<int>(std::chrono::milliseconds(kPeerPatience).count());
    const auto set = [&socket](int level, int option, int value) {
        ::setsockopt(socket.native_handle(), level, option, &value, sizeof(value));
    };
    set(SOL_SOCKET, SO_KEEPALIVE, 1);
    set(IPPROTO_TCP, TCP_KEEPIDLE, kSilence);
    set(IPPROTO_TCP, TCP_KEEPINTVL, kBetween);
    set(IPPROTO_TCP, TCP_KEEPCNT, kProbes);
    set(IPPROTO_TCP, TCP_USER_TIMEOUT, kUnacknowledged);
}

} // namespace

LineConnection::LineConnection(tcp::socket socket, const LineLimits& limits, Listener& listener)
    : m_socket(std::move(socket)),
      m_timer(m_socket.get_executor()),
      m_limits(limits),
      m_listener(&listener),
      m_peer(PeerOf(m_socket)),
      m_splitter(limits.line) {}

void LineConnection::Start() {
    error_code ignored;
    m_socket.set_option(tcp::no_delay(true), ignored);
    NoticeVanishedPeer(m_socket);
    if (m_limits.firstLineTime.count() > 0)
        WatchTime(m_limits.firstLineTime, "it says nothing");
    Read();
}

void LineConnection::Close() {
    if (!std::exchange(m_listener, nullptr))
        return;
    m_timer.cancel();
    error_code ignored;
    m_socket.shutdown(tcp::socket::shutdown_both, ignored);
    m_socket.close(ignored);
}

void LineConnection::End(const std::string& why) {
    Listener* listener = m_listener;
    Close();
    if (listener)
        listener->OnEnd(why);
}

void LineConnection::Read() {
    m_socket.async_read_some(
        asio::buffer(m_chunk), [self = shared_from_this()](error_code error, std::size_t count) {
            if (error) {
                self->End(error == asio::error::eof ? "end of connection" : error.message());
                return;
            }
            try {
                if (self->IsOpen())
                    self->OnBytes(count);
            } catch (...) {
                // Nobody would read on.
                self->End("internal error");
                throw;
            }
        });
}

void LineConnection::OnBytes(std::size_t count) {
    m_splitter.Add({m_chunk.data(), count});
    bool ended = false; // a line, so that the one that may follow has begun now
    while (const auto line = m_splitter.Take()) {
        ended = true;
        m_listener->OnLine(*line);
        if (!IsOpen())
            return;
    }
    if (ended && std::exchange(m_timed, false))
        m_timer.cancel();
    if (m_splitter.IsInLine() && !m_timed)
        WatchTime(m_limits.lineTime, "a line does not end");
    Read();
}

void LineConnection::WatchTime(std::chrono::milliseconds patience, const char* why) {
    m_timed = true;
    m_timer.expires_after(patience);
    m_timer.async_wait([weak = weak_from_this(), why](error_code cancelled) {
        const auto self = weak.lock();
        // One that expires in the same turn as the line ends is too late to be cancelled.
        if (self && !cancelled && self->m_timed && self->m_timer.expiry() <= std::chrono::steady_clock::now())
            self->End(why);
    });
}

void LineConnection::Send(std::string_view lines) {
    if (!IsOpen() || m_full)
        return;
    if (m_waiting.size() + m_writing.size() + lines.size() > m_limits.waiting) {
        m_full = true; // what is lost is the end of what was sent, not a piece of it
        // Not at once: the owner may be in the middle of something.
        asio::post(m_socket.get_executor(),
                   [self = shared_from_this()] { self->End("it does not read what it is sent"); });
        return;
    }
    m_waiting.append(lines);
    if (m_writing.empty())
        Write();
}

// Sends all that waits in one go; what comes meanwhile waits for the next.
void LineConnection::Write() {
    m_writing.swap(m_waiting);
    asio::async_write(m_socket, asio::buffer(m_writing),
                      [self = shared_from_this()](error_code error, std::size_t) {
                          if (!self->IsOpen())
                              return;
                          if (error) {
                              self->End(error.message());
                              return;
                          }
                          self->m_writing.clear();
                          if (!self->m_waiting.empty())
                              self->Write();
                      });
}

} // namespace korvel::common
