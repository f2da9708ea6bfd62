// The command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace korvel::roomplayer {

/// Bounds of --latency. Below the lower one a packet has no chance to wait for a late one before it.
inline constexpr unsigned kMinLatencyMilliseconds = 5;
inline constexpr unsigned kMaxLatencyMilliseconds = 5000;

struct Options {
    std::string address = "127.0.0.1";
    /// RTP port, RTCP on the next; 0 picks a free pair.
    std::uint16_t port = 0;
    unsigned latencyMilliseconds = 100;
    /// Empty for no recording.
    std::string recordPath;
    bool useDevice = true;
};

/// Reads the command line. Empty when the program should end, with the exit code in exitCode: help was asked
/// for (0, printed on stdout) or the options are bad (one line on stderr).
std::optional<Options> ParseOptions(int argc, char** argv, int& exitCode);

} // namespace korvel::roomplayer
