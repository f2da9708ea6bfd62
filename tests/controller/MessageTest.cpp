#include <gtest/gtest.h>

#include "http/Message.h"

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
}

TEST(Target, NumbersAreWholeAndFitThirtyOneBits) {
    EXPECT_EQ(ParseNumber("2147483647"), 2147483647u);
    for (const char* text : {"", "-1", "+1", " 1", "1 ", "1x", "2147483648", "99999999999999999999"})
        EXPECT_FALSE(ParseNumber(text)) << text;
}

TEST(OwnHost, IsThisMachineByItsLoopbackNames) {
    for (const char* host : {"localhost", "LOCALHOST:8080", "127.0.0.1", "127.0.0.1:80", "127.0.0.2:1"})
        EXPECT_TRUE(IsOwnHost(host, "127.0.0.2")) << host;
    for (const char* host : {"", "evil.example", "localhost.evil.example", "127.0.0.1.evil.example",
                             "localhost:", "localhost:80x", "localhost:80:80"})
        EXPECT_FALSE(IsOwnHost(host, "127.0.0.2")) << host;
}

TEST(OwnOrigin, IsNoneOrThisServer) {
    EXPECT_TRUE(IsOwnOrigin("", "localhost:8080"));
    EXPECT_TRUE(IsOwnOrigin("http://localhost:8080", "localhost:8080"));
    for (const char* origin :
         {"http://evil.example", "null", "https://localhost:8080", "http://localhost:8081"})
        EXPECT_FALSE(IsOwnOrigin(origin, "localhost:8080")) << origin;
}

} // namespace
} // namespace korvel::controller
