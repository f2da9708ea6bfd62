#include "replay/Recorder.h"

#include <ostream>
#include <utility>

#include "replay/Words.h"

namespace korvel::replay {

namespace {

bool IsHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// The length of the address at the front of `text`; 0 when there is none.
std::size_t AddressLength(std::string_view text) {
    constexpr std::string_view kNull = "(nil)";
    if (text.starts_with(kNull))
        return kNull.size();
    if (!text.starts_with("0x"))
        return 0;
    std::size_t end = 2;
    while (end < text.size() && IsHexDigit(text[end]))
        ++end;
    return end > 2 ? end : 0;
}

} // namespace

OutputLine& OutputLine::Value(std::string_view value) {
    return Bare(FormatValue(value));
}

OutputLine& OutputLine::Pair(std::string_view key, std::string_view value) {
    return Bare(FormatText(key) + "=" + FormatValue(value));
}

OutputLine& OutputLine::Text(std::string_view text) {
    return text.empty() ? *this : Bare(FormatText(text));
}

OutputLine& OutputLine::Bare(std::string_view text) {
    m_text.append(" ").append(text);
    return *this;
}

std::string MaskAddresses(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        const std::size_t length = AddressLength(text);
        out += length > 0 ? '@' : text.front();
        text.remove_prefix(length > 0 ? length : 1);
    }
    return out;
}

void Recorder::Input(std::string_view line) {
    Echo(line);
}
void Recorder::WorldInput(std::string_view line) {
    Add("= " + std::string(line));
}
void Recorder::Output(const OutputLine& line) {
    Add("< " + line.GetText());
    if (m_listener && !m_muted)
        m_listener(line.GetText());
}
void Recorder::Fault(std::string_view text) {
    Output(OutputLine("fault").Text(text));
}

std::vector<std::string> Recorder::TakeLines() {
    return std::exchange(m_lines, {});
}

void Recorder::Add(std::string line) {
    if (m_muted)
        return;
    Echo(line);
    m_lines.push_back(std::move(line));
}

void Recorder::Echo(std::string_view line) {
    if (m_echo)
        *m_echo << line << std::endl;
}

} // namespace korvel::replay
