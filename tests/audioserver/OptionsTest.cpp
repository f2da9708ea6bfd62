// The ranges of the programs' options.
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <string>

#include "audioserver/Options.h"
#include "roomplayer/Options.h"

namespace korvel {
namespace {

template <class Options>
bool Takes(const std::string& words) {
    CLI::App app;
    Options options;
    AddOptions(app, options);
    try {
        app.parse(words);
    } catch (const CLI::ParseError&) {
        return false;
    }
    return true;
}

TEST(ServerOptions, AreWithinTheirRanges) {
    using audioserver::Options;
    EXPECT_TRUE(Takes<Options>("--port 65535"));
    EXPECT_FALSE(Takes<Options>("--port 65536"));
    for (const std::string time : {"--sound-patience ", "--end-patience ", "--first-retry "}) {
        EXPECT_TRUE(Takes<Options>("--port 0 " + time + "1")) << time;
        EXPECT_TRUE(Takes<Options>("--port 0 " + time + "3600000")) << time;
        EXPECT_FALSE(Takes<Options>("--port 0 " + time + "0")) << time;
        EXPECT_FALSE(Takes<Options>("--port 0 " + time + "3600001")) << time;
    }
}

TEST(ServerOptions, TheFirstStreamIsANumberThatDriversKnow) {
    using audioserver::Options;
    EXPECT_TRUE(Takes<Options>("--port 0 --first-stream 1"));
    EXPECT_TRUE(Takes<Options>("--port 0 --first-stream 2147483647"));
    EXPECT_FALSE(Takes<Options>("--port 0 --first-stream 0"));
    EXPECT_FALSE(Takes<Options>("--port 0 --first-stream 2147483648"));
}

TEST(PlayerOptions, AreWithinTheirRanges) {
    using roomplayer::Options;
    EXPECT_TRUE(Takes<Options>("--port 65534"));
    EXPECT_FALSE(Takes<Options>("--port 65535"));
    EXPECT_TRUE(Takes<Options>("--port 0 --latency 40"));
    EXPECT_TRUE(Takes<Options>("--port 0 --latency 5000"));
    EXPECT_FALSE(Takes<Options>("--port 0 --latency 39"));
    EXPECT_FALSE(Takes<Options>("--port 0 --latency 5001"));
}

} // namespace
} // namespace korvel
