#include <gst/gst.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string_view>

#include "roomplayer/Log.h"
#include "roomplayer/Options.h"
#include "roomplayer/Player.h"

int main(int argc, char** argv) {
    using namespace korvel::roomplayer;
    try {
        int exitCode = 0;
        const auto options = ParseOptions(argc, argv, exitCode);
        if (!options) {
            return exitCode;
        }
        GError* failure = nullptr;
        if (gst_init_check(nullptr, nullptr, &failure) == FALSE) {
            Log(failure != nullptr ? failure->message : "GStreamer cannot start");
            return EXIT_FAILURE;
        }
        // Whoever reads the first line only must not end the player with the next.
        std::signal(SIGPIPE, SIG_IGN);
        Player player(*options, [](std::string_view event) { std::cout << event << std::endl; });
        std::cout << "listening on " << options->address << ":" << player.Port() << std::endl;
        return player.Run() ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        Log(error.what());
        return EXIT_FAILURE;
    }
}
