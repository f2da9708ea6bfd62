#include "audioserver/Options.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <string_view>
#include <vector>

#include "audioserver/LineParser.h"

namespace korvel::audioserver {
namespace {

constexpr std::uint32_t kMaxTcpPort = 65535;

} // namespace

std::optional<Options> ParseOptions(int argc, char** argv, int& exitCode) {
    Options options;
    std::vector<std::string> inputs;
    std::string catalogue = options.catalogue.host + ":" + options.catalogue.port;
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
    app.add_option("--catalog", catalogue, "the catalogue of the streaming service, as HOST:PORT")
        ->capture_default_str()
        ->check([](const std::string& address) {
            const auto port = ParseNumber(std::string_view(address).substr(address.rfind(':') + 1));
            const bool usable = address.rfind(':') != std::string::npos && address.front() != ':' && port &&
                                *port > 0 && *port <= kMaxTcpPort;
            return usable ? std::string() : "a catalogue has the form HOST:PORT";
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
    const auto colon = catalogue.rfind(':');
    options.catalogue = {catalogue.substr(0, colon), catalogue.substr(colon + 1)};
    for (const std::string& input : inputs) {
        const auto equals = input.find('=');
        options.inputs[input.substr(0, equals)] = input.substr(equals + 1);
    }
    return options;
}

} // namespace korvel::audioserver
