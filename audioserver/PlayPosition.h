// Where in its media the sound stands that is given out.
#pragma once

#include <chrono>
#include <mutex>

namespace korvel::audioserver {

// A prediction, so that nobody has to be told each second: at this time this position, and from then on it moves as the
// clock does, or rests. It holds until the sound stands elsewhere by kMaxDrift.
//
// Advanced by the sender's thread, asked and set by the loop.
class PlayPosition {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Span = std::chrono::nanoseconds;

    static constexpr std::chrono::milliseconds kMaxDrift{100};
    // Between two corrections: a media whose times are nonsense is not told of with each packet.
    static constexpr std::chrono::milliseconds kBetweenDrifts{1000};

    struct Point {
        Time at;
        std::chrono::milliseconds position;
        bool moves;
    };

    // It rests at this place, whatever was before.
    void Set(Time now, std::chrono::milliseconds position);

    // Sound of this place is given out, which is due then. Whether the prediction has changed.
    bool Advance(Time due, Span position);

    // Nothing is given out until the next Advance(). Does nothing when it rests already.
    void Rest(Time now);

    Point Get() const;

private:
    mutable std::mutex m_mutex;
    Time m_at;
    Span m_position{0}; // at m_at
    Span m_last{0};     // of what was given out last
    bool m_moves = false;
};

} // namespace korvel::audioserver
