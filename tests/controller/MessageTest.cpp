#include <gtest/gtest.h>

#include "front/http/Message.h"

namespace korvel::controller {
namespace {

TEST(Target, IsSplitAndDecoded) {
    const auto target = ParseTarget("/api/library/search?q=a%20b+c%26&limit=5&flag");
    ASSERT_TRUE(target);
    EXPECT_EQ(target->path, (std::vector<std::string>{"api", "library", "search"}));
    EXPECT_EQ(target->Text("q"), "a b c&");
    EXPECT_EQ(target->Number("limit", 9), 5u);
    EXPECT_EQ(target->Number("offset", 9), 9u);
    EXPECT_EQ(target->Text("flag"), "");
}

TEST(Target, AnEmptySegmentAtTheEndIsLeftOut) {
    EXPECT_TRUE(ParseTarget("/")->path.empty());
    EXPECT_EQ(ParseTarget("/api/")->path, std::vector<std::string>{"api"});
}

TEST(Target, BadEncodingIsRefused) {
    for (const char* text : {"", "api", "/%", "/%4", "/%zz", "/%00", "/a?x=%g1", "http://localhost/"})
        EXPECT_FALSE(ParseTarget(text)) << text;
    EXPECT_FALSE(ParseTarget(std::string_view("/a\0", 3)));
}

TEST(Target, NumbersAreWholeAndFitThirtyOneBits) {
    EXPECT_EQ(ParseNumber("2147483647"), 2147483647u);
    for (const char* text : {"", "-1", "+1", " 1", "1 ", "1x", "2147483648", "99999999999999999999"})
        EXPECT_FALSE(ParseNumber(text)) << text;
}

TEST(ErrorReply, IsOneLineOfItsLength) {
    EXPECT_EQ(ErrorReply(400, "unknown \r\n member").body, R"({"error":"unknown    member"})");
    EXPECT_EQ(ErrorReply(400, "a\x7F\x1B[2J").body, R"({"error":"a  [2J"})");
    const std::string longest(1000, 'x');
    EXPECT_EQ(ErrorReply(400, longest).body, R"({"error":")" + longest + "\"}");
    EXPECT_EQ(ErrorReply(400, longest + "x").body, R"({"error":")" + longest + "\"}");
}

} // namespace
} // namespace korvel::controller
