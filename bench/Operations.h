// What a person does to one queue of a house, for those who measure it.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "House.h"

namespace bench {

inline constexpr std::uint32_t kLongList = 4000;

// Can be done again and again: what it leaves behind is what it finds.
struct Operation {
    std::function<void()> run;
    std::function<void()> restore; // not measured; may be empty
};

struct NamedOperation {
    const char* name;
    Operation (*prepare)(House& house); // to be done in that house, which must outlive it
    bool givesLongList; // it brings a list of kLongList songs, and suits houses with such lists
};

// Skip, SkipShuffled, Pause, EndOfMedia, AddSong, RemoveSong, AddSongList, EditQueue.
const std::vector<NamedOperation>& GetOperations();

// Restores, and gets the house ready for the next time.
void Finish(House& house, const Operation& operation);

} // namespace bench
