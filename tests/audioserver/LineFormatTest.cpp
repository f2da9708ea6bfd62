#include <gtest/gtest.h>

#include "audioserver/LineFormat.h"

namespace korvel::audioserver {
namespace {

TEST(LineFormat, WritesReplies) {
    EXPECT_EQ(OkLine(12, "addmed", 7), "12 OK addmed 7\r\n");
    EXPECT_EQ(OkLine(0, "reset"), "0 OK reset\r\n");
    EXPECT_EQ(NoLine(12, "remcli", 7), "12 NO remcli 7\r\n");
    EXPECT_EQ(NoLine(0, "unknown"), "0 NO unknown\r\n");
}

TEST(LineFormat, WritesCreatedStreamsWithoutOk) {
    EXPECT_EQ(CreatedLine(5, "addstr", 3), "5 addstr stream=3\r\n");
    EXPECT_EQ(CreatedLine(5, "addann", 4294967295U), "5 addann stream=4294967295\r\n");
}

TEST(LineFormat, OnlyAnAnnouncementsStreamComesWithAnEvent) {
    EXPECT_EQ(AnnouncementEvent("addann", 3), "* SYS addann=3\r\n");
    EXPECT_EQ(AnnouncementEvent("addann"), "* SYS addann=0\r\n");
    EXPECT_EQ(AnnouncementEvent("addstr", 3), "");
}

TEST(LineFormat, WritesEvents) {
    EXPECT_EQ(EndOfMediaLine(3), "* addmed EOM=3\r\n");
    EXPECT_EQ(BadMediaLine(3, "No such file"), "* addmed BAD=3 No such file\r\n");
    EXPECT_EQ(ReportLine(3, kStreamInfo, "Artist - Title"), "* SYS STREAM=3 streamInfo:Artist - Title\r\n");
    EXPECT_EQ(ReportLine(3, kStreamCaps, kNoPause), "* SYS STREAM=3 streamCaps:NO-PAUSE\r\n");
    EXPECT_EQ(ReportLine(3, kStreamError, "disk"), "* SYS STREAM=3 ERROR:disk\r\n");
}

TEST(LineFormat, AReasonIsNeverTooShortToBeRead) {
    for (const char* reason : {"", " ", "x", "\r\n", " \t"})
        EXPECT_EQ(BadMediaLine(3, reason), "* addmed BAD=3 media failed\r\n");
    EXPECT_EQ(BadMediaLine(3, "ab"), "* addmed BAD=3 ab\r\n");
}

TEST(LineFormat, TextCannotBreakTheLine) {
    EXPECT_EQ(OneLine("a\r\nb\tc\x7f"), "a  b c");
    EXPECT_EQ(OneLine("  two words "), "two words");
    EXPECT_EQ(ReportLine(1, kStreamInfo, "x\r\n* addmed EOM=1"),
              "* SYS STREAM=1 streamInfo:x  * addmed EOM=1\r\n");
}

TEST(LineFormat, LongTextIsCutBetweenCharacters) {
    EXPECT_EQ(OneLine(std::string(kMaxEventTextBytes + 10, 'a')).size(), kMaxEventTextBytes);
    const std::string umlauts = "a" + [] {
        std::string text;
        for (std::size_t i = 0; i < kMaxEventTextBytes; ++i)
            text += "\xc3\xa4";
        return text;
    }();
    const std::string cut = OneLine(umlauts);
    EXPECT_EQ(cut.size(), kMaxEventTextBytes - 1);
    EXPECT_EQ(cut.substr(cut.size() - 2), "\xc3\xa4");
}

} // namespace
} // namespace korvel::audioserver
