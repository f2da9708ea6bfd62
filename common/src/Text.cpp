#include "common/Text.h"

#include <algorithm>
#include <charconv>

namespace korvel::common {
namespace {

bool IsContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

bool IsLead(char c) {
    return static_cast<unsigned char>(c) >= 0xC0U;
}

} // namespace

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

bool HasControl(std::string_view text) {
    return std::ranges::any_of(text, IsControl);
}

bool FitsInQuotes(std::string_view text) {
    return !HasControl(text) && text.find('"') == std::string_view::npos;
}

bool IsReference(std::string_view text) {
    return text.size() <= kMaxReferenceBytes && FitsInQuotes(text);
}

std::string_view CutText(std::string_view text, std::size_t most) {
    constexpr std::size_t kMostContinuations = 3;
    if (text.size() <= most)
        return text;
    std::size_t start = most; // of the character that the cut would go through
    while (start > 0 && most - start < kMostContinuations && IsContinuation(text[start]))
        --start;
    return text.substr(0, start < most && IsLead(text[start]) ? start : most);
}

std::string OneLine(std::string_view text, std::size_t most) {
    std::string line(CutText(text, most));
    std::ranges::replace_if(line, IsControl, ' ');
    const auto first = line.find_first_not_of(' ');
    return first == std::string::npos ? "" : line.substr(first, line.find_last_not_of(' ') - first + 1);
}

std::optional<std::uint32_t> ParseNumber(std::string_view text) {
    std::uint32_t value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc() || stop != end)
        return std::nullopt;
    return value;
}

} // namespace korvel::common
