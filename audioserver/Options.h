// The command line.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "audioserver/Protocol.h"
#include "audioserver/SourceTimes.h"
#include "common/Address.h"

namespace CLI {
class App;
}

namespace korvel::audioserver {

struct Options {
    std::string address = "127.0.0.1";
    // 0 picks a free port.
    std::uint16_t port = 0;
    // Local inputs by name: a URI, or source elements in the notation of gst-launch.
    std::map<std::string, std::string> inputs;
    // Of the first stream; none for one that no earlier run has given out.
    std::optional<StreamNumber> firstStream;
    // The gateway of the catalogue.
    common::HostPort catalogue{"127.0.0.1", 5555};
    SourceTimes times;
};

// Lets the command line set the options, which must outlive its reading.
void AddOptions(CLI::App& app, Options& options);

} // namespace korvel::audioserver
