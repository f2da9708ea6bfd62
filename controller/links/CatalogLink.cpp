#include "links/CatalogLink.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace korvel::controller {
namespace {

using nlohmann::json;

CatalogResult ErrorCode(const json& reply) {
    const json& error = reply.at("error");
    const auto code = error.is_object() ? error.find("code") : error.end();
    if (!error.is_object() || code == error.end() || !code->is_number_integer() || *code < 1 ||
        *code > kRhapsodyLastCode)
        return kRhapsodyUnexpected;
    return code->get<CatalogResult>();
}

} // namespace

CatalogLink::CatalogLink(asio::io_context& loop, const common::Log& log, CatalogTiming timing,
                         ConnectionChanged changed)
    : m_loop(loop), m_log(log), m_timing(timing), m_changed(std::move(changed)), m_timer(loop) {}

void CatalogLink::Connect(const std::string& address) {
    if (m_server) {
        m_server->Stop();
        m_server.reset();
        FailSent(kRhapsodyNoConnection);
    }
    const auto server = common::ParseHostPort(address);
    if (!server) {
        m_log.Error("'" + address + "' is not the HOST:PORT of a catalogue");
        return;
    }
    m_server = std::make_shared<common::OutgoingLink>(
        m_loop.get_executor(), LinkTo(*server, "catalogue", m_timing.backOff),
        static_cast<common::OutgoingLink::Listener&>(*this), m_log);
    m_server->Start();
}

void CatalogLink::Stop() {
    m_stopped = true;
    m_timer.cancel();
    if (m_server)
        m_server->Stop();
    m_questions.clear();
}

void CatalogLink::Ask(json question, Answered answered) {
    if (!m_online || !m_server) {
        FailSoon(kRhapsodyOffLine, std::move(answered));
        return;
    }
    if (m_questions.size() >= kMaxQuestions) {
        FailSoon(kRhapsodyUnexpected, std::move(answered));
        return;
    }
    question["id"] = ++m_lastId;
    // An id that is not UTF-8 names nothing that there is.
    m_questions.push_back({m_lastId, question.dump(-1, ' ', false, json::error_handler_t::replace) + "\n",
                           std::move(answered), std::chrono::steady_clock::now() + m_timing.answer,
                           m_server->IsConnected()});
    if (m_questions.back().sent)
        m_server->Send(m_questions.back().line);
    if (m_questions.size() == 1)
        WaitForDeadline();
}

void CatalogLink::FailSoon(CatalogResult code, Answered answered) {
    asio::post(m_loop, [self = shared_from_this(), code, answered = std::move(answered)] {
        if (!self->m_stopped)
            answered(code, json());
    });
}

void CatalogLink::FailSent(CatalogResult code) {
    std::erase_if(m_questions, [this, code](Question& question) {
        if (question.sent)
            FailSoon(code, std::move(question.answered));
        return question.sent;
    });
}

// In these three the call that comes last may end the link, which then must not go before its time.
void CatalogLink::OnConnected(common::OutgoingLink& link, const std::string&) {
    const auto self = shared_from_this();
    for (Question& question : m_questions) {
        question.sent = true;
        link.Send(question.line);
    }
    m_changed(true);
}

void CatalogLink::OnLost(common::OutgoingLink&, bool wasConnected, const std::string&) {
    if (!wasConnected)
        return;
    const auto self = shared_from_this();
    FailSent(kRhapsodyNoConnection);
    m_changed(false);
}

void CatalogLink::OnLine(common::OutgoingLink&, const common::Line& line) {
    const auto self = shared_from_this();
    if (line.tooLong) {
        // It cannot be told which question it answers.
        m_log.Warning("the catalogue's answer is too long");
        FailSent(kRhapsodyUnexpected);
        return;
    }
    const json reply = json::parse(line.bytes, nullptr, false);
    const auto id = reply.is_object() ? reply.find("id") : reply.end();
    if (!reply.is_object() || id == reply.end() || !id->is_number_unsigned()) {
        m_log.Debug("from the catalogue, not an answer: " + line.bytes);
        return;
    }
    const auto question = std::ranges::find(m_questions, id->get<std::uint64_t>(), &Question::id);
    if (question == m_questions.end())
        return; // it had waited too long
    // Taken out first: the call may ask again.
    const Answered answered = std::move(question->answered);
    m_questions.erase(question);
    answered(reply.contains("error") ? ErrorCode(reply) : kRhapsodyDone, reply);
}

void CatalogLink::WaitForDeadline() {
    m_timer.expires_at(m_questions.front().deadline);
    m_timer.async_wait([self = shared_from_this()](boost::system::error_code cancelled) {
        if (!cancelled && !self->m_stopped)
            self->OnDeadline();
    });
}

// A question that was answered leaves its deadline behind: that is an expiry with nothing to do.
void CatalogLink::OnDeadline() {
    const auto now = std::chrono::steady_clock::now();
    while (!m_questions.empty() && m_questions.front().deadline <= now) {
        Question& question = m_questions.front();
        FailSoon(question.sent ? kRhapsodyNoAnswer : kRhapsodyNoConnection, std::move(question.answered));
        m_questions.pop_front();
    }
    if (!m_questions.empty())
        WaitForDeadline();
}

} // namespace korvel::controller
