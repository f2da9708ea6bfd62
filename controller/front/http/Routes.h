// All that can be asked of the interface, in one table: what is not there is not done.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "front/http/Api.h"
#include "front/http/PathPattern.h"

namespace korvel::controller {

// What a request does to the house.
enum class May {
    Read,       // nothing; so pages of other origins may ask for it, too
    Change,     // something that people hear, or that they saved
    Administer, // something that the house keeps for all of them
};

// A request that has found its route. Valid as long as the handler runs.
struct Call {
    const Target& target;
    Placeholders values;
    const nlohmann::json& body; // an object; null for a GET, which has none
};

// Answers at once, or has `done` called later and returns none. Throws as Api::Handle() knows how to tell.
using Handler = std::optional<HttpReply> (*)(Api& api, const Call& call, const Api::Done& done);

struct Route {
    std::string_view method;
    std::string_view pattern; // for MatchPath()
    May may;
    Handler handle; // which names, where it takes a body, what reads that
};

// No two of a method stand for the same path; the last one stands for what no other does. docs/api.md lists them.
std::span<const Route> Routes();

struct FoundRoute {
    const Route* route = nullptr; // null when there is none for the method
    Placeholders values;
    std::string allow; // then the methods that would do
};
FoundRoute FindRoute(std::span<const Route> routes, std::string_view method,
                     const std::vector<std::string>& path);

} // namespace korvel::controller
