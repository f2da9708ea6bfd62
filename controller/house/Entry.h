// A place in a session's queue.
#pragma once

#include <optional>
#include <vector>

#include "house/Ids.h"
#include "house/Media.h"
#include "house/Problem.h"

namespace korvel::controller {

// Keeps its id for as long as it is in the queue: when it is moved or shuffled, while the session sleeps, and over
// restarts.
struct Entry {
    EntryId id = EntryId::None;
    MediaRef media;
    // Why it cannot be played now; none for what can. The driver knows nothing of such an entry.
    std::optional<Problem> unplayable;

    friend bool operator==(const Entry&, const Entry&) = default;
};

using Entries = std::vector<Entry>;

} // namespace korvel::controller
