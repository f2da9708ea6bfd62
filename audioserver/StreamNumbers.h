// Gives out stream numbers.
#pragma once

#include <set>

#include "audioserver/Protocol.h"

namespace korvel::audioserver {

// Numbers run upwards over all connections and start again only after the last one, so that a late line for
// a removed stream does not meet a new one. Never gives out kReservedStream or a number in use.
class StreamNumbers {
public:
    // `first`: number that the next Take() returns.
    explicit StreamNumbers(StreamNumber first = kFirstStream);

    StreamNumber Take();
    void Release(StreamNumber number);

private:
    StreamNumber m_next;
    std::set<StreamNumber> m_inUse;
};

} // namespace korvel::audioserver
