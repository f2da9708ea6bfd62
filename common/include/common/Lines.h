// Lines out of the bytes that a connection delivers.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace korvel::common {

struct Line {
    // With its end, as it came; of a line that is too long its beginning.
    std::string bytes;
    bool tooLong = false;

    // Without its end, which is "\n" or "\r\n".
    std::string_view GetText() const;
};

// Whether the bytes are one line with its end, whoever reads them: at most `most` bytes and no control character
// before the end.
bool IsOneLine(std::string_view bytes, std::size_t most);

// Holds at most what is between two calls of Add(), one line and its end. Knows no connection and no clock.
class LineSplitter {
public:
    // `most`: bytes of the longest line, its end not counted.
    explicit LineSplitter(std::size_t most) : m_most(most) {}

    void Add(std::string_view bytes);

    // The next line; none until more bytes come. A line that is too long comes once, with its first `most` bytes,
    // as soon as it is known to be; what follows of it is skipped.
    std::optional<Line> Take();

    // Whether a line has begun that has not ended. Asked when Take() has nothing more.
    bool IsInLine() const { return m_skipping || m_begin < m_bytes.size(); }

    // The next byte begins a line, whatever came before.
    void Clear();

private:
    std::size_t m_most;
    std::string m_bytes;
    std::size_t m_begin = 0;    // what is before it has been taken
    std::size_t m_searched = 0; // no line ends before this place
    bool m_skipping = false;    // the rest of a line that is too long
};

} // namespace korvel::common
