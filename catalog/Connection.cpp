#include "Connection.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace korvel::catalog {

using common::error_code;

namespace {

constexpr common::LineLimits kLimits{kMaxRequestBytes, kMaxPendingBytes, kLinePatience};

} // namespace

Connection::Connection(common::tcp::socket socket, common::Acceptor::Place place, ConnectionId id,
                       Service& service, Closed closed)
    : m_lines(std::make_shared<common::LineConnection>(
          std::move(socket), kLimits, static_cast<common::LineConnection::Listener&>(*this))),
      m_place(std::move(place)),
      m_timer(m_lines->GetExecutor()),
      m_id(id),
      m_service(service),
      m_closed(std::move(closed)) {}

void Connection::Start() {
    Settle(true);
    m_lines->Start();
}

void Connection::Close() {
    if (!std::exchange(m_open, false))
        return;
    const auto self = shared_from_this();
    m_timer.cancel();
    m_lines->Close();
    m_service.Forget(m_id);
    m_closed(self);
}

void Connection::OnEnd(const std::string&) {
    Close();
}

void Connection::OnLine(const common::Line& line) {
    const auto self = shared_from_this();
    if (line.tooLong)
        Send(TooLongReply());
    else
        Answer(std::string(line.GetText()));
    Settle(true);
}

// Tells whether it may have to give way: not while a question waits or a stream plays what it has resolved.
// `heard`: its idle time begins anew.
void Connection::Settle(bool heard) {
    const bool idle = m_waiting.empty() && !m_service.IsPlaying(m_id);
    if (idle && (heard || !m_idle))
        m_place.SetIdle([this] { Close(); });
    else if (!idle)
        m_place.SetBusy();
    m_idle = idle;
}

void Connection::Answer(std::string line) {
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
    WaitForDeadline();
    Settle(false);
}

void Connection::WaitForDeadline() {
    m_timer.cancel();
    if (m_waiting.empty())
        return;
    m_timer.expires_at(m_waiting.front().deadline);
    m_timer.async_wait([weak = weak_from_this()](error_code cancelled) {
        const auto self = weak.lock();
        if (self && !cancelled && self->m_open)
            self->LookAgain();
    });
}

void Connection::Send(const nlohmann::json& reply) {
    m_lines->Send(reply.dump() + "\n");
}

} // namespace korvel::catalog
