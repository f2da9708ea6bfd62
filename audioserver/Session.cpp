#include "audioserver/Session.h"

#include <utility>

#include "audioserver/LineFormat.h"
#include "common/Log.h"

namespace korvel::audioserver {

Session::Session(std::shared_ptr<common::LineConnection> lines, common::Acceptor::Place place,
                 SessionContext context, Closed closed)
    : m_lines(std::move(lines)), m_place(std::move(place)), m_context(context), m_closed(std::move(closed)) {}

Session::~Session() {
    m_lines->Close();
    RemoveAllStreams();
}

void Session::Start(const common::Line& first) {
    m_lines->SetListener(*this);
    OnLine(first);
    if (m_open)
        Settle();
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
