#include "replay/VirtualTime.h"

#include <algorithm>

namespace korvel::replay {

void VirtualClock::AdvanceTo(std::uint64_t elapsed) {
    m_elapsed = std::max(m_elapsed, elapsed);
}

std::uint32_t VirtualClock::GetWall() const {
    return m_wallStart + static_cast<std::uint32_t>(m_elapsed / 1000);
}

timespec VirtualClock::GetMonotonic() const {
    const std::uint64_t now = kMonotonicStart + m_elapsed;
    timespec time = {};
    time.tv_sec = static_cast<std::time_t>(now / 1000);
    time.tv_nsec = static_cast<decltype(time.tv_nsec)>(now % 1000 * 1000000);
    return time;
}

std::uint32_t TimerQueue::Start(std::uint64_t now, std::uint32_t milliseconds, std::uint32_t count,
                                ITimerManagerCallback* callback) {
    m_timers[++m_lastId] = {now + milliseconds, milliseconds, count, callback};
    return m_lastId;
}

std::vector<std::uint32_t> TimerQueue::StopAllOf(const ITimerManagerCallback& callback) {
    std::vector<std::uint32_t> stopped;
    for (auto timer = m_timers.begin(); timer != m_timers.end();) {
        if (timer->second.callback == &callback) {
            stopped.push_back(timer->first);
            timer = m_timers.erase(timer);
        } else {
            ++timer;
        }
    }
    return stopped;
}

std::vector<std::uint32_t> TimerQueue::GetCallbackIds() const {
    std::vector<std::uint32_t> ids;
    for (const auto& [id, timer] : m_timers) {
        if (timer.callback)
            ids.push_back(id);
    }
    return ids;
}

std::optional<TimerQueue::Expiry> TimerQueue::TakeDue(std::uint64_t until) {
    const auto first = std::min_element(m_timers.begin(), m_timers.end(), [](const auto& a, const auto& b) {
        return a.second.due < b.second.due;
    });
    if (first == m_timers.end() || first->second.due > until)
        return std::nullopt;
    Timer& timer = first->second;
    const Expiry expiry{first->first, timer.due, timer.callback};
    if (timer.left == 1) {
        m_timers.erase(first);
    } else {
        timer.due += std::max<std::uint32_t>(timer.milliseconds, 1);
        if (timer.left != kEndless)
            --timer.left;
    }
    return expiry;
}

} // namespace korvel::replay
