#include "Options.h"

#include <CLI/CLI.hpp>
#include <iostream>

namespace korvel::catalog {

std::optional<Options> ParseOptions(int argc, char** argv, int& exitCode) {
    Options options;
    CLI::App app("Serves the catalogue of a streaming service from a file.", "korvel-catalog");
    app.add_option("--catalog", options.catalogue, "the catalogue, a TOML file")->required();
    app.add_option("--port", options.port, "TCP port to listen on; 0 picks a free one")
        ->capture_default_str();
    app.add_option("--address", options.address, "address to listen on")->capture_default_str();
    app.set_version_flag("--version", KORVEL_VERSION);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& done) { // --help or --version
        exitCode = app.exit(done);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        std::cerr << "korvel-catalog: " << error.what() << "\n";
        exitCode = 2;
        return std::nullopt;
    }
    return options;
}

} // namespace korvel::catalog
