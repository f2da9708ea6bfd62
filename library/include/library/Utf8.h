#pragma once

#include <string>
#include <string_view>

namespace korvel::media {

// The most bytes that a text from a tag keeps.
inline constexpr std::size_t kMaxTextLength = 1000;

// The text as it may stand in XML, JSON and a log line: bytes that are no UTF-8 become U+FFFD, control
// characters become blanks, blanks at the ends go, and at most `maxLength` bytes stay, none of them of a cut
// character.
std::string CleanText(std::string_view text, std::size_t maxLength = kMaxTextLength);

// The text as it is searched and sorted: lower case, Latin letters without their accents ("Ä" as "a", "ß" as
// "ss"), Greek and Cyrillic in lower case, all else as it is.
std::string FoldText(std::string_view text);

} // namespace korvel::media
