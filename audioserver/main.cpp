#include <gst/gst.h>
#include <malloc.h>

#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>

#include "audioserver/Log.h"
#include "audioserver/Options.h"
#include "audioserver/Server.h"

namespace {

using namespace korvel::audioserver;

// The threads of a stream leave what they freed with the allocator. What a busy evening took goes back to the
// system now and then.
void TrimMemory(boost::asio::steady_timer& timer) {
    timer.expires_after(std::chrono::seconds(10));
    timer.async_wait([&timer](const boost::system::error_code& cancelled) {
        if (cancelled) {
            return;
        }
        malloc_trim(0);
        TrimMemory(timer);
    });
}

void Run(const Options& options) {
    boost::asio::io_context context(1);
    Server server(context, options.address, options.port, options.inputs, options.catalogue);
    boost::asio::steady_timer trimmer(context);
    TrimMemory(trimmer);
    boost::asio::signal_set signals(context, SIGINT, SIGTERM);
    signals.async_wait([&](const boost::system::error_code& cancelled, int) {
        if (!cancelled) {
            trimmer.cancel();
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
