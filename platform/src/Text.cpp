#include "platform/Text.h"

#include <limits>

namespace kv {

namespace {

bool IsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

} // namespace

std::int32_t ToLong(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size() && IsSpace(text[i]))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-'))
        negative = text[i++] == '-';

    constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();
    const std::int64_t limit = negative ? kMax + 1 : kMax;
    std::int64_t value = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        value = value * 10 + (text[i] - '0');
        if (value > limit)
            value = limit;
    }
    return static_cast<std::int32_t>(negative ? -value : value);
}

std::uint32_t ToULong(std::string_view text) {
    return static_cast<std::uint32_t>(ToLong(text));
}

std::string ToString(bool value) {
    return value ? TRUE_STRING : FALSE_STRING;
}

std::string base64EncodeString(std::string_view text) {
    static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((text.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < text.size(); i += 3) {
        const std::size_t left = text.size() - i;
        const auto byte = [&](std::size_t k) -> std::uint32_t {
            return k < left ? static_cast<unsigned char>(text[i + k]) : 0u;
        };
        const std::uint32_t bits = byte(0) << 16 | byte(1) << 8 | byte(2);
        out += kDigits[bits >> 18];
        out += kDigits[bits >> 12 & 63];
        out += left > 1 ? kDigits[bits >> 6 & 63] : '=';
        out += left > 2 ? kDigits[bits & 63] : '=';
    }
    return out;
}

} // namespace kv
