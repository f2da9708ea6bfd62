#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <iostream>

#include "Gateway.h"
#include "Options.h"
#include "common/Program.h"

namespace {

using namespace korvel::catalog;

int Run(const Options& options) {
    // A peer that went away is an error code of the write, not a signal.
    std::signal(SIGPIPE, SIG_IGN);
    boost::asio::io_context context(1);
    Gateway gateway(context, options.address, options.port, LoadCatalogue(options.catalogue));
    boost::asio::signal_set signals(context, SIGINT, SIGTERM);
    signals.async_wait([&gateway](boost::system::error_code cancelled, int) {
        if (!cancelled)
            gateway.Stop();
    });
    std::cout << "listening on " << gateway.GetEndpoint() << std::endl;
    context.run();
    return korvel::common::kExitDone;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    return korvel::common::RunProgram(
        {"korvel-catalog", "Serves the catalogue of a streaming service from a file."},
        [&options](CLI::App& app) { AddOptions(app, options); }, argc, argv,
        [&options] { return Run(options); });
}
