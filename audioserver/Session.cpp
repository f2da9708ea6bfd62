#include "audioserver/Session.h"

#include <utility>

#include "audioserver/LineFormat.h"
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

Session::Session(common::tcp::socket socket, common::Acceptor::Place place, SessionContext context,
                 Closed closed)
    : m_lines(std::make_shared<common::LineConnection>(
          WithSendBuffer(std::move(socket)), kLimits, static_cast<common::LineConnection::Listener&>(*this))),
      m_place(std::move(place)),
      m_context(context),
      m_closed(std::move(closed)) {}

Session::~Session() {
    m_lines->Close();
    RemoveAllStreams();
}

void Session::Start() {
    common::ProgramLog().Info(m_lines->GetPeer() + " connected");
    Settle();
    m_lines->Start();
}

void Session::Close(const std::string& reason) {
    if (!std::exchange(m_open, false))
        return;
    const auto self = shared_from_this();
    common::ProgramLog().Info(m_lines->GetPeer() + " closed: " + reason);
    RemoveAllStreams();
    m_lines->Close();
    m_closed(self);
}

void Session::OnEnd(const std::string& why) {
    Close(why);
}

void Session::OnLine(const common::Line& line) {
    if (line.tooLong) {
        Refuse(RefuseLine(line.GetText()), line.GetText());
        return;
    }
    const auto parsed = ParseLine(line.GetText());
    if (const auto* refusal = std::get_if<Refusal>(&parsed)) {
        Refuse(*refusal, line.GetText());
        return;
    }
    Dispatch(std::get<Request>(parsed));
    Settle();
}

void Session::Refuse(const Refusal& refusal, std::string_view line) {
    common::ProgramLog().WriteFor(m_lines->GetPeer(), common::LogLevel::Warning,
                                  m_lines->GetPeer() + " sent an unusable line: " + OneLine(line));
    Send(AnnouncementEvent(refusal.command) + NoLine(refusal.sequence, refusal.command, refusal.stream));
}

void Session::Send(std::string_view line) {
    m_lines->Send(line);
}

// Whether the connection may have to give way to another: what plays is not to end for a newcomer.
void Session::Settle() {
    if (m_streams.empty())
        m_place.SetIdle([this] { Close("gives way to another"); });
    else
        m_place.SetBusy();
}

} // namespace korvel::audioserver
