#include "audioserver/Options.h"

#include <CLI/CLI.hpp>
#include <vector>

namespace korvel::audioserver {
namespace {

constexpr unsigned kMaxTimeMilliseconds = 3600000;

void SetInputs(const std::vector<std::string>& inputs, Options& options) {
    for (const std::string& input : inputs) {
        const auto equals = input.find('=');
        if (equals == std::string::npos || equals == 0 || equals + 1 == input.size())
            throw CLI::ValidationError("--input", "an input has the form NAME=URI or NAME=PIPELINE");
        options.inputs[input.substr(0, equals)] = input.substr(equals + 1);
    }
}

void SetCatalogue(const std::string& text, Options& options) {
    const auto address = common::ParseHostPort(text);
    if (!address)
        throw CLI::ValidationError("--catalog", "a catalogue has the form HOST:PORT");
    options.catalogue = *address;
}

void AddTime(CLI::App& app, const char* name, std::chrono::milliseconds& time, const char* meaning) {
    app.add_option_function<unsigned>(
           name, [&time](unsigned milliseconds) { time = std::chrono::milliseconds(milliseconds); }, meaning)
        ->default_str(std::to_string(time.count()))
        ->check(CLI::Range(1U, kMaxTimeMilliseconds));
}

} // namespace

void AddOptions(CLI::App& app, Options& options) {
    app.add_option("--port", options.port, "TCP port to listen on; 0 picks a free one")->required();
    app.add_option("--address", options.address, "address to listen on")->capture_default_str();
    app.add_option_function<std::vector<std::string>>(
           "--input", [&options](const auto& inputs) { SetInputs(inputs, options); },
           "a local input, as NAME=URI or NAME=PIPELINE (repeatable)")
        ->take_all();
    app.add_option_function<std::string>(
           "--catalog", [&options](const auto& text) { SetCatalogue(text, options); },
           "the catalogue of the streaming service, as HOST:PORT")
        ->default_str(common::ToText(options.catalogue));
    app.add_option("--first-stream", options.firstStream,
                   "number of the first stream; by default one that no earlier run has given out")
        ->check(CLI::Range(kFirstStream, kLastStream));
    AddTime(app, "--sound-patience", options.times.toSound,
            "milliseconds until a source without sound is given up");
    AddTime(app, "--end-patience", options.times.toEnd,
            "milliseconds until a source that does not end is abandoned");
    AddTime(app, "--first-retry", options.times.firstRetry,
            "milliseconds until a lost station is connected to again");
}

} // namespace korvel::audioserver
