// Where in a media a session is.
#pragma once

#include <chrono>

namespace korvel::controller {

using Milliseconds = std::chrono::milliseconds;

// "At this clock, this position, this rate": nobody need be told as long as it runs on evenly. The clock is the
// controller's, steady, and starts anew with it.
struct Playhead {
    Milliseconds clock{0};
    Milliseconds position{0};
    bool runs = false; // at the rate 1, else at 0

    Milliseconds At(Milliseconds now) const { return runs ? position + (now - clock) : position; }
    friend bool operator==(const Playhead&, const Playhead&) = default;
};

} // namespace korvel::controller
