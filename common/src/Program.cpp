#include "common/Program.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

namespace korvel::common {
namespace {

int End(const CLI::App& app, const char* why, int code) {
    std::fprintf(stderr, "%s: %s\n", app.get_name().c_str(), why);
    return code;
}

} // namespace

int RunProgram(CLI::App& app, int argc, const char* const* argv, const std::function<int()>& body) {
    try {
        app.set_version_flag("--version", app.get_name() + " " + KORVEL_VERSION,
                             "Print the version and exit");
        app.parse(argc, argv);
    } catch (const CLI::Success& done) { // --help, --version
        return app.exit(done);
    } catch (const CLI::ParseError& error) {
        return End(app, error.what(), kExitMisused);
    }
    try {
        return body();
    } catch (const std::exception& error) {
        return End(app, error.what(), kExitFailed);
    }
}

int RunProgram(const ProgramInfo& info, const std::function<void(CLI::App&)>& addOptions, int argc,
               const char* const* argv, const std::function<int()>& body) {
    CLI::App app(info.purpose, info.name);
    addOptions(app);
    return RunProgram(app, argc, argv, body);
}

} // namespace korvel::common
