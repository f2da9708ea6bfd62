#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace korvel::controller {

// Cuts what a connection delivers into lines.
class LineSplitter {
public:
    static constexpr std::size_t kMaxLine = 64 * 1024; // its end included

    // Calls `onLine` with each line that is complete now, its end ("\n", with whatever stands before it)
    // kept; while that returns true. False when a line is too long: the connection is no good any more.
    template <class OnLine>
    bool Feed(std::string_view bytes, OnLine&& onLine) {
        while (!bytes.empty()) {
            const std::size_t end = bytes.find('\n');
            const std::size_t length = end == std::string_view::npos ? bytes.size() : end + 1;
            if (m_partial.size() + length > kMaxLine)
                return false;
            m_partial.append(bytes.substr(0, length));
            bytes.remove_prefix(length);
            if (end == std::string_view::npos)
                break;
            // Taken out first, so that the splitter is at a line's start whatever the listener does.
            const std::string line = std::exchange(m_partial, std::string());
            if (!onLine(line))
                return true;
        }
        return true;
    }

    void Clear() { m_partial.clear(); }

private:
    std::string m_partial;
};

} // namespace korvel::controller
