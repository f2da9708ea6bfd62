// How values and texts stand on a transcript line, in both directions.
//
// A value is one word: bare, or in double quotes with the escapes \" \\ \r \n \t \xHH. The quotes may also
// follow the first '=' of a word: title="A b". A text is the rest of its line, with only backslash and
// control characters escaped.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace korvel::replay {

// What is wrong with a transcript line. Whoever reads the file adds its name and the line's number.
class FormatError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A word of a line with its quotes and escapes resolved.
struct Word {
    std::string text;
    std::size_t equals = std::string::npos; // where the first '=' outside of quotes is in `text`
};

// The value as one word, in quotes exactly where a bare word would not do.
std::string FormatValue(std::string_view value);
// The text as the rest of a line.
std::string FormatText(std::string_view text);

// Takes the next word off `rest`, which must hold more than blanks. FormatError for quotes that do not close,
// text that follows a closing quote, an unknown escape, or a bare quote, backslash or control character.
Word TakeWord(std::string_view& rest);
// The rest of an input line: as it stands with its escapes resolved, or one quoted value. FormatError as
// above.
std::string ParseText(std::string_view text);

// `text` without the blanks at its start, or at its end.
std::string_view TrimStart(std::string_view text);
std::string_view TrimEnd(std::string_view text);

// A decimal number of 32 bits; FormatError, which names `what`, for anything else.
std::uint32_t ParseNumber(std::string_view text, std::string_view what);
std::int32_t ParseSignedNumber(std::string_view text, std::string_view what);
// "1,2,3"; an empty text is an empty list.
std::vector<std::uint32_t> ParseNumberList(std::string_view text, std::string_view what);

} // namespace korvel::replay
