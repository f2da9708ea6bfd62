#include "links/ServerLink.h"

#include <algorithm>
#include <utility>

#include "common/Text.h"

namespace korvel::controller {
namespace {

constexpr std::size_t kMaxShown = 200; // bytes of a line in the log
constexpr const char* kSilent = "it does not answer";
constexpr const char* kPing = "ping";

// Takes the next word off the front of the text.
std::string_view TakeWord(std::string_view& text) {
    const std::size_t end = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return word;
}

// "<n> OK ping", "<n> NO ping", and whatever else answers a number of the core's.
bool IsOwn(std::string_view line) {
    const std::string_view number = TakeWord(line);
    TakeWord(line);
    return common::ParseNumber(number) == kOwnNumber || TakeWord(line) == kPing;
}

// What a server answers to a line that it cannot read: "<n> NO <command> <stream>"; "" when the line does not even
// begin like a request.
std::string RefusalOf(std::string_view line) {
    const std::string_view number = TakeWord(line);
    const std::string_view command = TakeWord(line);
    const std::string_view stream = TakeWord(line);
    if (!common::ParseNumber(number) || command.empty() || common::HasControl(command))
        return "";
    std::string answer = std::string(number) + " NO " + std::string(command);
    if (common::ParseNumber(stream))
        answer.append(" ").append(stream);
    return answer.append("\r\n");
}

} // namespace

ServerLink::ServerLink(asio::io_context& loop, const common::HostPort& server, const common::BackOff& backOff,
                       Heartbeat heartbeat, Listener& listener, const common::Log& log)
    : m_loop(loop),
      m_heartbeat(heartbeat),
      m_listener(listener),
      m_log(log),
      m_timer(loop),
      m_link(
          std::make_shared<common::OutgoingLink>(loop.get_executor(), LinkTo(server, "audio server", backOff),
                                                 static_cast<common::OutgoingLink::Listener&>(*this), log)) {}

void ServerLink::Stop() {
    m_timer.cancel();
    m_answering = false;
    m_link->Stop();
}

bool ServerLink::IsSilent() const {
    return m_problem == kSilent;
}

void ServerLink::SetState(bool answering, const std::string& problem) {
    const bool changed = answering != m_answering || problem != m_problem;
    m_answering = answering;
    m_problem = problem;
    if (changed)
        m_listener.OnChanged(*this);
}

void ServerLink::OnConnected(common::OutgoingLink&, const std::string& address) {
    m_address = address;
    m_heard = false;
    m_missing = 0;
    Ping();
    WaitForBeat();
}

void ServerLink::TellConnected() {
    if (!std::exchange(m_told, true))
        m_listener.OnConnected(*this, m_address);
}

void ServerLink::OnLine(common::OutgoingLink&, const common::Line& line) {
    m_heard = true;
    const bool own = !line.tooLong && IsOwn(line.GetText());
    m_knowsPings = m_knowsPings || own;
    SetState(true, "");
    TellConnected();
    if (line.tooLong)
        m_log.Warning("dropped a line of " + common::ToText(GetServer()) +
                      " that is too long: " + common::OneLine(line.bytes, kMaxShown));
    else if (!own)
        m_listener.OnLine(*this, line.bytes);
}

void ServerLink::OnLost(common::OutgoingLink&, bool, const std::string& why) {
    m_timer.cancel();
    // Another program may listen there next.
    m_knowsPings = m_knowsPings && why == kSilent;
    if (!std::exchange(m_told, false)) {
        SetState(false, why);
        return;
    }
    m_answering = false;
    m_problem = why;
    m_listener.OnLost(*this);
}

void ServerLink::Send(const std::string& line) {
    if (!m_link->IsConnected())
        return;
    if (common::IsOneLine(line, kServerLines.line)) {
        m_link->Send(line);
        return;
    }
    m_log.Warning("not sent to " + common::ToText(GetServer()) + ", it is not one line of at most " +
                  std::to_string(kServerLines.line) + " bytes: " + common::OneLine(line, kMaxShown));
    RefuseSoon(line);
}

// The driver is inside the call that sends the line.
void ServerLink::RefuseSoon(std::string_view line) {
    asio::post(m_loop, [weak = weak_from_this(), answer = RefusalOf(line)] {
        const auto self = weak.lock();
        if (self && self->m_link->IsConnected() && !answer.empty())
            self->m_listener.OnLine(*self, answer);
    });
}

void ServerLink::Ping() {
    m_link->Send(std::to_string(kOwnNumber) + " " + kPing + "\r\n");
}

// Beats are counted, not the time: after a pause of this program's own the server has a whole beat to be heard in.
void ServerLink::WaitForBeat() {
    m_timer.expires_after(m_heartbeat.interval);
    m_timer.async_wait([weak = weak_from_this()](boost::system::error_code cancelled) {
        const auto self = weak.lock();
        if (self && !cancelled && self->m_link->IsConnected())
            self->OnBeat();
    });
}

void ServerLink::OnBeat() {
    m_missing = std::exchange(m_heard, false) ? 0 : m_missing + 1;
    const bool silent = m_missing >= m_heartbeat.missing;
    if (silent && m_answering && m_knowsPings) {
        m_link->Drop(kSilent);
        return;
    }
    // A connection on which nothing ever came is kept: a server that goes on again finds it and answers.
    if (silent && !m_answering)
        SetState(false, kSilent);
    // One that ignores pings answers the driver.
    if (!m_knowsPings)
        TellConnected();
    if (m_answering)
        Ping();
    WaitForBeat();
}

} // namespace korvel::controller
