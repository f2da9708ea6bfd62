"""The clocks, timers and random numbers of a run. Time stands still but for advance_to()."""

DEFAULT_WALL_CLOCK = 1000000000  # seconds
MONOTONIC_START = 100000  # milliseconds
ENDLESS = 0


class VirtualClock:
    def __init__(self):
        self.wall_start = DEFAULT_WALL_CLOCK
        self.elapsed = 0  # milliseconds

    def advance_to(self, elapsed):
        self.elapsed = max(self.elapsed, elapsed)

    def wall(self):
        """Seconds, wrapping at 32 bits."""
        return (self.wall_start + self.elapsed // 1000) & 0xFFFFFFFF

    def monotonic(self):
        """Milliseconds, wrapping at 32 bits."""
        return (MONOTONIC_START + self.elapsed) & 0xFFFFFFFF


class TimerQueue:
    """All running timers, the driver's own (callback None) and the timer manager's, with one sequence of ids."""

    def __init__(self):
        self._last_id = 0
        self._timers = {}  # id: [due, milliseconds, expiries left, callback]

    def start(self, now, milliseconds, count, callback):
        """A timer that expires `count` times, or until it is stopped when that is ENDLESS."""
        self._last_id += 1
        self._timers[self._last_id] = [now + milliseconds, milliseconds, count, callback]
        return self._last_id

    def stop(self, timer_id):
        self._timers.pop(timer_id, None)

    def stop_all_of(self, callback):
        """The ids of the stopped timers in ascending order."""
        ids = sorted(key for key, timer in self._timers.items() if timer[3] is callback)
        for timer_id in ids:
            del self._timers[timer_id]
        return ids

    def clear(self):
        self._timers.clear()

    def callback_ids(self):
        """Of the timers that call back into anything but the driver's own entry, in ascending order."""
        return sorted(timer_id for timer_id, timer in self._timers.items() if timer[3] is not None)

    def take_due(self, until):
        """(id, due, callback) of the first expiry: the earliest, of several at one time the lowest id."""
        if not self._timers:
            return None
        due, timer_id = min((timer[0], key) for key, timer in self._timers.items())
        if due > until:
            return None
        timer = self._timers[timer_id]
        if timer[2] == 1:
            del self._timers[timer_id]
        else:
            timer[0] += max(timer[1], 1)
            if timer[2] != ENDLESS:
                timer[2] -= 1
        return timer_id, due, timer[3]


class RandomSource:
    """First the numbers that a transcript names, then a generator that starts alike in every run."""

    def __init__(self):
        self.next = []
        self._state = 2463534242

    def take(self):
        """0 to 2147483647."""
        if self.next:
            return self.next.pop(0)
        state = self._state
        state ^= state << 13 & 0xFFFFFFFF
        state ^= state >> 17
        state ^= state << 5 & 0xFFFFFFFF
        self._state = state
        return state >> 1
