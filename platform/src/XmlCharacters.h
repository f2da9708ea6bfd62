// The characters that markup is made of, and how references to others are read.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace KVXML {

inline constexpr unsigned char kBlank = 1;     // blanks, tabs and line ends
inline constexpr unsigned char kNameStart = 2; // bytes from 128 on are parts of letters
inline constexpr unsigned char kName = 4;
inline constexpr unsigned char kInValue = 8; // stands for itself in the value of an attribute
inline constexpr unsigned char kInText = 16; // stands for itself in character data

inline constexpr std::array<unsigned char, 256> kKinds = [] {
    std::array<unsigned char, 256> kinds{};
    const auto add = [&](std::string_view characters, unsigned char kind) {
        for (const char c : characters)
            kinds[static_cast<unsigned char>(c)] |= kind;
    };
    kinds.fill(kInValue | kInText);
    for (std::size_t c = 128; c < 256; ++c)
        kinds[c] |= kNameStart | kName;
    add("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_:", kNameStart | kName);
    add("0123456789-.", kName);
    add(" \t\r\n", kBlank);
    for (const char8_t c : {u8'"', u8'\'', u8'&', u8'\t', u8'\r', u8'\n', u8'\0'})
        kinds[c] &= static_cast<unsigned char>(~kInValue);
    for (const char8_t c : {u8'<', u8'&', u8'\r', u8'\0'})
        kinds[c] &= static_cast<unsigned char>(~kInText);
    return kinds;
}();

inline bool Is(char c, unsigned char kind) {
    return (kKinds[static_cast<unsigned char>(c)] & kind) != 0;
}

// The first character from `at` on that is not of that kind.
inline char* Skip(char* at, unsigned char kind) {
    while (Is(*at, kind))
        ++at;
    return at;
}

// A value or text ends at a zero byte, however it came in.
inline std::string_view UpToZero(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

// Reads a character reference by number, which may wrap; null when there is none.
inline const char* ReadCode(const char* at, std::uint32_t& code) {
    if (*at++ != '&' || *at++ != '#')
        return nullptr;
    const std::uint32_t base = *at == 'x' ? 16 : 10;
    if (base == 16)
        ++at;
    const char* begin = at;
    for (; *at != ';'; ++at) {
        const char lower = static_cast<char>(*at | ' ');
        if (*at >= '0' && *at <= '9')
            code = code * base + static_cast<std::uint32_t>(*at - '0');
        else if (base == 16 && lower >= 'a' && lower <= 'f')
            code = code * base + static_cast<std::uint32_t>(lower - 'a' + 10);
        else
            return nullptr;
    }
    return at == begin ? nullptr : at + 1;
}

// Also of codes that are no characters: what they read as has never changed.
inline char* AppendUtf8(char* out, std::uint32_t code) {
    const auto put = [&](std::uint32_t byte) { *out++ = static_cast<char>(byte); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | code >> 6);
        put(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        put(0xE0 | code >> 12);
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    } else {
        put(0xF0 | code >> 18);
        put(0x80 | (code >> 12 & 0x3F));
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    }
    return out;
}

} // namespace KVXML
