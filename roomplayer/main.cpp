#include <gst/gst.h>

#include <csignal>
#include <iostream>
#include <stdexcept>
#include <string_view>

#include "common/Program.h"
#include "roomplayer/Options.h"
#include "roomplayer/Player.h"

namespace {

using namespace korvel::roomplayer;

int Run(const Options& options) {
    GError* failure = nullptr;
    if (gst_init_check(nullptr, nullptr, &failure) == FALSE)
        throw std::runtime_error(failure != nullptr ? failure->message : "GStreamer cannot start");
    // Whoever reads the first line only must not end the player with the next.
    std::signal(SIGPIPE, SIG_IGN);
    Player player(options, [](std::string_view event) { std::cout << event << std::endl; });
    std::cout << "listening on " << options.address << ":" << player.Port() << std::endl;
    std::cout << "output " << player.Output() << std::endl;
    return player.Run() ? korvel::common::kExitDone : korvel::common::kExitFailed;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    return korvel::common::RunProgram(
        {"korvel-roomplayer", "Room player: plays the stream that is sent to its port."},
        [&options](CLI::App& app) { AddOptions(app, options); }, argc, argv,
        [&options] { return Run(options); });
}
