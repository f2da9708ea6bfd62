#include <gtest/gtest.h>

#include <vector>

#include "bindings/LineSplitter.h"

namespace korvel::controller {
namespace {

struct Collected {
    LineSplitter splitter;
    std::vector<std::string> lines;

    bool Feed(std::string_view bytes) {
        return splitter.Feed(bytes, [this](const std::string& line) {
            lines.push_back(line);
            return true;
        });
    }
};

TEST(LineSplitter, KeepsEachLinesEnd) {
    Collected c;
    EXPECT_TRUE(c.Feed("1 OK reset\r\n2 OK\n"));
    EXPECT_EQ(c.lines, (std::vector<std::string>{"1 OK reset\r\n", "2 OK\n"}));
}

TEST(LineSplitter, PutsALineTogetherFromPieces) {
    Collected c;
    for (const char* piece : {"* SYS", " STREAM=3 a\r", "", "\n*"})
        EXPECT_TRUE(c.Feed(piece));
    EXPECT_EQ(c.lines, std::vector<std::string>{"* SYS STREAM=3 a\r\n"});
}

TEST(LineSplitter, TakesTheLongestLineAndNoLonger) {
    Collected c;
    EXPECT_TRUE(c.Feed(std::string(LineSplitter::kMaxLine - 1, 'a') + "\n"));
    EXPECT_EQ(c.lines.size(), 1u);
    EXPECT_FALSE(c.Feed(std::string(LineSplitter::kMaxLine, 'a') + "\n"));
}

TEST(LineSplitter, RefusesALineWithoutAnEndAtTheLimit) {
    Collected c;
    EXPECT_TRUE(c.Feed(std::string(LineSplitter::kMaxLine, 'a')));
    EXPECT_FALSE(c.Feed("a"));
}

TEST(LineSplitter, StopsWhenTheListenerHasEnough) {
    LineSplitter splitter;
    int count = 0;
    splitter.Feed("a\nb\nc\n", [&](const std::string&) { return ++count < 2; });
    EXPECT_EQ(count, 2);
}

} // namespace
} // namespace korvel::controller
