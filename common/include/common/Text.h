// Questions about text that comes from outside. All are pure and may be asked on any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korvel::common {

// True for a byte that ends a line or that a terminal obeys: below 0x20, and 0x7F. Bytes of UTF-8 are none.
bool IsControl(char c);
bool HasControl(std::string_view text);

// The text's beginning, at most `most` bytes and no half character. Bytes that are no UTF-8 are cut anywhere.
std::string_view CutText(std::string_view text, std::size_t most);

// One line out of any bytes: cut to `most` bytes as CutText() does, control characters as blanks, and no blanks
// at its ends.
std::string OneLine(std::string_view text, std::size_t most);

// The whole text as a plain decimal number, without sign or blanks, 0 to 4294967295; none otherwise.
std::optional<std::uint32_t> ParseNumber(std::string_view text);

} // namespace korvel::common
