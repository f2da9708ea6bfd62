// The program itself: what it says when it cannot start, and how it ends.
#include <gtest/gtest.h>

#include <csignal>

#include "ControllerProcess.h"

namespace korvel::controller {
namespace {

class ProcessTest : public testing::Test {
protected:
    // The one line that a start with this configuration ends with.
    std::string Refusal(const std::string& config) {
        ControllerProcess process(folder, config);
        EXPECT_EQ(process.Wait(), 1);
        const std::string text = process.Errors();
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
        return text;
    }
    std::string State() const { return "state = \"" + folder.Path() + "/state\"\n"; }
    static std::string Plugin(const std::string& kind) { return "plugin = \"" + TestPlugin(kind) + "\"\n"; }

    ScratchFolder folder;
};

TEST_F(ProcessTest, ABadConfigurationIsOneLineAndAFailure) {
    EXPECT_NE(Refusal("colour = 1\n").find("house.toml:1: 'colour' is not a setting"), std::string::npos);
    EXPECT_NE(Refusal("[http]\nweb = \"/nowhere\"\n").find("the web folder /nowhere is not there"),
              std::string::npos);
    EXPECT_NE(Refusal(State() + "plugin = \"/nowhere.so\"\n").find("the plug-in /nowhere.so is not there"),
              std::string::npos);
    EXPECT_NE(Refusal("state = \"/proc/nowhere\"\n").find("the state folder /proc/nowhere cannot be made"),
              std::string::npos);
}

TEST_F(ProcessTest, ABusyPortIsOneLineAndAFailure) {
    TestLoop loop;
    const ScriptedServer taken(loop);
    const std::string text =
        Refusal(State() + Plugin("WORKING") + "[http]\nport = " + std::to_string(taken.GetPort()) + "\n");
    EXPECT_NE(text.find("Address already in use"), std::string::npos) << text;
}

TEST_F(ProcessTest, ASignalEndsItCleanly) {
    for (const int signal : {SIGTERM, SIGINT}) {
        // Its connection to the audio server shows that it runs.
        TestLoop loop;
        ScriptedServer server(loop);
        ControllerProcess process(
            folder, State() + Plugin("WORKING") +
                        "[http]\nport = 0\n[[server]]\nport = " + std::to_string(server.GetPort()) + "\n");
        ASSERT_TRUE(loop.RunUntil([&] { return server.IsConnected(); })) << process.Errors();
        process.Signal(signal);
        EXPECT_EQ(process.Wait(), 0) << process.Errors();
        EXPECT_EQ(ReadFile(folder.File("state/driver-state.xml")), "<test></test>");
    }
}

} // namespace
} // namespace korvel::controller
