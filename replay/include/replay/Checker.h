// Compares what a run gave with what its transcript expects.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "replay/Script.h"

namespace korvel::replay {

// The '<' and '=' lines that each block of a script gave, in the order of Script::blocks.
using RunLines = std::vector<std::vector<std::string>>;

// What one block did wrong, readable on its own: the place, the line in question, and all that was there.
struct Mismatch {
    std::size_t inputLine = 0; // number of the block's input line
    std::string text;
};

// The expected lines must appear in their order, with other lines between them unless the script is exact. No
// '<' line may start with the rest of a '!' line. Blanks at the ends of lines do not count. `run` has an
// entry per block.
std::vector<Mismatch> Check(const Script& script, const RunLines& run);

// The script's text with its expectations replaced by the lines of `run`. Comments, blank lines, input and
// '!' lines stay; one that stands between expectations stays behind the line it followed.
std::string WithExpectations(const Script& script, const RunLines& run);

} // namespace korvel::replay
