#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace korvel::replay {

// A transcript that cannot be played, with the place of the trouble: FILE:LINE: TEXT, or FILE: TEXT when it
// is the file as a whole.
class ScriptError : public std::runtime_error {
public:
    ScriptError(const std::string& file, const std::string& text) : runtime_error(file + ": " + text) {}
    ScriptError(const std::string& file, std::size_t line, const std::string& text)
        : runtime_error(file + ":" + std::to_string(line) + ": " + text) {}
};

} // namespace korvel::replay
