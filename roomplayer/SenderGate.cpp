#include "roomplayer/SenderGate.h"

#include <algorithm>

namespace korvel::roomplayer {

bool SenderGate::Admit(std::uint32_t sender, std::uint32_t timestamp, Clock::time_point now) {
    if (m_current && m_current->id == sender)
        return Hear(timestamp);
    if (m_current && now - m_changed < kHold)
        return false;
    const auto earlier = std::find_if(m_earlier.begin(), m_earlier.end(),
                                      [sender](const Sender& one) { return one.id == sender; });
    if (earlier != m_earlier.end()) {
        if (!IsDue(*earlier, timestamp))
            return false;
        m_earlier.erase(earlier);
    } else if (m_earlier.size() >= kMaxEarlier && !m_earlier.front().cleared) {
        return false;
    }
    Change(sender, timestamp, now);
    return true;
}

bool SenderGate::Hear(std::uint32_t timestamp) {
    m_current->lastTimestamp = timestamp;
    for (Sender& one : m_earlier)
        one.alone = {};
    return true;
}

// Whether an earlier sender starts anew with this packet or has been alone for long enough.
bool SenderGate::IsDue(Sender& earlier, std::uint32_t timestamp) {
    const auto step = static_cast<std::int32_t>(timestamp - earlier.lastTimestamp);
    const std::chrono::milliseconds passed(std::int64_t{step} * 1000 / kTimestampRate);
    earlier.lastTimestamp = timestamp;
    earlier.alone += std::max(passed, std::chrono::milliseconds(0));
    return std::chrono::abs(passed) >= kRestart || earlier.alone >= kLost;
}

void SenderGate::Change(std::uint32_t sender, std::uint32_t timestamp, Clock::time_point now) {
    if (m_current) {
        m_current->left = now;
        m_earlier.push_back(*m_current);
        if (m_earlier.size() > kMaxEarlier)
            m_earlier.pop_front();
    }
    m_current = Sender{sender, timestamp, {}, {}, false};
    m_changed = now;
}

bool SenderGate::Knows(std::uint32_t sender) const {
    return (m_current && m_current->id == sender) ||
           std::any_of(m_earlier.begin(), m_earlier.end(),
                       [sender](const Sender& one) { return one.id == sender; });
}

std::optional<std::uint32_t> SenderGate::TakeLeft(Clock::time_point now, std::chrono::milliseconds age) {
    for (Sender& one : m_earlier) {
        if (!one.cleared && now - one.left >= age) {
            one.cleared = true;
            return one.id;
        }
    }
    return std::nullopt;
}

std::optional<std::uint32_t> SenderGate::Current() const {
    return m_current ? std::optional<std::uint32_t>(m_current->id) : std::nullopt;
}

} // namespace korvel::roomplayer
