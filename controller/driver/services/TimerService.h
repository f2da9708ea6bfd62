#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>

#include "base/Asio.h"
#include "driver/DriverPort.h"
#include "platform/TimerManager.h"

namespace korvel::controller {

// Timers on the driver's loop. The timers of drivers (IDriverHost::AddTimer) count in the same sequence of
// ids. The callbacks of the driver's objects are called through its port.
class TimerService final : public ITimerManager {
public:
    static constexpr std::uint32_t kForever = 0; // as a count: until cancelled

    TimerService(asio::io_context& loop, DriverPort& driver) : m_loop(loop), m_driver(driver) {}
    ~TimerService() { *m_alive = false; }
    TimerService(const TimerService&) = delete;
    TimerService& operator=(const TimerService&) = delete;

    std::uint32_t StartTimer(std::uint32_t milliseconds, std::uint32_t count,
                             ITimerManagerCallback* callback) override;
    void CancelTimer(std::uint32_t timerId) override { m_timers.erase(timerId); }
    void RemoveCallback(ITimerManagerCallback* callback) override;

    // Starts a timer that calls `expired` with its id on the loop; kForever repeats it until it is cancelled.
    std::uint32_t Start(std::uint32_t milliseconds, std::uint32_t count,
                        std::function<void(std::uint32_t)> expired);
    void CancelAll() { m_timers.clear(); }
    std::size_t Running() const { return m_timers.size(); }

private:
    struct Timer {
        Timer(asio::io_context& loop, std::uint32_t length, std::uint32_t left)
            : clock(loop), interval(length), remaining(left) {}

        asio::steady_timer clock;
        std::chrono::milliseconds interval;
        std::uint32_t remaining; // expiries to come, or kForever
        ITimerManagerCallback* owner = nullptr;
        std::function<void(std::uint32_t)> expired;
    };

    void Arm(std::uint32_t id, Timer& timer);
    void OnClock(std::uint32_t id);

    asio::io_context& m_loop;
    DriverPort& m_driver;
    // An expiry that is on its way finds its timer gone from here once it was cancelled.
    std::unordered_map<std::uint32_t, std::unique_ptr<Timer>> m_timers;
    std::uint32_t m_lastId = 0;
    // Likewise when the service is gone.
    const std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace korvel::controller
