#include <gst/gst.h>
#include <malloc.h>

#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <csignal>
#include <exception>
#include <iostream>
#include <stdexcept>

#include "audioserver/Descriptors.h"
#include "audioserver/Options.h"
#include "audioserver/Server.h"
#include "common/Log.h"
#include "common/Program.h"

namespace {

using namespace korvel::audioserver;

// The threads of a stream leave what they freed with the allocator. What a busy evening took goes back to the
// system now and then.
void TrimMemory(boost::asio::steady_timer& timer) {
    timer.expires_after(std::chrono::seconds(10));
    timer.async_wait([&timer](const boost::system::error_code& cancelled) {
        if (cancelled)
            return;
        malloc_trim(0);
        TrimMemory(timer);
    });
}

// One bad handler must not stop the music in the whole house.
void RunLoop(boost::asio::io_context& loop) {
    while (!loop.stopped()) {
        try {
            loop.run();
        } catch (const std::exception& error) {
            korvel::common::ProgramLog().Error(std::string("internal error: ") + error.what());
        }
    }
}

int Run(const Options& options) {
    RaiseDescriptorLimit();
    GError* failure = nullptr;
    if (gst_init_check(nullptr, nullptr, &failure) == FALSE)
        throw std::runtime_error(failure != nullptr ? failure->message : "GStreamer cannot start");
    boost::asio::io_context context(1);
    Server server(context, options.address, options.port, {options.inputs, options.times}, options.catalogue);
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
    RunLoop(context);
    korvel::common::ProgramLog().Info("stopped");
    return korvel::common::kExitDone;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    return korvel::common::RunProgram(
        {"korvel-audioserver", "Audio server: plays media to rooms on request of a controller."},
        [&options](CLI::App& app) { AddOptions(app, options); }, argc, argv,
        [&options] { return Run(options); });
}
