#include "audioserver/Newcomer.h"

#include <utility>

#include "audioserver/Protocol.h"
#include "common/Log.h"

namespace korvel::audioserver {
namespace {

constexpr common::LineLimits kLimits{kMaxLineBytes, kMaxPendingBytes, kLinePatience, kLinePatience};
// The kernel's share of what waits to go out; the rest is bounded by kMaxPendingBytes.
constexpr int kSendBufferBytes = 256 * 1024;

common::tcp::socket WithSendBuffer(common::tcp::socket socket) {
    common::error_code ignored;
    socket.set_option(common::asio::socket_base::send_buffer_size(kSendBufferBytes), ignored);
    return socket;
}

} // namespace

Newcomer::Newcomer(common::tcp::socket socket, common::Acceptor::Place place, Known known, Closed closed)
    : m_lines(std::make_shared<common::LineConnection>(
          WithSendBuffer(std::move(socket)), kLimits, static_cast<common::LineConnection::Listener&>(*this))),
      m_place(std::move(place)),
      m_known(std::move(known)),
      m_closed(std::move(closed)) {}

void Newcomer::Start() {
    common::ProgramLog().Info(m_lines->GetPeer() + " connected");
    m_place.SetIdle([this] { Close("gives way to another"); });
    m_lines->Start();
}

void Newcomer::Close(const std::string& reason) {
    if (!std::exchange(m_open, false))
        return;
    const auto self = shared_from_this();
    common::ProgramLog().Info(m_lines->GetPeer() + " closed: " + reason);
    m_lines->Close();
    m_closed(self);
}

void Newcomer::OnEnd(const std::string& why) {
    Close(why);
}

void Newcomer::OnLine(const common::Line& line) {
    m_open = false;
    const auto self = shared_from_this();
    m_closed(self);
    m_known({m_lines, std::move(m_place), line});
}

} // namespace korvel::audioserver
