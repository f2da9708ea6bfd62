#include "roomplayer/Options.h"

#include <CLI/CLI.hpp>
#include <iostream>

namespace korvel::roomplayer {

std::optional<Options> ParseOptions(int argc, char** argv, int& exitCode) {
    Options options;
    bool noDevice = false;
    CLI::App app("Room player: plays the stream that is sent to its port.", "korvel-roomplayer");
    app.add_option("--port", options.port, "UDP port for RTP, RTCP on the next; 0 picks a free pair")
        ->required()
        ->check(CLI::Range(0, 65534));
    app.add_option("--address", options.address, "address to receive on")->capture_default_str();
    app.add_option("--record", options.recordPath, "WAV file that takes all that is heard, silence included");
    app.add_option("--latency", options.latencyMilliseconds, "milliseconds from receiving to playing")
        ->capture_default_str()
        ->check(CLI::Range(kMinLatencyMilliseconds, kMaxLatencyMilliseconds));
    app.add_flag("--no-device", noDevice, "do not open a sound device");
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        std::cout << app.help();
        exitCode = 0;
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        std::cerr << "korvel-roomplayer: " << error.what() << "\n";
        exitCode = 2;
        return std::nullopt;
    }
    options.useDevice = !noDevice;
    return options;
}

} // namespace korvel::roomplayer
