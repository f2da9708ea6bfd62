// The programs as a service manager sees them.
#include <signal.h>

#include <algorithm>

#include "Bed.h"

namespace korvel::tests {
namespace {

class Program : public Bed {
protected:
    // Runs a program that ends by itself; its exit code, and its stderr in m_errors.
    int Run(const std::string& program, const std::vector<std::string>& arguments) {
        Process process(program, arguments, PathOf("run.log"));
        m_output = process.ReadLine().value_or("");
        const int code = process.WaitForExit().value_or(-1);
        m_errors = process.Errors();
        return code;
    }
    // Whether the run ended with an error code and said why in one line.
    bool Fails(const std::string& program, const std::vector<std::string>& arguments) {
        return Run(program, arguments) > 0 && std::count(m_errors.begin(), m_errors.end(), '\n') == 1;
    }

    std::string m_output;
    std::string m_errors;
};

TEST_F(Program, ServerEndsWellOnASignalWhilePlaying) {
    for (const int signal : {SIGINT, SIGTERM}) {
        Process server(KORVEL_AUDIOSERVER, {"--port", "0"}, PathOf("a.log"));
        LineClient driver(PortOf(server.ReadLine().value_or("")));
        const std::string stream = std::to_string(driver.AddStream());
        driver.Ask("addcli " + stream + " 127.0.0.1 40000");
        driver.Ask("addmed " + stream + " " + FileMedia(ToneFile("a.wav", {{500, 20}})));
        server.Signal(signal);
        EXPECT_EQ(server.WaitForExit(), 0) << server.Errors();
        EXPECT_TRUE(driver.IsClosedByServer());
    }
}

// A driver may have lines left for the streams of a server that has died.
TEST_F(Program, ServerGivesOutNoNumberAgainAfterARestart) {
    std::uint32_t last = 0;
    for (int run = 0; run < 5; ++run) {
        Process server(KORVEL_AUDIOSERVER, {"--port", "0"}, PathOf("a.log"));
        LineClient driver(PortOf(server.ReadLine().value_or("")));
        for (int count = 0; count < 10; ++count) {
            const std::uint32_t stream = driver.AddStream();
            EXPECT_GT(stream, last);
            last = stream;
        }
        server.Signal(SIGKILL);
        server.WaitForExit();
    }
}

TEST_F(Program, PlayerEndsWellOnASignal) {
    for (const int signal : {SIGINT, SIGTERM}) {
        Process player(KORVEL_ROOMPLAYER, {"--port", "0", "--no-device"}, PathOf("a.log"));
        EXPECT_NE(PortOf(player.ReadLine().value_or("")), 0);
        player.Signal(signal);
        EXPECT_EQ(player.WaitForExit(), 0) << player.Errors();
    }
}

// For whoever started it; the log says the same.
TEST_F(Program, PlayerSaysWhatTakesItsSound) {
    Process player(KORVEL_ROOMPLAYER, {"--port", "0", "--no-device"}, PathOf("a.log"));
    player.ReadLine();
    EXPECT_EQ(player.ReadLine(), "output none: not wanted");
    EXPECT_NE(player.Errors().find("playing without a sound device: not wanted"), std::string::npos);
}

// Whatever the machine has: a sink, or the reason why there is none.
TEST_F(Program, PlayerThatLooksForADeviceSaysWhatBecameOfIt) {
    Process player(KORVEL_ROOMPLAYER, {"--port", "0"}, PathOf("a.log"));
    player.ReadLine();
    const std::string output = player.ReadLine().value_or("");
    ASSERT_TRUE(output.starts_with("output ")) << output;
    const bool none = output.starts_with("output none: ");
    EXPECT_GT(output.size(), std::string(none ? "output none: " : "output ").size());
    EXPECT_NE(player.Errors().find(output.substr(none ? 13 : 7)), std::string::npos) << player.Errors();
}

TEST_F(Program, HelpIsNoFailure) {
    for (const char* program : {KORVEL_AUDIOSERVER, KORVEL_ROOMPLAYER}) {
        EXPECT_EQ(Run(program, {"--help"}), 0);
        EXPECT_NE(m_output, "");
        EXPECT_EQ(m_errors, "");
    }
}

TEST_F(Program, VersionIsNoFailure) {
    for (const char* program : {KORVEL_AUDIOSERVER, KORVEL_ROOMPLAYER}) {
        EXPECT_EQ(Run(program, {"--version"}), 0);
        EXPECT_TRUE(m_output.starts_with("korvel-")) << m_output;
        EXPECT_EQ(m_errors, "");
    }
}

TEST_F(Program, ServerSaysWhatIsWrongWithItsOptions) {
    EXPECT_TRUE(Fails(KORVEL_AUDIOSERVER, {})) << m_errors;
    EXPECT_TRUE(Fails(KORVEL_AUDIOSERVER, {"--port", "x"})) << m_errors;
    EXPECT_TRUE(Fails(KORVEL_AUDIOSERVER, {"--port", "65536"})) << m_errors;
    EXPECT_TRUE(Fails(KORVEL_AUDIOSERVER, {"--port", "0", "--address", "home"})) << m_errors;
    EXPECT_TRUE(Fails(KORVEL_AUDIOSERVER, {"--port", "0", "--input", "nothing"})) << m_errors;
    EXPECT_TRUE(Fails(KORVEL_AUDIOSERVER, {"--port", "0", "--catalog", "::1:80"})) << m_errors;
    EXPECT_TRUE(Fails(KORVEL_AUDIOSERVER, {"--port", "0", "--loud"})) << m_errors;
    EXPECT_TRUE(Fails(KORVEL_AUDIOSERVER, {"--port", std::to_string(ServerPort())})) << m_errors;
}

TEST_F(Program, PlayerSaysWhatIsWrongWithItsOptions) {
    const auto room = AddRoom();
    EXPECT_TRUE(Fails(KORVEL_ROOMPLAYER, {})) << m_errors;
    EXPECT_TRUE(Fails(KORVEL_ROOMPLAYER, {"--port", "65535"})) << m_errors;
    EXPECT_TRUE(Fails(KORVEL_ROOMPLAYER, {"--port", "0", "--latency", "39"})) << m_errors;
    EXPECT_TRUE(Fails(KORVEL_ROOMPLAYER, {"--port", "0", "--address", "home"})) << m_errors;
    EXPECT_TRUE(Fails(KORVEL_ROOMPLAYER, {"--port", "0", "--record", PathOf("no/folder.wav")})) << m_errors;
    EXPECT_TRUE(Fails(KORVEL_ROOMPLAYER, {"--port", std::to_string(room->Port())})) << m_errors;
}

} // namespace
} // namespace korvel::tests
