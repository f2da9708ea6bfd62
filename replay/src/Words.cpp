#include "replay/Words.h"

#include <charconv>

#include "common/Text.h"

namespace korvel::replay {

namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

void AppendEscaped(std::string& out, char c) {
    if (c == '\\') {
        out += "\\\\";
    } else if (c == '\r') {
        out += "\\r";
    } else if (c == '\n') {
        out += "\\n";
    } else if (c == '\t') {
        out += "\\t";
    } else if (common::IsControl(c)) {
        const auto byte = static_cast<unsigned char>(c);
        out.append("\\x").append(1, kHexDigits[byte >> 4]).append(1, kHexDigits[byte & 15]);
    } else {
        out += c;
    }
}

unsigned HexDigit(char c) {
    if (c >= '0' && c <= '9')
        return static_cast<unsigned>(c - '0');
    if (c >= 'a' && c <= 'f')
        return static_cast<unsigned>(c - 'a') + 10;
    if (c >= 'A' && c <= 'F')
        return static_cast<unsigned>(c - 'A') + 10;
    throw FormatError("\\x wants two hexadecimal digits");
}

// Takes the escape that starts at the front of `rest`, which is a backslash.
char TakeEscape(std::string_view& rest) {
    if (rest.size() < 2)
        throw FormatError("the line ends in a backslash");
    const char code = rest[1];
    rest.remove_prefix(2);
    switch (code) {
        case '"':
        case '\\':
            return code;
        case 'r':
            return '\r';
        case 'n':
            return '\n';
        case 't':
            return '\t';
        case 'x': {
            if (rest.size() < 2)
                throw FormatError("\\x wants two hexadecimal digits");
            const unsigned byte = HexDigit(rest[0]) << 4 | HexDigit(rest[1]);
            rest.remove_prefix(2);
            return static_cast<char>(byte);
        }
        default:
            throw FormatError(std::string("unknown escape \\") + code);
    }
}

// Appends the quoted section at the front of `rest`, which is its opening quote, to `out`.
void TakeQuoted(std::string_view& rest, std::string& out) {
    rest.remove_prefix(1);
    while (!rest.empty() && rest.front() != '"') {
        if (rest.front() == '\\') {
            out += TakeEscape(rest);
        } else {
            out += rest.front();
            rest.remove_prefix(1);
        }
    }
    if (rest.empty())
        throw FormatError("a quote is not closed");
    rest.remove_prefix(1);
    if (!rest.empty() && !IsBlank(rest.front()))
        throw FormatError("text follows a closing quote");
}

template <class Number>
Number ParseAs(std::string_view text, std::string_view what) {
    Number number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end)
        throw FormatError(std::string(what) + " wants a number of 32 bits, not " + FormatValue(text));
    return number;
}

} // namespace

std::string FormatValue(std::string_view value) {
    bool bare = !value.empty();
    for (const char c : value)
        bare = bare && c != ' ' && c != '"' && c != '\\' && !common::IsControl(c);
    if (bare)
        return std::string(value);
    std::string out = "\"";
    for (const char c : value) {
        if (c == '"')
            out += "\\\"";
        else
            AppendEscaped(out, c);
    }
    return out += '"';
}

std::string FormatText(std::string_view text) {
    std::string out;
    for (const char c : text)
        AppendEscaped(out, c);
    return out;
}

Word TakeWord(std::string_view& rest) {
    rest = TrimStart(rest);
    Word word;
    if (rest.front() == '"') {
        TakeQuoted(rest, word.text);
        return word;
    }
    while (!rest.empty() && !IsBlank(rest.front())) {
        const char c = rest.front();
        if (c == '"' || c == '\\' || common::IsControl(c))
            throw FormatError("a value with a quote, a backslash or a control character stands in quotes");
        word.text += c;
        rest.remove_prefix(1);
        if (c == '=' && word.equals == std::string::npos) {
            word.equals = word.text.size() - 1;
            if (!rest.empty() && rest.front() == '"') {
                TakeQuoted(rest, word.text);
                break;
            }
        }
    }
    return word;
}

std::string ParseText(std::string_view text) {
    text = TrimStart(text);
    if (!text.empty() && text.front() == '"') {
        const Word word = TakeWord(text);
        if (!TrimStart(text).empty())
            throw FormatError("text follows a closing quote");
        return word.text;
    }
    std::string out;
    while (!text.empty()) {
        if (text.front() == '\\') {
            out += TakeEscape(text);
        } else {
            out += text.front();
            text.remove_prefix(1);
        }
    }
    return out;
}

std::string_view TrimStart(std::string_view text) {
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    return text;
}

std::string_view TrimEnd(std::string_view text) {
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

std::uint32_t ParseNumber(std::string_view text, std::string_view what) {
    return ParseAs<std::uint32_t>(text, what);
}

std::int32_t ParseSignedNumber(std::string_view text, std::string_view what) {
    return ParseAs<std::int32_t>(text, what);
}

std::vector<std::uint32_t> ParseNumberList(std::string_view text, std::string_view what) {
    std::vector<std::uint32_t> numbers;
    while (!text.empty()) {
        const std::size_t comma = text.find(',');
        numbers.push_back(ParseNumber(text.substr(0, comma), what));
        if (comma == std::string_view::npos)
            break;
        text.remove_prefix(comma + 1);
        if (text.empty())
            throw FormatError(std::string(what) + " ends in a comma");
    }
    return numbers;
}

} // namespace korvel::replay
