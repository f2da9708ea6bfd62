// Sessions with disturbances, as the fuzzer of whole sessions keeps and plays them.
#include <gtest/gtest.h>

#include "SessionRun.h"
#include "SessionText.h"

namespace {

using Lines = std::vector<std::string>;

TEST(Session, IsReadAndPrintedAsItself) {
    const std::string text =
        "start\n"
        "command GET_SETTINGS\n"
        "> 2 data 3000 \"* addmed EOM=1\\r\\n\"\n"
        "> 17 throw\n"
        "stop\n";
    const auto session = fuzz::ParseSession(text);
    ASSERT_EQ(session.size(), 3u);
    ASSERT_EQ(session[1].disturbances.size(), 2u);
    EXPECT_EQ(session[1].disturbances[0].call, 2u);
    EXPECT_EQ(session[1].disturbances[0].what, "data 3000 \"* addmed EOM=1\\r\\n\"");
    EXPECT_EQ(session[1].disturbances[1].what, fuzz::kThrow);
    EXPECT_EQ(fuzz::PrintSession(session), text);
}

TEST(Session, LeavesOutWhatIsNoLine) {
    const auto session = fuzz::ParseSession("> 1 throw\n# x\n\n< set 1\nstart\n> x\n>\n> 3\n> 4 <\nstop");
    ASSERT_EQ(session.size(), 2u);
    EXPECT_TRUE(session[0].disturbances.empty());
    EXPECT_EQ(session[1].line, "stop");
}

class SessionRun : public testing::Test {
protected:
    SessionRun() {
        run.Play({"start", {}});
        run.Play({"online 3000 127.0.0.1", {}});
    }
    ~SessionRun() override { run.End(); }

    fuzz::SessionRun run;
};

TEST_F(SessionRun, AServiceFailsAtTheCallThatIsNamed) {
    EXPECT_TRUE(Has(run.Play({"command GET_SETTINGS", {{1, fuzz::kThrow}}}),
                    "< log 3 Exception in ExecuteCommand: the service fails"));
    EXPECT_TRUE(Has(run.Play({"command GET_SETTINGS", {{1, fuzz::kThrowOther}}}),
                    "< log 3 Exception in ExecuteCommand: unknown exception"));
    EXPECT_FALSE(HasStart(run.Play({"command GET_SETTINGS", {{99, fuzz::kThrow}}}), "< log"));
}

TEST_F(SessionRun, TheCoreCallsBackBeforeTheCallReturns) {
    const Lines lines = run.Play({"command GET_SETTINGS", {{1, "test InSession ROOM_ID=7"}}});
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "< result false");
    EXPECT_TRUE(lines[1].starts_with("< ui "));
}

TEST_F(SessionRun, WithinADisturbanceCallsCountOn) {
    const Lines lines =
        run.Play({"command GET_SETTINGS", {{1, "command GET_SETTINGS"}, {2, "test InSession ROOM_ID=7"}}});
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], "< result false");
}

TEST_F(SessionRun, ALineThatCannotBeRunDoesNothing) {
    EXPECT_EQ(run.Play({"no such line", {}}), Lines{});
    EXPECT_EQ(run.Play({"advance 4294967295", {}}), Lines{});
    EXPECT_EQ(run.Play({"advance  \"4294967295\"", {}}), Lines{});
    EXPECT_FALSE(HasStart(run.Play({"command GET_SETTINGS", {{1, "stop"}}}), "< vmremove"));
    EXPECT_FALSE(HasStart(run.Play({"command GET_SETTINGS", {{1, "stop\t"}}}), "< vmremove"));
}

TEST_F(SessionRun, TimeMayPassWhileTheDriverIsDestroyed) {
    EXPECT_TRUE(HasStart(run.Play({"stop", {{1, "advance 60000"}}}), "< vmremove"));
    run.Play({"start", {}});
}

TEST(SessionRules, AreBrokenByFaultsAndUnreadableDocuments) {
    EXPECT_TRUE(fuzz::BreaksARule("< fault timer 3 outlives the driver that it calls back"));
    EXPECT_FALSE(fuzz::BreaksARule("< fault no driver was created"));
    for (const std::string start : {"< set 1006 ", "< ui ", "< ui-device 7 ", "< reply ", "< persist "}) {
        EXPECT_TRUE(fuzz::BreaksARule(start + "<a><b></a>")) << start;
        EXPECT_FALSE(fuzz::BreaksARule(start + "<a b=\"\\\\\"></a>")) << start;
    }
    EXPECT_FALSE(fuzz::BreaksARule("< set 1008 7"));
    EXPECT_FALSE(fuzz::BreaksARule("< reply none"));
    EXPECT_FALSE(fuzz::BreaksARule("< log 3 <"));
}

} // namespace
