#include "library/Utf8.h"

#include <cstdint>

namespace korvel::media {

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

// Takes the first character off `text`; a byte that begins no well-formed one comes as U+FFFD.
std::uint32_t TakeCharacter(std::string_view& text) {
    const auto at = [&](std::size_t i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i]));
    };
    const std::uint32_t first = at(0);
    std::size_t length = 1;
    std::uint32_t value = first;
    std::uint32_t least = 0;
    if (first >= 0xF0 && first < 0xF8) {
        length = 4;
        value = first & 0x07;
        least = 0x10000;
    } else if (first >= 0xE0) {
        length = 3;
        value = first & 0x0F;
        least = 0x800;
    } else if (first >= 0xC0) {
        length = 2;
        value = first & 0x1F;
        least = 0x80;
    }
    bool good = first < 0x80 || (first >= 0xC0 && first < 0xF8 && text.size() >= length);
    for (std::size_t i = 1; good && i < length; ++i) {
        good = (at(i) & 0xC0) == 0x80;
        value = (value << 6) | (at(i) & 0x3F);
    }
    if (good && length > 1)
        good = value >= least && value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
    text.remove_prefix(good ? length : 1);
    return good ? value : kReplacement;
}

void AppendCharacter(std::string& out, std::uint32_t value) {
    const auto add = [&](std::uint32_t byte) { out += static_cast<char>(byte); };
    if (value < 0x80) {
        add(value);
    } else if (value < 0x800) {
        add(0xC0 | (value >> 6));
        add(0x80 | (value & 0x3F));
    } else if (value < 0x10000) {
        add(0xE0 | (value >> 12));
        add(0x80 | ((value >> 6) & 0x3F));
        add(0x80 | (value & 0x3F));
    } else {
        add(0xF0 | (value >> 18));
        add(0x80 | ((value >> 12) & 0x3F));
        add(0x80 | ((value >> 6) & 0x3F));
        add(0x80 | (value & 0x3F));
    }
}

// U+FFFE and U+FFFF are no characters for XML either.
bool IsControl(std::uint32_t value) {
    return value < 0x20 || (value >= 0x7F && value < 0xA0) || value == 0xFFFE || value == 0xFFFF;
}

// The plain letters of U+00C0 to U+017F; "." for what stays as it is.
constexpr std::string_view kPlainLatin =
    "aaaaaa.ceeeeiiiidnooooo.ouuuuy..aaaaaa.ceeeeiiiidnooooo.ouuuuy.y"  // U+00C0
    "aaaaaaccccccccddddeeeeeeeeeegggggggghhhhiiiiiiiiii..jjkkklllllll"  // U+0100
    "lllnnnnnnnnnoooooo..rrrrrrssssssssttttttuuuuuuuuuuuuwwyyyzzzzzzs"; // U+0140
constexpr std::uint32_t kPlainLatinFirst = 0xC0;

// Characters that stand for two letters.
std::string_view TwoLetters(std::uint32_t value) {
    switch (value) {
        case 0xDF:
        case 0x1E9E:
            return "ss";
        case 0xC6:
        case 0xE6:
            return "ae";
        case 0x152:
        case 0x153:
            return "oe";
        case 0xDE:
        case 0xFE:
            return "th";
        case 0x132:
        case 0x133:
            return "ij";
        default:
            return "";
    }
}

// Greek with an accent, without it: the accents are put in as habits differ.
std::uint32_t PlainGreek(std::uint32_t value) {
    switch (value) {
        case 0x386:
        case 0x3AC:
            return 0x3B1;
        case 0x388:
        case 0x3AD:
            return 0x3B5;
        case 0x389:
        case 0x3AE:
            return 0x3B7;
        case 0x38A:
        case 0x3AF:
            return 0x3B9;
        case 0x38C:
        case 0x3CC:
            return 0x3BF;
        case 0x38E:
        case 0x3CD:
            return 0x3C5;
        case 0x38F:
        case 0x3CE:
            return 0x3C9;
        case 0x3C2:
            return 0x3C3; // the final sigma
        default:
            return value >= 0x391 && value <= 0x3AB ? value + 32 : value;
    }
}

std::uint32_t LowerCase(std::uint32_t value) {
    if (value >= 'A' && value <= 'Z')
        return value + 32;
    if (value >= 0x386 && value <= 0x3CE)
        return PlainGreek(value);
    if (value >= 0x410 && value <= 0x42F)
        return value + 32;
    if (value >= 0x400 && value <= 0x40F)
        return value + 80;
    return value;
}

bool IsCombiningAccent(std::uint32_t value) {
    return value >= 0x300 && value <= 0x36F;
}

} // namespace

std::string CleanText(std::string_view text, std::size_t maxLength) {
    std::string out;
    std::size_t end = 0; // after the last character that is no blank
    while (!text.empty()) {
        std::uint32_t value = TakeCharacter(text);
        if (IsControl(value))
            value = ' ';
        if (value == ' ' && out.empty())
            continue;
        const std::size_t before = out.size();
        AppendCharacter(out, value);
        if (out.size() > maxLength) {
            out.resize(before);
            break;
        }
        if (value != ' ')
            end = out.size();
    }
    out.resize(end);
    return out;
}

std::string FoldText(std::string_view text) {
    static_assert(kPlainLatin.size() == 0x180 - kPlainLatinFirst);
    std::string out;
    while (!text.empty()) {
        const std::uint32_t value = TakeCharacter(text);
        if (IsCombiningAccent(value))
            continue;
        const std::string_view two = TwoLetters(value);
        const bool latin = value >= kPlainLatinFirst && value < kPlainLatinFirst + kPlainLatin.size();
        if (!two.empty())
            out += two;
        else if (latin && kPlainLatin[value - kPlainLatinFirst] != '.')
            out += kPlainLatin[value - kPlainLatinFirst];
        else
            AppendCharacter(out, LowerCase(value));
    }
    return out;
}

} // namespace korvel::media
