#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Protocol.h"

namespace korvel::catalog {

struct Options {
    std::string catalogue; // a file
    std::string address = "127.0.0.1";
    std::uint16_t port = kDefaultPort; // 0 picks a free one
};

// Reads the command line. Empty when the program should end, with the exit code in exitCode: help was asked
// for (0, printed on stdout) or the options are bad (one line on stderr).
std::optional<Options> ParseOptions(int argc, char** argv, int& exitCode);

} // namespace korvel::catalog
