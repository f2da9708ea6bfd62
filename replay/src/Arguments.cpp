#include "replay/Arguments.h"

#include <algorithm>

#include "replay/Words.h"

namespace korvel::replay {

bool Arguments::AtEnd() const {
    return TrimStart(m_rest).empty();
}

std::string Arguments::Value(std::string_view what) {
    if (AtEnd())
        throw FormatError(std::string(what) + " is missing");
    return TakeWord(m_rest).text;
}

std::uint32_t Arguments::Number(std::string_view what) {
    return ParseNumber(Value(what), what);
}
std::int32_t Arguments::SignedNumber(std::string_view what) {
    return ParseSignedNumber(Value(what), what);
}

std::vector<std::uint32_t> Arguments::NumberList(std::string_view what) {
    return ParseNumberList(Value(what), what);
}

std::string Arguments::Text() {
    return ParseText(std::exchange(m_rest, {}));
}

std::string Arguments::Rest() {
    return std::string(TrimStart(std::exchange(m_rest, {})));
}

std::vector<std::pair<std::string, std::string>> Arguments::Pairs() {
    std::vector<std::pair<std::string, std::string>> pairs;
    while (!AtEnd()) {
        const Word word = TakeWord(m_rest);
        if (word.equals == std::string::npos || word.equals == 0)
            throw FormatError("wants key=value, not " + FormatValue(word.text));
        pairs.emplace_back(word.text.substr(0, word.equals), word.text.substr(word.equals + 1));
    }
    return pairs;
}

void Arguments::ExpectEnd() const {
    if (!AtEnd())
        throw FormatError("too many words: " + std::string(TrimStart(m_rest)));
}

Fields::Fields(Arguments& arguments, std::initializer_list<std::string_view> known)
    : m_pairs(arguments.Pairs()) {
    for (auto pair = m_pairs.begin(); pair != m_pairs.end(); ++pair) {
        if (std::find(known.begin(), known.end(), pair->first) == known.end())
            throw FormatError("unknown key " + FormatValue(pair->first));
        if (std::any_of(m_pairs.begin(), pair,
                        [&](const auto& earlier) { return earlier.first == pair->first; }))
            throw FormatError("the key " + pair->first + " comes twice");
    }
}

std::string Fields::Text(std::string_view key) const {
    for (const auto& [name, value] : m_pairs) {
        if (name == key)
            return value;
    }
    return "";
}

std::uint32_t Fields::Number(std::string_view key) const {
    for (const auto& [name, value] : m_pairs) {
        if (name == key)
            return ParseNumber(value, key);
    }
    return 0;
}

std::vector<std::uint32_t> Fields::NumberList(std::string_view key) const {
    return ParseNumberList(Text(key), key);
}

} // namespace korvel::replay
