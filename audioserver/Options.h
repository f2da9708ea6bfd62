// The command line.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "audioserver/CatalogClient.h"

namespace korvel::audioserver {

struct Options {
    std::string address = "127.0.0.1";
    /// 0 picks a free port.
    std::uint16_t port = 0;
    /// Local inputs by name: a URI, or source elements in the notation of gst-launch.
    std::map<std::string, std::string> inputs;
    CatalogAddress catalogue;
};

/// Reads the command line. Empty when the program should end, with the exit code in exitCode: help was asked
/// for (0, printed on stdout) or the options are bad (one line on stderr).
std::optional<Options> ParseOptions(int argc, char** argv, int& exitCode);

} // namespace korvel::audioserver
