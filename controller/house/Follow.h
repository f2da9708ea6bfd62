// Which entries a queue has after its list of media has changed.
#pragma once

#include <functional>
#include <span>

#include "house/Entry.h"

namespace korvel::controller {

using NewEntryId = std::function<EntryId()>;

// The entries of `before` as the driver's list `media` now has them. A media that stays keeps its entry: what is equal at
// the front and at the end of both lists first, between them the first of equal ones becomes the first, the second the
// second. What is new gets an entry of its own. Entries that cannot be played are in no list of the driver's; each stays
// behind the entry that it stood behind.
Entries Follow(const Entries& before, std::span<const MediaRef> media, const NewEntryId& newId);

// Whether the playable ones of `entries` are what the list says, one by one.
bool Says(std::span<const MediaRef> media, const Entries& entries);

} // namespace korvel::controller
