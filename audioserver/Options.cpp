#include "audioserver/Options.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <vector>

namespace korvel::audioserver {

std::optional<Options> ParseOptions(int argc, char** argv, int& exitCode) {
    Options options;
    std::vector<std::string> inputs;
    CLI::App app("Audio server: plays media to rooms on request of a controller.", "korvel-audioserver");
    app.add_option("--port", options.port, "TCP port to listen on; 0 picks a free one")->required();
    app.add_option("--address", options.address, "address to listen on")->capture_default_str();
    app.add_option("--input", inputs, "a local input, as NAME=URI or NAME=PIPELINE (repeatable)")
        ->take_all()
        ->check([](const std::string& input) {
            const auto equals = input.find('=');
            const bool usable = equals != std::string::npos && equals > 0 && equals + 1 < input.size();
            return usable ? std::string() : "an input has the form NAME=URI or NAME=PIPELINE";
        });
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        std::cout << app.help();
        exitCode = 0;
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        std::cerr << "korvel-audioserver: " << error.what() << "\n";
        exitCode = 2;
        return std::nullopt;
    }
    for (const std::string& input : inputs) {
        const auto equals = input.find('=');
        options.inputs[input.substr(0, equals)] = input.substr(equals + 1);
    }
    return options;
}

} // namespace korvel::audioserver
