// The program itself: how it starts and ends.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>

#include "Gateway.h"
#include "GatewayClient.h"

namespace korvel::tests {
namespace {

class CatalogProgram : public testing::Test {
protected:
    // Starts it with these arguments, which it must refuse with this exit code; returns its one line.
    std::string Refusal(const std::vector<std::string>& arguments, int code) {
        Process process(KORVEL_CATALOG, arguments, folder.PathOf("errors"));
        EXPECT_EQ(process.WaitForExit(), code);
        const std::string text = process.Errors();
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
        return text;
    }

    Folder folder;
    const std::string catalogue = folder.Write("c.toml", TrackEntry("a"));
};

TEST_F(CatalogProgram, ServesUntilItIsEnded) {
    for (const int signal : {SIGTERM, SIGINT}) {
        Gateway gateway(catalogue);
        GatewayClient client(gateway.Port());
        client.Send("{\"id\":1,\"op\":\"playing\",\"context\":\"1\",\"stream\":7}\n");
        EXPECT_FALSE(client.Ask({{"op", "playlists"}}).is_null());
        gateway.Program().Signal(signal);
        EXPECT_EQ(gateway.Program().WaitForExit(), 0);
        EXPECT_TRUE(client.IsClosed());
    }
}

TEST_F(CatalogProgram, ABadCatalogueIsOneLineAndAFailure) {
    EXPECT_EQ(Refusal({"--catalog", folder.PathOf("none"), "--port", "0"}, 1),
              "korvel-catalog: " + folder.PathOf("none") + ": cannot be read as a catalogue file\n");
    const std::string bad = folder.Write("bad.toml", "[[track]]\nid = 7\n");
    EXPECT_EQ(Refusal({"--catalog", bad, "--port", "0"}, 1).rfind("korvel-catalog: " + bad + ":2: ", 0), 0u);
}

TEST_F(CatalogProgram, ABusyPortIsOneLineAndAFailure) {
    const Gateway gateway(catalogue);
    EXPECT_EQ(Refusal({"--catalog", catalogue, "--port", std::to_string(gateway.Port())}, 1),
              "korvel-catalog: cannot listen on " + gateway.Address() + ": Address already in use\n");
    EXPECT_EQ(Refusal({"--catalog", catalogue, "--address", "here"}, 1),
              "korvel-catalog: not an address: here\n");
}

TEST_F(CatalogProgram, BadOptionsAreOneLineAndAFailure) {
    Refusal({}, 2);
    Refusal({"--catalog"}, 2);
    Refusal({"--catalog", catalogue, "--port", "70000"}, 2);
    Refusal({"--catalog", catalogue, "--colour", "red"}, 2);
}

TEST_F(CatalogProgram, HelpAndVersionEndWell) {
    for (const std::string option : {"--help", "--version"}) {
        Process process(KORVEL_CATALOG, {option}, folder.PathOf("errors"));
        EXPECT_TRUE(process.ReadLine().has_value());
        EXPECT_EQ(process.WaitForExit(), 0);
    }
}

} // namespace
} // namespace korvel::tests
