#include "common/Lines.h"

namespace korvel::common {
namespace {

// Of an unfinished line the last "\r" may belong to its end.
std::string_view WithoutEnd(std::string_view line) {
    if (line.ends_with('\n'))
        line.remove_suffix(1);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

} // namespace

std::string_view Line::GetText() const {
    return tooLong ? std::string_view(bytes) : WithoutEnd(bytes);
}

void LineSplitter::Add(std::string_view bytes) {
    m_bytes.append(bytes);
}

std::optional<Line> LineSplitter::Take() {
    std::size_t end = m_bytes.find('\n', m_searched);
    if (m_skipping) {
        m_searched = 0;
        if (end == std::string::npos) {
            m_bytes.clear();
            return std::nullopt;
        }
        m_bytes.erase(0, end + 1);
        m_skipping = false;
        end = m_bytes.find('\n');
    }
    const bool ended = end != std::string::npos;
    const std::string_view line = std::string_view(m_bytes).substr(0, ended ? end + 1 : end);
    const bool tooLong = WithoutEnd(line).size() > m_most;
    if (!ended && !tooLong) {
        m_searched = m_bytes.size();
        return std::nullopt;
    }
    Line taken{std::string(tooLong ? line.substr(0, m_most) : line), tooLong};
    m_skipping = !ended;
    m_bytes.erase(0, line.size());
    m_searched = 0;
    return taken;
}

void LineSplitter::Clear() {
    m_bytes.clear();
    m_searched = 0;
    m_skipping = false;
}

} // namespace korvel::common
