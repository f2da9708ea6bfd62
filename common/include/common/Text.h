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

// Bytes of the longest reference to media: an address, the id of a track, an entry of a playlist.
inline constexpr std::size_t kMaxReferenceBytes = 2000;

// Whether the text stays what it is between quotes in a line: it holds neither a control character nor a quote.
bool FitsInQuotes(std::string_view text);

// Whether a line to an audio server can name media so: at most kMaxReferenceBytes that fit in quotes.
bool IsReference(std::string_view text);

// The text's beginning, at most `most` bytes and no half character. Bytes that are no UTF-8 are cut anywhere.
std::string_view CutText(std::string_view text, std::size_t most);

// One line out of any bytes: cut to `most` bytes as CutText() does, control characters as blanks, and no blanks
// at its ends.
std::string OneLine(std::string_view text, std::size_t most);

// The whole text as a plain decimal number, without sign or blanks, 0 to 4294967295; none otherwise.
std::optional<std::uint32_t> ParseNumber(std::string_view text);

} // namespace korvel::common
