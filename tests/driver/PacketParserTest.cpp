// Lines from an audio server, taken apart.
#include <gtest/gtest.h>

#include "server/link/ASPacket.h"

namespace {

struct Line {
    const char* text;
    const char* sequence;
    const char* command;
    const char* result;
    const char* stream;
    std::uint32_t streamNumber;
    const char* data;
};

void PrintTo(const Line& line, std::ostream* out) {
    *out << testing::PrintToString(line.text);
}

class PacketParser : public testing::TestWithParam<Line> {};

TEST_P(PacketParser, TakesTheLineApart) {
    const Line& line = GetParam();
    const ASPacket packet(line.text);
    EXPECT_EQ(packet.GetSequenceNumber(), line.sequence);
    EXPECT_EQ(packet.GetCommand(), line.command);
    EXPECT_EQ(packet.GetResult(), line.result);
    EXPECT_EQ(packet.GetStream(), line.stream);
    EXPECT_EQ(packet.GetStreamULONG(), line.streamNumber);
    EXPECT_EQ(packet.GetResultData(), line.data);
}

INSTANTIATE_TEST_SUITE_P(Nothing, PacketParser,
                         testing::Values(Line{"", "", "", "", "", 0, ""}, Line{"   ", "", "", "", "", 0, ""},
                                         Line{"12\r\n", "", "", "", "", 0, ""},
                                         Line{" 12", "", "", "", "", 0, ""},
                                         Line{"12 \r\n", "12", "", "", "", 0, ""}));

INSTANTIATE_TEST_SUITE_P(
    Replies, PacketParser,
    testing::Values(Line{"12 OK addmed\r\n", "12", "addmed", "OK", "", 0, ""},
                    Line{"12 OK addmed 7\r\n", "12", "addmed", "OK", "7\r\n", 7, ""},
                    Line{"12 NO addmed 7\r\n", "12", "addmed", "NO", "7\r\n", 7, ""},
                    Line{"  12   OK   remcli   4\r\n", "12", "remcli", "OK", "4\r\n", 4, ""},
                    Line{"12 OK addmed 7 more words\r\n", "12", "addmed", "OK", "7 more words\r\n", 7, ""},
                    Line{"12 OK addmed 7\r\n13 NO addmed 8\r\n", "12", "addmed", "OK",
                         "7\r\n13 NO addmed 8\r\n", 7, ""},
                    Line{"12 OK\r\n", "12", "OK", "", "", 0, ""}, Line{"12 OK", "12", "", "OK", "", 0, ""},
                    Line{"12 ok addmed 7", "12", "ok", "", "", 0, ""},
                    Line{"12 OK addmed x=7", "12", "addmed", "OK", "x=7", 0, ""},
                    Line{"12 OK addmed 4294967303", "12", "addmed", "OK", "4294967303", 2147483647u, ""}));

INSTANTIATE_TEST_SUITE_P(CommandFirst, PacketParser,
                         testing::Values(Line{"5 addstr stream=3\r\n", "5", "addstr", "", "3\r\n", 3, ""},
                                         Line{"5 addstr stream=3 more\r\n", "5", "addstr", "", "3", 3, ""},
                                         Line{"5 addstr a=b=3\r\n", "5", "addstr", "", "b=3\r\n", 0, ""},
                                         Line{"5 addstr 3\r\n", "5", "addstr", "", "", 0, ""},
                                         Line{"5 addstr\r\n", "5", "addstr", "", "", 0, ""},
                                         Line{"5 addstr\n\r stream=3", "5", "addstr", "", "3", 3, ""},
                                         Line{"12 BAD addmed 4", "12", "BAD", "", "", 0, ""},
                                         Line{"12 BAD addmed=4", "12", "BAD", "", "4", 4, ""}));

INSTANTIATE_TEST_SUITE_P(
    Events, PacketParser,
    testing::Values(Line{"* SYS STREAM=3 streamInfo:Artist - Title here\r\n", "*", "SYS", "STREAM", "3", 3,
                         "streamInfo:Artist - Title here"},
                    Line{"* addmed EOM=3\r\n", "*", "addmed", "EOM", "3\r\n", 3, ""},
                    Line{"* addmed BAD=3 no such file\r\n", "*", "addmed", "BAD", "3", 3, "no such file"},
                    Line{"* SYS STREAM=3 ab\r\n", "*", "SYS", "STREAM", "3", 3, "ab"},
                    Line{"* SYS STREAM=3 a\r\n", "*", "SYS", "STREAM", "3", 3, ""},
                    Line{"* SYS STREAM=3 abc", "*", "SYS", "STREAM", "3", 3, ""},
                    Line{"* SYS STREAM=3 abcd", "*", "SYS", "STREAM", "3", 3, "ab"},
                    Line{"* SYS STREAM=3=4\r\n", "*", "SYS", "STREAM", "3=4\r\n", 3, ""},
                    Line{"* SYS\r\n", "*", "SYS", "", "", 0, ""}, Line{"* SYS", "*", "SYS", "", "", 0, ""}));

INSTANTIATE_TEST_SUITE_P(EventsWithoutAStream, PacketParser,
                         testing::Values(Line{"* SYS hello world\r\n", "*", "SYS", "world", "", 0, ""},
                                         Line{"* SYS hello wide world\r\n", "*", "SYS", "wide world", "", 0,
                                              ""},
                                         Line{"* SYS hello x", "*", "SYS", "x", "", 0, ""},
                                         Line{"* SYS hello xy", "*", "SYS", "", "", 0, ""},
                                         Line{"* SYS hello", "*", "SYS", "", "", 0, ""},
                                         Line{"* sys hello world\r\n", "*", "sys", "", "", 0, ""},
                                         Line{"** SYS STREAM=3 abcd", "**", "SYS", "", "3", 3, ""}));

TEST(Packet, IsEmptyUntilItHasALine) {
    const ASPacket packet;
    EXPECT_EQ(packet.GetSequenceNumber() + packet.GetCommand() + packet.GetResult() + packet.GetStream() +
                  packet.GetResultData(),
              "");
    EXPECT_EQ(packet.GetStreamULONG(), 0u);
}

TEST(Packet, StartsAfreshWithEachLine) {
    ASPacket packet("* SYS STREAM=3 streamInfo:x\r\n");
    packet.FromPacket("12 OK addcli\r\n");
    EXPECT_EQ(packet.GetSequenceNumber(), "12");
    EXPECT_EQ(packet.GetCommand(), "addcli");
    EXPECT_EQ(packet.GetResult(), "OK");
    EXPECT_EQ(packet.GetStream(), "");
    EXPECT_EQ(packet.GetResultData(), "");
    packet.FromPacket("");
    EXPECT_EQ(packet.GetCommand(), "");
}

std::vector<std::string> Split(const std::string& text, const std::string& delimiters, int maxTokens) {
    std::vector<std::string> tokens;
    ASPacket::SplitPacket(text, delimiters, tokens, maxTokens);
    return tokens;
}

using Tokens = std::vector<std::string>;

TEST(SplitPacket, CutsAtRunsOfDelimiters) {
    EXPECT_EQ(Split("a b", " ", 4), (Tokens{"a", "b"}));
    EXPECT_EQ(Split("  a   b ", " ", 4), (Tokens{"a", "b"}));
    EXPECT_EQ(Split("a,;b;c", ",;", 0), (Tokens{"a", "b", "c"}));
    EXPECT_EQ(Split("", " ", 4), Tokens{});
    EXPECT_EQ(Split("   ", " ", 4), Tokens{});
}

TEST(SplitPacket, LeavesTheRestInTheLastPiece) {
    EXPECT_EQ(Split("a b c  d  e\r\n", " ", 4), (Tokens{"a", "b", "c", "d  e\r\n"}));
    EXPECT_EQ(Split(" a b ", " ", 1), (Tokens{"a b "}));
    EXPECT_EQ(Split("a b c ", " ", 3), (Tokens{"a", "b", "c "}));
}

TEST(SplitPacket, HasNoLimitForZeroAndBelow) {
    EXPECT_EQ(Split("a b c d e f", " ", 0).size(), 6u);
    EXPECT_EQ(Split("a b c d e f", " ", -1).size(), 6u);
}

TEST(SplitPacket, AppendsToWhatIsThere) {
    Tokens tokens{"first"};
    ASPacket::SplitPacket("a b", " ", tokens, 4);
    EXPECT_EQ(tokens, (Tokens{"first", "a", "b"}));
}

} // namespace
