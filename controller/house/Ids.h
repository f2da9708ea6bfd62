// What the house calls its objects. Ids of sessions and entries are the house's own: they outlive the driver's queues, an
// audio server and the controller itself, and none is given twice.
#pragma once

#include <cstdint>

namespace korvel::controller {

using RoomId = std::uint32_t; // as in the configuration; never 0

enum class SessionId : std::uint64_t { None = 0 };
enum class EntryId : std::uint64_t { None = 0 };

// Counts the changes of the house. An object's revision is that of its last change, so of two objects, and of two states
// of one, the newer has the greater.
enum class Revision : std::uint64_t { None = 0 };

} // namespace korvel::controller
