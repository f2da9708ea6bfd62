#include "roomplayer/SenderGate.h"

#include <algorithm>

namespace korvel::roomplayer {

bool SenderGate::Admit(std::uint32_t sender, Clock::time_point now) {
    if (m_current && m_current->id == sender) {
        m_current->lastPacket = now;
        return true;
    }
    const auto earlier = std::find_if(m_earlier.begin(), m_earlier.end(),
                                      [sender](const Sender& one) { return one.id == sender; });
    const bool known = earlier != m_earlier.end();
    const bool starts = !known || now - earlier->lastPacket >= kRestart;
    const bool alone = !m_current || now - m_current->lastPacket >= kLost;
    const bool held = m_current && now - m_changed < kHold;
    if (held || (!starts && !alone)) {
        if (known) {
            earlier->lastPacket = now;
        }
        return false;
    }
    if (known) {
        m_earlier.erase(earlier);
    }
    Change(sender, now);
    return true;
}

void SenderGate::Change(std::uint32_t sender, Clock::time_point now) {
    if (m_current) {
        m_current->left = now;
        m_earlier.push_back(*m_current);
        if (m_earlier.size() > kMaxEarlier) {
            m_earlier.pop_front();
        }
    }
    m_current = Sender{sender, now, {}, false};
    m_changed = now;
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
