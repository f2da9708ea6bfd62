#include "driver/services/TimerService.h"

namespace korvel::controller {

std::uint32_t TimerService::StartTimer(std::uint32_t milliseconds, std::uint32_t count,
                                       ITimerManagerCallback* callback) {
    // Nobody to call and nothing to count: the timer is gone before it begins.
    if (count == 0 || !callback)
        return ++m_lastId;
    const std::uint32_t id = Start(milliseconds, count, [this, callback](std::uint32_t timerId) {
        m_driver.Enter("OnTimerExpired of a callback", [&] { callback->OnTimerExpired(timerId, 0); });
    });
    m_timers.at(id)->owner = callback;
    return id;
}

void TimerService::RemoveCallback(ITimerManagerCallback* callback) {
    std::erase_if(m_timers, [callback](const auto& entry) { return entry.second->owner == callback; });
}

std::uint32_t TimerService::Start(std::uint32_t milliseconds, std::uint32_t count,
                                  std::function<void(std::uint32_t)> expired) {
    const std::uint32_t id = ++m_lastId;
    auto timer = std::make_unique<Timer>(m_loop, milliseconds, count);
    timer->expired = std::move(expired);
    timer->clock.expires_after(timer->interval);
    Arm(id, *timer);
    m_timers.emplace(id, std::move(timer));
    return id;
}

void TimerService::Arm(std::uint32_t id, Timer& timer) {
    timer.clock.async_wait([this, id, alive = m_alive](const boost::system::error_code& error) {
        if (!error && *alive)
            OnClock(id);
    });
}

void TimerService::OnClock(std::uint32_t id) {
    const auto found = m_timers.find(id);
    if (found == m_timers.end())
        return;
    Timer& timer = *found->second;
    const auto expired = timer.expired; // a copy: the call may cancel the timer
    if (timer.remaining == 1) {
        m_timers.erase(found);
    } else {
        if (timer.remaining != kForever)
            --timer.remaining;
        // From the last expiry on, so that a repeating timer does not drift; from now on after a long sleep.
        const auto due = timer.clock.expiry() + timer.interval;
        timer.clock.expires_at(std::max(due, std::chrono::steady_clock::now()));
        Arm(id, timer);
    }
    expired(id);
}

} // namespace korvel::controller
