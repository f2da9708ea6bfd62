#include "replay/RandomSource.h"

namespace korvel::replay {

std::int32_t RandomSource::Take() {
    if (!m_next.empty()) {
        const std::int32_t number = m_next.front();
        m_next.pop_front();
        return number;
    }
    // Marsaglia's 32-bit xorshift; its best bits are the upper ones.
    m_state ^= m_state << 13;
    m_state ^= m_state >> 17;
    m_state ^= m_state << 5;
    return static_cast<std::int32_t>(m_state >> 1);
}

} // namespace korvel::replay
