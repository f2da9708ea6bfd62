// The verbs of input lines, as tables: one row and one short handler each.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace korvel::replay {

class Arguments;
class Session;

struct Verb {
    const char* name;
    const char* words; // what follows the name
    const char* help;  // one line
    // FormatError when the words are not right; nothing has happened then.
    void (*run)(Session& session, Arguments& arguments);
};

// The verbs that say what the world is like.
std::span<const Verb> GetWorldVerbs();
// The verbs that call the driver.
std::span<const Verb> GetEntryVerbs();
// The verbs that select sources in rooms.
std::span<const Verb> GetRoutingVerbs();
// The verbs that call back what the driver left with a service.
std::span<const Verb> GetServiceVerbs();

// Null when there is none of that name.
const Verb* FindVerb(std::string_view name);
// All verbs, a line each.
std::string DescribeVerbs();

} // namespace korvel::replay
