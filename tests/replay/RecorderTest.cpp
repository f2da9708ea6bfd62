#include <gtest/gtest.h>

#include <sstream>

#include "replay/Recorder.h"

namespace korvel::replay {
namespace {

TEST(OutputLine, PutsFieldsInTheirOrder) {
    EXPECT_EQ(OutputLine("binding").Number(2000u).Flag(true).Value("Digital Audio").Flag(false).GetText(),
              "binding 2000 true \"Digital Audio\" false");
    EXPECT_EQ(OutputLine("message").Number(7).Pair("A:INT", "").Pair("B:STRING", "x y").GetText(),
              "message 7 A:INT=\"\" B:STRING=\"x y\"");
    EXPECT_EQ(OutputLine("log").Number(-3).Text("a \"b\"\n").GetText(), "log -3 a \"b\"\\n");
}

TEST(OutputLine, AnEmptyTextLeavesNoBlank) {
    EXPECT_EQ(OutputLine("set").Number(1002).Text("").GetText(), "set 1002");
}

TEST(MaskAddresses, ReplacesWhateverLooksLikeAnAddress) {
    EXPECT_EQ(MaskAddresses("pReturn = 0x7ffc0a1b2c3d"), "pReturn = @");
    EXPECT_EQ(MaskAddresses("0xAB, (nil)"), "@, @");
    EXPECT_EQ(MaskAddresses("10x5 0x 0xg (nul) 17"), "1@ 0x 0xg (nul) 17");
}

TEST(Recorder, HandsOutTheLinesSinceTheLastTime) {
    Recorder recorder;
    recorder.Input("advance 10");
    recorder.WorldInput("timer 1");
    recorder.Output(OutputLine("event").Number(1));
    recorder.Fault("two\nlines");
    EXPECT_EQ(recorder.TakeLines(),
              (std::vector<std::string>{"= timer 1", "< event 1", "< fault two\\nlines"}));
    EXPECT_TRUE(recorder.TakeLines().empty());
}

TEST(Recorder, EchoesInputsToo) {
    std::ostringstream echo;
    Recorder recorder(&echo);
    recorder.Input("advance  10");
    recorder.WorldInput("timer 1");
    recorder.Mute();
    recorder.Output(OutputLine("event").Number(1));
    EXPECT_EQ(echo.str(), "advance  10\n= timer 1\n");
}

} // namespace
} // namespace korvel::replay
