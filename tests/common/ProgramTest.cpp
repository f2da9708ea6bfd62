#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/Program.h"

namespace korvel::common {
namespace {

class ProgramTest : public testing::Test {
protected:
    int Run(
        std::vector<const char*> arguments, const std::function<int()>& body = [] { return 0; }) {
        CLI::App app("Does nothing.", "korvel-nothing");
        app.add_option("--port", port)->required();
        arguments.insert(arguments.begin(), "/usr/bin/nothing");
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        ran = false;
        const int code = RunProgram(app, static_cast<int>(arguments.size()), arguments.data(), [&] {
            ran = true;
            return body();
        });
        out = testing::internal::GetCapturedStdout();
        errors = testing::internal::GetCapturedStderr();
        return code;
    }

    int port = 0;
    bool ran = false;
    std::string out;
    std::string errors;
};

TEST_F(ProgramTest, TheBodysResultIsTheExitCode) {
    EXPECT_EQ(Run({"--port", "7"}, [] { return 5; }), 5);
    EXPECT_EQ(port, 7);
    EXPECT_EQ(out + errors, "");
}

TEST_F(ProgramTest, HelpAndVersionGoToStdoutAndRunNothing) {
    EXPECT_EQ(Run({"--version"}), kExitDone);
    EXPECT_TRUE(out.starts_with("korvel-nothing ")) << out;
    EXPECT_FALSE(ran);
    EXPECT_EQ(Run({"--help"}), kExitDone);
    EXPECT_NE(out.find("--port"), std::string::npos);
    EXPECT_NE(out.find("--version"), std::string::npos);
    EXPECT_FALSE(ran);
    EXPECT_EQ(errors, "");
}

TEST_F(ProgramTest, OptionsThatMakeNoSenseAreOneLine) {
    for (const std::vector<const char*>& arguments : std::vector<std::vector<const char*>>{
             {}, {"--port"}, {"--port", "x"}, {"--port", "1", "--loud"}, {"a"}}) {
        EXPECT_EQ(Run(arguments), kExitMisused);
        EXPECT_TRUE(errors.starts_with("korvel-nothing: ")) << errors;
        EXPECT_EQ(errors.find('\n'), errors.size() - 1) << errors;
        EXPECT_EQ(out, "");
        EXPECT_FALSE(ran);
    }
}

TEST_F(ProgramTest, WhatIsThrownIsOneLine) {
    EXPECT_EQ(Run({"--port", "1"}, []() -> int { throw std::runtime_error("no sound"); }), kExitFailed);
    EXPECT_EQ(errors, "korvel-nothing: no sound\n");
}

} // namespace
} // namespace korvel::common
