#pragma once

#include <algorithm>
#include <chrono>

namespace korvel::common {

// How long to wait before the next attempt: twice as long each time, up to a limit.
class BackOff {
public:
    constexpr BackOff(std::chrono::milliseconds first, std::chrono::milliseconds most)
        : m_first(first), m_most(most), m_next(first) {}

    std::chrono::milliseconds Next() {
        const auto delay = m_next;
        m_next = std::min(m_next * 2, m_most);
        return delay;
    }
    void Reset() { m_next = m_first; }

private:
    std::chrono::milliseconds m_first;
    std::chrono::milliseconds m_most;
    std::chrono::milliseconds m_next;
};

} // namespace korvel::common
