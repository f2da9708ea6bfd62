#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>

#include "Gateway.h"
#include "Options.h"

namespace {

using namespace korvel::catalog;

void Run(const Options& options) {
    boost::asio::io_context context(1);
    Gateway gateway(context, options.address, options.port, LoadCatalogue(options.catalogue));
    boost::asio::signal_set signals(context, SIGINT, SIGTERM);
    signals.async_wait([&gateway](boost::system::error_code cancelled, int) {
        if (!cancelled)
            gateway.Stop();
    });
    std::cout << "listening on " << gateway.GetEndpoint() << std::endl;
    context.run();
}

} // namespace

int main(int argc, char** argv) {
    try {
        // A peer that went away is an error code of the write, not a signal.
        std::signal(SIGPIPE, SIG_IGN);
        int exitCode = EXIT_SUCCESS;
        if (const auto options = ParseOptions(argc, argv, exitCode))
            Run(*options);
        return exitCode;
    } catch (const std::exception& error) {
        std::cerr << "korvel-catalog: " << error.what() << "\n";
        return EXIT_FAILURE;
    }
}
