#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>

#include "actions/LibraryCopies.h"
#include "app/Core.h"
#include "common/Program.h"
#include "front/http/HttpServer.h"
// The order matters: Asio.h comes first, through Core.h.
#include <boost/asio/signal_set.hpp>

namespace {

using namespace korvel::controller;

std::string ProgramFolder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
}

// One bad handler must not stop the music in the whole house.
void RunLoop(asio::io_context& loop, const korvel::common::Log& log) {
    while (!loop.stopped()) {
        try {
            loop.run();
        } catch (const std::exception& error) {
            log.Error(std::string("internal error: ") + error.what());
        }
    }
}

void Run(const Config& config) {
    CheckFolders(config);
    const korvel::common::Log log(config.log);
    asio::io_context loop(1);
    Core core(loop, config, log);
    Api api(loop, core.GetParts(), config.webFolder);
    HttpServer server(loop, api, config.httpAddress, config.httpPort, log);
    asio::signal_set signals(loop, SIGINT, SIGTERM);
    signals.async_wait([&](boost::system::error_code, int signal) {
        log.Info("stopping on signal " + std::to_string(signal));
        server.Stop();
        core.Stop();
        loop.stop();
    });
    core.Start();
    log.Info("korvel-controller " + std::string(kVersion) + " on http://" + config.httpAddress + ":" +
             std::to_string(server.GetPort()));
    RunLoop(loop, log);
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("The controller of a house's music.", "korvel-controller");
    std::string file;
    bool quiet = false;
    bool restore = false;
    app.add_option("--config", file, "configuration file (TOML); without one, three rooms on this machine");
    app.add_flag("--quiet", quiet, "log errors and warnings only");
    app.add_flag("--restore", restore, "put the newest good copy of the library in its place, and end");
    return korvel::common::RunProgram(app, argc, argv, [&] {
        // A peer that went away is an error code of the write, not a signal; so is a file that may not grow.
        std::signal(SIGPIPE, SIG_IGN);
        std::signal(SIGXFSZ, SIG_IGN);
        const std::string folder = ProgramFolder();
        Config config = file.empty() ? DefaultConfig(folder) : LoadConfig(file, folder);
        if (quiet)
            config.log = korvel::common::LogLevel::Warning;
        if (restore)
            std::printf("%s\n", RestoreLibrary(config.stateFolder).c_str());
        else
            Run(config);
        return korvel::common::kExitDone;
    });
}
