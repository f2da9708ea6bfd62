#include "Options.h"

#include <CLI/CLI.hpp>

namespace korvel::catalog {

void AddOptions(CLI::App& app, Options& options) {
    app.add_option("--catalog", options.catalogue, "the catalogue, a TOML file")->required();
    app.add_option("--port", options.port, "TCP port to listen on; 0 picks a free one")
        ->capture_default_str();
    app.add_option("--address", options.address, "address to listen on")->capture_default_str();
}

} // namespace korvel::catalog
