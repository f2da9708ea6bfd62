#include "front/http/PathPattern.h"

#include <algorithm>

namespace korvel::controller {

std::optional<Placeholders> MatchPath(std::string_view pattern, const std::vector<std::string>& path) {
    Placeholders values;
    if (pattern == kAnyOther)
        return values;
    for (const std::string& segment : path) {
        if (pattern.empty())
            return std::nullopt;
        pattern.remove_prefix(1); // the slash
        const std::string_view wanted = pattern.substr(0, pattern.find('/'));
        pattern.remove_prefix(wanted.size());
        if (wanted.starts_with('{'))
            values[wanted.substr(1, wanted.size() - 2)] = segment;
        else if (wanted != segment)
            return std::nullopt;
    }
    return pattern.empty() ? std::optional(std::move(values)) : std::nullopt;
}

} // namespace korvel::controller
