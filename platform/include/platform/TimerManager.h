#pragma once

#include <cstdint>

// Implemented by whoever starts a timer; called on the driver thread, never from within a call of
// ITimerManager.
class ITimerManagerCallback {
public:
    virtual void OnTimerExpired(std::uint32_t timerId, std::int32_t) = 0;

protected:
    virtual ~ITimerManagerCallback() = default;
};

// Implemented by the core. Timer ids are never 0 and never used twice; the timers of drivers count in the
// same sequence.
class ITimerManager {
public:
    static constexpr const char* kInterfaceId = "{6AF43241-ECD9-4DFF-9F14-3E7194FFE2D4}";

    // Starts a timer of `milliseconds` that expires `count` times and then is gone. `callback` must stay
    // alive until the timer has expired, was cancelled, or RemoveCallback() was called.
    virtual std::uint32_t StartTimer(std::uint32_t milliseconds, std::uint32_t count,
                                     ITimerManagerCallback* callback) = 0;
    // Nothing happens for an id that is not running.
    virtual void CancelTimer(std::uint32_t timerId) = 0;
    // Cancels every timer of `callback`.
    virtual void RemoveCallback(ITimerManagerCallback* callback) = 0;

protected:
    ~ITimerManager() = default;
};
