#include <gtest/gtest.h>

#include "driver/rooms/AnnouncementWire.h"

namespace korvel::controller {
namespace {

class AnnouncementWireTest : public testing::Test {
protected:
    // What is known against an announcement after these lines.
    static std::string FailureAfter(const std::vector<std::string>& lines) {
        AnnouncementWire wire;
        wire.Begin();
        for (const std::string& line : lines)
            wire.OnLine(line + "\r\n");
        return wire.GetFailure();
    }
};

TEST_F(AnnouncementWireTest, HearsThatItsFileIsRefused) {
    EXPECT_EQ(FailureAfter({"1 addann stream=5", "2 NO addmed 5"}), "the audio server refused the file");
    EXPECT_EQ(FailureAfter({"1 addann stream=5", "2 OK addmed 5", "* addmed BAD=5 No such file"}),
              "No such file");
    EXPECT_EQ(FailureAfter({"1 addann stream=5", "* addmed BAD=5"}), "the audio server cannot play the file");
}

TEST_F(AnnouncementWireTest, HearsThatThereIsNoStream) {
    EXPECT_EQ(FailureAfter({"* SYS addann=0", "1 NO addann", "2 NO addmed 0"}),
              "the audio server has no stream for it");
}

TEST_F(AnnouncementWireTest, HearsThatNoRoomIsTaken) {
    EXPECT_EQ(FailureAfter({"1 addann stream=5", "2 NO addcli 5", "3 OK addmed 5"}),
              "the audio server took none of the rooms");
    EXPECT_EQ(FailureAfter({"1 addann stream=5", "2 NO addcli 5", "3 OK addcli 5", "4 OK addmed 5"}), "");
}

TEST_F(AnnouncementWireTest, KeepsTheFirstReason) {
    EXPECT_EQ(FailureAfter({"1 addann stream=5", "* addmed BAD=5 first", "* addmed BAD=5 second"}), "first");
}

TEST_F(AnnouncementWireTest, KnowsNothingAgainstWhatGoesWell) {
    EXPECT_EQ(FailureAfter({"* SYS addann=5", "1 addann stream=5", "2 OK addcli 5", "3 OK addmed 5",
                            "* SYS STREAM=5 ERROR:disk", "* addmed EOM=5"}),
              "");
}

TEST_F(AnnouncementWireTest, LeavesOtherStreamsAlone) {
    EXPECT_EQ(FailureAfter({"* addmed BAD=5 before it was its own", "1 addann stream=5", "2 NO addmed 55",
                            "* addmed BAD=4 x", "3 NO addcli 4", "4 NO remmed 5", "* remmed BAD=5 x"}),
              "");
}

// The driver takes the first answer for its stream, whichever request it was to.
TEST_F(AnnouncementWireTest, TakesTheFirstStreamOnly) {
    EXPECT_EQ(FailureAfter({"1 addann stream=5", "2 addann stream=6", "3 NO addann", "* addmed BAD=6 x"}),
              "");
    EXPECT_EQ(FailureAfter({"1 addann stream=5", "2 addann stream=6", "* addmed BAD=5 x5"}), "x5");
}

TEST_F(AnnouncementWireTest, SurvivesAnyLine) {
    EXPECT_EQ(FailureAfter({"", "1", "* addmed", "1 addann stream=5", "1 NO addmed", "* addmed BAD=", "  "}),
              "");
}

TEST_F(AnnouncementWireTest, ForgetsWhatWasBefore) {
    AnnouncementWire wire;
    wire.Begin();
    wire.OnLine("1 addann stream=5\r\n");
    wire.OnLine("* addmed BAD=5 gone\r\n");
    wire.Begin();
    EXPECT_EQ(wire.GetFailure(), "");
    wire.OnLine("* addmed BAD=5 again\r\n");
    EXPECT_EQ(wire.GetFailure(), "");
}

} // namespace
} // namespace korvel::controller
