#pragma once

#include <cstdint>
#include <string>

#include "Protocol.h"

namespace CLI {
class App;
}

namespace korvel::catalog {

struct Options {
    std::string catalogue; // a file
    std::string address = "127.0.0.1";
    std::uint16_t port = kDefaultPort; // 0 picks a free one
};

// Lets the command line set the options, which must outlive its reading.
void AddOptions(CLI::App& app, Options& options);

} // namespace korvel::catalog
