// How every program begins and ends.
#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace korvel::common {

// The exit codes of a program.
inline constexpr int kExitDone = 0;
inline constexpr int kExitFailed = 1;  // one line on stderr says why
inline constexpr int kExitMisused = 2; // so it does for options that make no sense

// Reads the command line into the options of `app`, which must have a name and gets --version, and runs `body`,
// whose result is the exit code. Help and version go to stdout and run nothing. What `body` throws becomes a line
// "<name>: <what>" on stderr and kExitFailed.
int RunProgram(CLI::App& app, int argc, const char* const* argv, const std::function<int()>& body);

// The same for a program whose options are added elsewhere: its main file does without the library's header, which
// takes seconds to compile.
struct ProgramInfo {
    const char* name;
    const char* purpose;
};
int RunProgram(const ProgramInfo& info, const std::function<void(CLI::App&)>& addOptions, int argc,
               const char* const* argv, const std::function<int()>& body);

} // namespace korvel::common
