// What is wrong, for programs and for people.
#pragma once

#include <optional>
#include <string>

namespace korvel::controller {

struct Problem {
    std::string code; // of the table in docs/api.md
    std::string text; // one sentence, without a full stop

    friend bool operator==(const Problem&, const Problem&) = default;
};

} // namespace korvel::controller
