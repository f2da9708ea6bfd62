#include <gst/gst.h>

#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>

#include "audioserver/Log.h"
#include "audioserver/Options.h"
#include "audioserver/Server.h"

namespace {

using namespace korvel::audioserver;

void Run(const Options& options) {
    boost::asio::io_context context(1);
    Server server(context, options.address, options.port, options.inputs, options.catalogue);
    boost::asio::signal_set signals(context, SIGINT, SIGTERM);
    signals.async_wait([&server](const boost::system::error_code& cancelled, int) {
        if (!cancelled) {
            server.Stop();
        }
    });
    std::cout << "listening on " << server.Endpoint() << std::endl;
    context.run();
    Log("stopped");
}

} // namespace

int main(int argc, char** argv) {
    try {
        int exitCode = 0;
        const auto options = ParseOptions(argc, argv, exitCode);
        if (!options) {
            return exitCode;
        }
        GError* failure = nullptr;
        if (gst_init_check(nullptr, nullptr, &failure) == FALSE) {
            Log(failure != nullptr ? failure->message : "GStreamer cannot start");
            return EXIT_FAILURE;
        }
        Run(*options);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        Log(error.what());
        return EXIT_FAILURE;
    }
}
