// The program itself: what it says when it cannot start, and how it ends.
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "TestHouse.h"

namespace korvel::controller {
namespace {

class ProcessTest : public testing::Test {
protected:
    // Starts the controller with this configuration; what it writes to stderr is in Errors().
    pid_t Start(const std::string& config) {
        const std::string file = folder.Write("house.toml", config);
        const std::string program = KORVEL_CONTROLLER;
        const char* arguments[] = {program.c_str(), "--config", file.c_str(), nullptr};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, folder.File("errors").c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
        pid_t process = 0;
        EXPECT_EQ(
            posix_spawn(&process, program.c_str(), &actions, nullptr, const_cast<char**>(arguments), environ),
            0);
        posix_spawn_file_actions_destroy(&actions);
        return process;
    }
    int Wait(pid_t process) {
        int status = 0;
        EXPECT_EQ(waitpid(process, &status, 0), process);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    // The one line that a start with this configuration ends with.
    std::string Refusal(const std::string& config) {
        EXPECT_EQ(Wait(Start(config)), 1);
        const std::string text = Errors();
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
        return text;
    }
    std::string Errors() const { return ReadFile(folder.File("errors")); }
    std::string State() const { return "state = \"" + folder.Path() + "/state\"\n"; }
    static std::string Plugin(const std::string& kind) { return "plugin = \"" + TestPlugin(kind) + "\"\n"; }

    ScratchFolder folder;
};

TEST_F(ProcessTest, ABadConfigurationIsOneLineAndAFailure) {
    EXPECT_NE(Refusal("colour = 1\n").find("house.toml:1: 'colour' is not a setting"), std::string::npos);
    EXPECT_NE(Refusal("music = [\"/nowhere\"]\n").find("the music folder /nowhere is not there"),
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
        const pid_t process = Start(State() + Plugin("WORKING") + "[http]\nport = 0\n[[server]]\nport = " +
                                    std::to_string(server.GetPort()) + "\n");
        ASSERT_TRUE(loop.RunUntil([&] { return server.IsConnected(); })) << Errors();
        const auto start = std::chrono::steady_clock::now();
        kill(process, signal);
        EXPECT_EQ(Wait(process), 0) << Errors();
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
        EXPECT_EQ(ReadFile(folder.File("state/driver-state.xml")), "<test></test>");
    }
}

} // namespace
} // namespace korvel::controller
