#include "audioserver/PlayPosition.h"

namespace korvel::audioserver {

void PlayPosition::Set(Time now, std::chrono::milliseconds position) {
    const std::lock_guard lock(m_mutex);
    m_at = now;
    m_position = position;
    m_last = position;
    m_moves = false;
}

bool PlayPosition::Advance(Time due, Span position) {
    const std::lock_guard lock(m_mutex);
    m_last = position;
    if (m_moves) {
        const Span sinceThen = due - m_at;
        const Span drift = std::chrono::abs(position - m_position - sinceThen);
        if (drift < kMaxDrift || sinceThen < kBetweenDrifts)
            return false;
    }
    m_at = due;
    m_position = position;
    m_moves = true;
    return true;
}

void PlayPosition::Rest(Time now) {
    const std::lock_guard lock(m_mutex);
    if (!m_moves)
        return;
    m_at = now;
    m_position = m_last;
    m_moves = false;
}

PlayPosition::Point PlayPosition::Get() const {
    const std::lock_guard lock(m_mutex);
    return {m_at, std::chrono::duration_cast<std::chrono::milliseconds>(m_position), m_moves};
}

} // namespace korvel::audioserver
