// The clocks and timers of a run. Time stands still but for AdvanceTo().
#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <optional>
#include <vector>

class ITimerManagerCallback;

namespace korvel::replay {

inline constexpr std::uint32_t kDefaultWallClock = 1000000000; // seconds
inline constexpr std::uint64_t kMonotonicStart = 100000;       // milliseconds

class VirtualClock {
public:
    void SetWallStart(std::uint32_t seconds) { m_wallStart = seconds; }

    // Milliseconds since the start of the run. Never goes back.
    std::uint64_t GetElapsed() const { return m_elapsed; }
    void AdvanceTo(std::uint64_t elapsed);

    // Seconds, wrapping at 32 bits.
    std::uint32_t GetWall() const;
    timespec GetMonotonic() const;

private:
    std::uint32_t m_wallStart = kDefaultWallClock;
    std::uint64_t m_elapsed = 0;
};

// All running timers, the driver's own and the timer manager's, with one sequence of ids from 1.
class TimerQueue {
public:
    static constexpr std::uint32_t kEndless = 0;

    struct Expiry {
        std::uint32_t id = 0;
        std::uint64_t due = 0;
        ITimerManagerCallback* callback = nullptr;
    };

    // A timer that expires `count` times, or until it is stopped when that is kEndless. Null for `callback`
    // is a timer of the driver itself; any other is only handed back. A timer that repeats does so at least a
    // millisecond apart.
    std::uint32_t Start(std::uint64_t now, std::uint32_t milliseconds, std::uint32_t count,
                        ITimerManagerCallback* callback);
    // Nothing happens for an id that is not running.
    void Stop(std::uint32_t id) { m_timers.erase(id); }
    // The ids of the stopped timers in ascending order.
    std::vector<std::uint32_t> StopAllOf(const ITimerManagerCallback& callback);
    void Clear() { m_timers.clear(); }
    // Of the timers that call back into anything but the driver's own entry, in ascending order.
    std::vector<std::uint32_t> GetCallbackIds() const;

    // Takes the first expiry that is due at `until` or before: the earliest, of several at one time the
    // lowest id.
    std::optional<Expiry> TakeDue(std::uint64_t until);

private:
    struct Timer {
        std::uint64_t due = 0;
        std::uint32_t milliseconds = 0;
        std::uint32_t left = kEndless;
        ITimerManagerCallback* callback = nullptr;
    };

    std::uint32_t m_lastId = 0;
    std::map<std::uint32_t, Timer> m_timers;
};

} // namespace korvel::replay
