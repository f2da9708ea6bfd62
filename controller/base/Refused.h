#pragma once

#include <stdexcept>
#include <string>

namespace korvel::controller {

// Why a request from outside was not done.
class Refused : public std::runtime_error {
public:
    enum class Why {
        Invalid,     // the request itself is wrong
        NotFound,    // it names something that is not there
        Conflict,    // it does not fit the present state
        Unplayable,  // it names a file that holds no sound
        Unavailable, // it needs an audio server that is not connected
    };

    Refused(Why why, const std::string& text) : std::runtime_error(text), m_why(why) {}
    Why GetWhy() const { return m_why; }

private:
    Why m_why;
};

} // namespace korvel::controller
