#include "common/Lines.h"

#include "common/Text.h"

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

bool IsOneLine(std::string_view bytes, std::size_t most) {
    const std::string_view text = WithoutEnd(bytes);
    return bytes.ends_with('\n') && text.size() <= most && !HasControl(text);
}

void LineSplitter::Add(std::string_view bytes) {
    m_bytes.erase(0, m_begin);
    m_searched -= m_begin;
    m_begin = 0;
    m_bytes.append(bytes);
}

std::optional<Line> LineSplitter::Take() {
    std::size_t end = m_bytes.find('\n', m_searched);
    if (m_skipping) {
        if (end == std::string::npos) {
            m_begin = m_searched = m_bytes.size();
            return std::nullopt;
        }
        m_begin = end + 1;
        m_skipping = false;
        end = m_bytes.find('\n', m_begin);
    }
    const bool ended = end != std::string::npos;
    const std::string_view line = std::string_view(m_bytes).substr(m_begin, ended ? end + 1 - m_begin : end);
    const bool tooLong = WithoutEnd(line).size() > m_most;
    if (!ended && !tooLong) {
        m_searched = m_bytes.size();
        return std::nullopt;
    }
    Line taken{std::string(tooLong ? line.substr(0, m_most) : line), tooLong};
    m_skipping = !ended;
    m_begin += line.size();
    m_searched = m_begin;
    return taken;
}

void LineSplitter::Clear() {
    m_bytes.clear();
    m_begin = 0;
    m_searched = 0;
    m_skipping = false;
}

} // namespace korvel::common
