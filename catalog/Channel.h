#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

#include "Catalogue.h"

namespace korvel::catalog {

// A channel's tracks, one after the other, for ever, whether anybody listens or not. Its listeners keep it in
// step: when one has come to the end of a track, the next begins, so that a duration which is a little wrong
// does no harm.
class Channel {
public:
    using Time = std::chrono::steady_clock::time_point;

    struct Place {
        const Track* track;
        std::chrono::milliseconds offset; // how far into the track
        std::uint32_t turn;               // counts the tracks played so far
    };

    // At least one track; they must outlive the channel. The first begins at `start`.
    Channel(std::vector<const Track*> tracks, Time start);

    // What plays now. `now` never goes back.
    Place At(Time now);

    // What a listener goes on with who has come to the end of the track of that turn, or could not play it.
    Place GoOn(std::uint32_t endedTurn, Time now);

private:
    void Next(Time start);

    std::vector<const Track*> m_tracks;
    std::chrono::milliseconds m_round{0}; // all of them once
    std::size_t m_index = 0;
    std::uint32_t m_turn = 1;
    Time m_started;
};

} // namespace korvel::catalog
