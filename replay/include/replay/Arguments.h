// The words after an input line's verb, taken from left to right.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korvel::replay {

// Every operation throws FormatError for what it cannot take; `what` names the wanted word in that message.
class Arguments {
public:
    // `line` is what follows the verb; it must outlive this object.
    explicit Arguments(std::string_view line) : m_rest(line) {}

    bool AtEnd() const;
    std::string Value(std::string_view what);
    std::uint32_t Number(std::string_view what);
    std::int32_t SignedNumber(std::string_view what);
    // "1,2,3"; an empty value is an empty list.
    std::vector<std::uint32_t> NumberList(std::string_view what);
    // All that is left, as one text.
    std::string Text();
    // All that is left, as it stands.
    std::string Rest();
    // All that is left, as key=value words.
    std::vector<std::pair<std::string, std::string>> Pairs();
    void ExpectEnd() const;

private:
    std::string_view m_rest;
};

// The key=value words of a verb with a fixed set of keys.
class Fields {
public:
    // Takes the rest of `arguments`; FormatError for a key that is not among `known`, or that comes twice.
    Fields(Arguments& arguments, std::initializer_list<std::string_view> known);

    // "" when absent.
    std::string Text(std::string_view key) const;
    // 0 when absent.
    std::uint32_t Number(std::string_view key) const;
    // Empty when absent.
    std::vector<std::uint32_t> NumberList(std::string_view key) const;

private:
    std::vector<std::pair<std::string, std::string>> m_pairs;
};

} // namespace korvel::replay
