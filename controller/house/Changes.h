// What has changed in the house, for whoever shows or keeps it.
#pragma once

#include <map>
#include <optional>
#include <vector>

#include "house/Ids.h"

namespace korvel::controller {

// What of an object has changed, in one mask.
using ChangeMask = unsigned;
inline constexpr ChangeMask kChangedState = 1U << 0U; // of a session, with its abilities
inline constexpr ChangeMask kChangedCurrent = 1U << 1U;
inline constexpr ChangeMask kChangedEntries = 1U << 2U;
inline constexpr ChangeMask kChangedRooms = 1U << 3U;
inline constexpr ChangeMask kChangedModes = 1U << 4U; // shuffle and repeat
inline constexpr ChangeMask kChangedPlayhead = 1U << 5U;
inline constexpr ChangeMask kChangedProblem = 1U << 6U;
inline constexpr ChangeMask kChangedSession = 1U << 7U; // a room hears another session, or none
inline constexpr ChangeMask kBegun = 1U << 8U;
inline constexpr ChangeMask kEnded = 1U << 9U;

// All that has changed since it was asked last.
struct Changes {
    Revision revision = Revision::None; // of the house as it is now
    std::map<SessionId, ChangeMask> sessions;
    std::map<RoomId, ChangeMask> rooms;

    bool IsEmpty() const { return sessions.empty() && rooms.empty(); }
};

// What is newer than a revision that somebody knows.
struct Since {
    std::vector<SessionId> sessions;
    std::vector<RoomId> rooms;
    std::vector<SessionId> ended;
};

} // namespace korvel::controller
