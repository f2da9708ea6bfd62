#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "base/Asio.h"
#include "links/LinkSettings.h"

namespace korvel::controller {

// How a question ended. These are what the link itself gives; others come from the catalogue.
using CatalogResult = std::int32_t;
inline constexpr CatalogResult kRhapsodyDone = 0;
inline constexpr CatalogResult kRhapsodyNoAnswer = 3;
inline constexpr CatalogResult kRhapsodyUnexpected = 9;
inline constexpr CatalogResult kRhapsodyInvalidData = 10;
inline constexpr CatalogResult kRhapsodyNoConnection = 16;
inline constexpr CatalogResult kRhapsodyOffLine = 17;
inline constexpr CatalogResult kRhapsodyLastCode = 18;

// How long the link waits for what.
struct CatalogTiming {
    std::chrono::milliseconds answer{5000}; // from the question, also while there is no connection
    common::BackOff backOff = kServerBackOff;
};

// Questions to a catalogue and the answers to them, over one connection that comes again after a loss.
// Nothing is called from within a call of the link, and nothing after Stop(). Lives on the loop.
class CatalogLink final : public std::enable_shared_from_this<CatalogLink>,
                          private common::OutgoingLink::Listener {
public:
    static constexpr std::size_t kMaxQuestions = 64; // without an answer yet

    using ConnectionChanged = std::function<void(bool connected)>;
    // `reply` is an object when `code` is kRhapsodyDone.
    using Answered = std::function<void(CatalogResult code, const nlohmann::json& reply)>;

    CatalogLink(asio::io_context& loop, const common::Log& log, CatalogTiming timing,
                ConnectionChanged changed);

    // Connects to HOST:PORT, in place of an earlier address.
    void Connect(const std::string& address);
    // Until now every question is answered with kRhapsodyOffLine.
    void GoOnline() { m_online = true; }
    void Stop();

    // Asks as soon as there is a connection. `question` is an object with everything but its id.
    void Ask(nlohmann::json question, Answered answered);

private:
    struct Question {
        std::uint32_t id;
        std::string line;
        Answered answered;
        std::chrono::steady_clock::time_point deadline;
        bool sent;
    };

    void OnConnected(common::OutgoingLink& link, const std::string& address) override;
    void OnLine(common::OutgoingLink& link, const common::Line& line) override;
    void OnLost(common::OutgoingLink& link, bool wasConnected, const std::string& why) override;

    void FailSoon(CatalogResult code, Answered answered);
    void FailSent(CatalogResult code);
    void WaitForDeadline();
    void OnDeadline();

    asio::io_context& m_loop;
    const common::Log& m_log;
    const CatalogTiming m_timing;
    ConnectionChanged m_changed;
    asio::steady_timer m_timer;
    std::shared_ptr<common::OutgoingLink> m_server; // null before Connect()
    std::deque<Question> m_questions;               // in the order of their deadlines
    std::uint32_t m_lastId = 0;
    bool m_online = false;
    bool m_stopped = false;
};

} // namespace korvel::controller
