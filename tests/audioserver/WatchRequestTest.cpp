#include <gtest/gtest.h>

#include "audioserver/watch/WatchRequest.h"

namespace korvel::audioserver {
namespace {

template <typename T>
T Read(std::string_view line) {
    const WatchRequest request = ParseWatchLine(line);
    EXPECT_TRUE(std::holds_alternative<T>(request)) << line;
    const auto* known = std::get_if<T>(&request);
    return known ? *known : T{};
}

TEST(WatchRequest, ALineOfAWatcherBeginsWithABrace) {
    EXPECT_TRUE(IsWatchLine("{\"watch\":1}"));
    EXPECT_TRUE(IsWatchLine("{"));
    EXPECT_FALSE(IsWatchLine(""));
    EXPECT_FALSE(IsWatchLine("1 reset"));
    EXPECT_FALSE(IsWatchLine(" {\"watch\":1}"));
}

TEST(WatchRequest, ReadsEachOfThem) {
    EXPECT_EQ(Read<WatchGreeting>(R"({"watch":1})").version, 1U);
    EXPECT_EQ(Read<WatchPing>(R"( {"ping" : 18446744073709551615} )").number, UINT64_MAX);

    const auto seek = Read<WatchSeek>(R"({"id":7,"seek":{"stream":3,"serial":2,"position":61500}})");
    EXPECT_EQ(seek.id, 7U);
    EXPECT_EQ(seek.stream, 3U);
    EXPECT_EQ(seek.serial, 2U);
    EXPECT_EQ(seek.position, 61500U);

    const auto start =
        Read<WatchStart>(R"({"start":{"position":0,"stream":2147483647,"media":"\"file://a\""},"id":8})");
    EXPECT_EQ(start.id, 8U);
    EXPECT_EQ(start.stream, kLastStream);
    EXPECT_EQ(start.media, "\"file://a\"");
    EXPECT_EQ(start.position, 0U);
}

TEST(WatchRequest, ASerialMayBeLeftOut) {
    EXPECT_FALSE(Read<WatchSeek>(R"({"id":7,"seek":{"stream":3,"position":1}})").serial);
    EXPECT_FALSE(Read<WatchSeek>(R"({"id":7,"seek":{"stream":3,"serial":null,"position":1}})").serial);
}

TEST(WatchRequest, PassesOverWhatItDoesNotKnow) {
    EXPECT_EQ(Read<WatchPing>(R"({"ping":1,"colour":[{}]})").number, 1U);
}

TEST(WatchRequest, RefusesWhatIsNone) {
    for (const char* line : {"",
                             "{",
                             "[]",
                             "1",
                             "null",
                             "\"watch\"",
                             "{}",
                             R"({"watch":"1"})",
                             R"({"watch":-1})",
                             R"({"watch":1.5})",
                             R"({"watch":1,"ping":1})",
                             R"({"ping":null})",
                             R"({"ping":18446744073709551616})",
                             R"({"id":1})",
                             R"({"id":1,"seek":3})",
                             R"({"id":1,"seek":{}})",
                             R"({"id":1,"seek":{"stream":3}})",
                             R"({"id":1,"seek":{"stream":"3","position":1}})",
                             R"({"id":1,"seek":{"stream":3,"position":-1}})",
                             R"({"id":1,"seek":{"stream":3,"position":4294967296}})",
                             R"({"id":1,"seek":{"stream":2147483648,"position":1}})",
                             R"({"id":1,"seek":{"stream":3,"serial":"x","position":1}})",
                             R"({"seek":{"stream":3,"position":1}})",
                             R"({"id":"1","seek":{"stream":3,"position":1}})",
                             R"({"id":1,"start":{"stream":3,"position":1}})",
                             R"({"id":1,"start":{"stream":3,"media":"","position":1}})",
                             R"({"id":1,"start":{"stream":3,"media":5,"position":1}})",
                             "{\"ping\":1}\x01",
                             "{\"\xff\":1}"})
        EXPECT_FALSE(Read<WatchNonsense>(line).reason.empty()) << line;
}

TEST(WatchRequest, ARefusalHasTheIdThatCouldBeRead) {
    EXPECT_EQ(Read<WatchNonsense>(R"({"id":5,"seek":{"stream":3}})").id, 5U);
    EXPECT_EQ(Read<WatchNonsense>(R"({"id":5,"dance":1})").id, 5U);
    EXPECT_FALSE(Read<WatchNonsense>(R"({"id":-5,"seek":{}})").id);
    EXPECT_FALSE(Read<WatchNonsense>(R"({"id":5,)").id);
}

TEST(WatchRequest, EndlessNestingIsOnlyNonsense) {
    Read<WatchNonsense>(std::string(kMaxLineBytes, '['));
    Read<WatchNonsense>("{\"watch\":" + std::string(kMaxLineBytes / 2, '[') +
                        std::string(kMaxLineBytes / 2, ']') + "}");
}

} // namespace
} // namespace korvel::audioserver
