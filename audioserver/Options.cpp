#include "audioserver/Options.h"

#include <CLI/CLI.hpp>
#include <vector>

namespace korvel::audioserver {
namespace {

void SetInputs(const std::vector<std::string>& inputs, Options& options) {
    for (const std::string& input : inputs) {
        const auto equals = input.find('=');
        if (equals == std::string::npos || equals == 0 || equals + 1 == input.size()) {
            throw CLI::ValidationError("--input", "an input has the form NAME=URI or NAME=PIPELINE");
        }
        options.inputs[input.substr(0, equals)] = input.substr(equals + 1);
    }
}

void SetCatalogue(const std::string& text, Options& options) {
    const auto address = common::ParseHostPort(text);
    if (!address) {
        throw CLI::ValidationError("--catalog", "a catalogue has the form HOST:PORT");
    }
    options.catalogue = *address;
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
}

} // namespace korvel::audioserver
