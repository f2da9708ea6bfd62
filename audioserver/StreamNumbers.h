// Gives out stream numbers.
#pragma once

#include <chrono>
#include <set>

#include "audioserver/Protocol.h"

namespace korvel::audioserver {

// Numbers run upwards over all connections and start again only after the last one, so that a late line for
// a removed stream does not meet a new one. Never gives out kReservedStream or a number in use.
class StreamNumbers {
public:
    // Where the first number of a server's run is ahead of the first of an earlier run, for each second between them:
    // far more streams than anybody makes. All numbers are gone through in 97 days.
    static constexpr StreamNumber kPerSecond = 256;

    // `first`: number that the next Take() returns.
    explicit StreamNumbers(StreamNumber first = kFirstStream);

    // Where to begin when the server starts at this time: behind all numbers that an earlier run gave out, so that what
    // a driver still has to say to a stream of that run meets none of this.
    static StreamNumber FirstAt(std::chrono::system_clock::time_point start);

    StreamNumber Take();
    void Release(StreamNumber number);

private:
    StreamNumber m_next;
    std::set<StreamNumber> m_inUse;
};

} // namespace korvel::audioserver
