// The command line.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace korvel::roomplayer {

// Bounds of --latency. Below the lower one nothing may be late.
inline constexpr unsigned kMinLatencyMilliseconds = 40;
inline constexpr unsigned kMaxLatencyMilliseconds = 5000;

struct Options {
    std::string address = "127.0.0.1";
    // RTP port, RTCP on the next; 0 picks a free pair.
    std::uint16_t port = 0;
    // From receiving a sound to handing it to the device. As much as a busy machine may be late without being heard.
    unsigned latencyMilliseconds = 200;
    // Empty for no recording.
    std::string recordPath;
    bool useDevice = true;
    // Numeric addresses of audio servers; empty for whoever plays first.
    std::vector<std::string> senders;
};

// Lets the command line set the options, which must outlive its reading.
void AddOptions(CLI::App& app, Options& options);

} // namespace korvel::roomplayer
