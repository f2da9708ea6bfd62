#include "roomplayer/Options.h"

#include <CLI/CLI.hpp>

#include "roomplayer/PacketGate.h"

namespace korvel::roomplayer {

void AddOptions(CLI::App& app, Options& options) {
    app.add_option("--port", options.port, "UDP port for RTP, RTCP on the next; 0 picks a free pair")
        ->required()
        ->check(CLI::Range(0, 65534));
    app.add_option("--address", options.address, "address to receive on")->capture_default_str();
    app.add_option("--record", options.recordPath, "WAV file that takes all that is heard, silence included");
    app.add_option("--latency", options.latencyMilliseconds, "milliseconds from receiving to playing")
        ->capture_default_str()
        ->check(CLI::Range(kMinLatencyMilliseconds, kMaxLatencyMilliseconds));
    app.add_option("--sender", options.senders, "address of an audio server that is heard (repeatable)")
        ->take_all()
        ->check(CLI::Validator(
            [](std::string& address) {
                return ParseSenderAddress(address) ? "" : "not a numeric address: " + address;
            },
            "ADDRESS"));
    app.add_flag_callback(
        "--no-device", [&options] { options.useDevice = false; }, "do not open a sound device");
}

} // namespace korvel::roomplayer
