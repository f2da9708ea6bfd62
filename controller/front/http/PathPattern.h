#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvel::controller {

// The pattern of whatever no other pattern stands for.
inline constexpr std::string_view kAnyOther = "*";

// What stands in the places of a pattern that have a name. Refers to the pattern and the path.
using Placeholders = std::map<std::string_view, std::string_view>;

// "/api/rooms/{id}/off" stands for the paths of these four segments, the third of which may be any. None for a path that
// the pattern does not stand for. The path is a Target's: decoded, so that "%2F" parts no segments.
std::optional<Placeholders> MatchPath(std::string_view pattern, const std::vector<std::string>& path);

} // namespace korvel::controller
