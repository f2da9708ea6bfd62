// What a transcript may not go beyond.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "TestDriver.h"
#include "replay/Player.h"
#include "replay/ScriptError.h"
#include "replay/Session.h"
#include "replay/Words.h"

namespace korvel::replay {
namespace {

TEST(ReplayLimits, AFile) {
    const std::string path = testing::TempDir() + "korvel-longest-" + std::to_string(::getpid()) + ".txt";
    std::ofstream(path) << "# one line";
    std::filesystem::resize_file(path, kMaxScriptLength);
    EXPECT_EQ(ReadScript(path).lines.size(), 1u);
    std::filesystem::resize_file(path, kMaxScriptLength + 1);
    EXPECT_THROW(ReadScript(path), ScriptError);
    std::filesystem::remove(path);
}

TEST(ReplayLimits, ExpiriesOfOneStep) {
    Session session(CreateTestDriver);
    session.GetWorld().timers.Start(0, 1, TimerQueue::kEndless, nullptr);
    EXPECT_NO_THROW(session.Advance(kMaxExpiries));
    session.GetWorld().recorder.TakeLines();
    EXPECT_THROW(session.Advance(kMaxExpiries + 1), FormatError);
}

TEST(ReplayLimits, LiveAnswersToOneInput) {
    const std::string start = "engine 3000\nstart\ncommand SEND LINE=\"1 reset\\r\\n\" TIMES=";
    EXPECT_NO_THROW(
        Play(ParseScript("a.txt", start + std::to_string(kMaxLiveAnswers) + "\n"), CreateTestDriver));
    EXPECT_THROW(
        Play(ParseScript("a.txt", start + std::to_string(kMaxLiveAnswers + 1) + "\n"), CreateTestDriver),
        ScriptError);
}

} // namespace
} // namespace korvel::replay
