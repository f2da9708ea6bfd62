#include "replay/Verbs.h"

#include <algorithm>
#include <array>

namespace korvel::replay {

namespace {

std::array<std::span<const Verb>, 4> GetTables() {
    return {GetWorldVerbs(), GetEntryVerbs(), GetRoutingVerbs(), GetServiceVerbs()};
}

} // namespace

const Verb* FindVerb(std::string_view name) {
    for (const auto& table : GetTables()) {
        const auto verb =
            std::find_if(table.begin(), table.end(), [&](const Verb& v) { return v.name == name; });
        if (verb != table.end())
            return &*verb;
    }
    return nullptr;
}

std::string DescribeVerbs() {
    std::string text;
    for (const auto& table : GetTables()) {
        for (const Verb& verb : table) {
            text.append("  ").append(verb.name);
            if (*verb.words)
                text.append(" ").append(verb.words);
            text.append("\n      ").append(verb.help).append("\n");
        }
    }
    return text;
}

} // namespace korvel::replay
