#include <gtest/gtest.h>

#include <vector>

#include "common/Lines.h"

namespace korvel::common {
namespace {

constexpr std::size_t kMost = 5;

// What comes out of the pieces: each line's bytes, with "!" before one that is too long.
std::vector<std::string> LinesOf(LineSplitter& splitter, const std::vector<std::string>& pieces) {
    std::vector<std::string> lines;
    for (const std::string& piece : pieces) {
        splitter.Add(piece);
        while (const auto line = splitter.Take())
            lines.push_back((line->tooLong ? "!" : "") + line->bytes);
    }
    return lines;
}

std::vector<std::string> LinesOf(const std::vector<std::string>& pieces) {
    LineSplitter splitter(kMost);
    return LinesOf(splitter, pieces);
}

using Lines = std::vector<std::string>;

TEST(Lines, ALineHasItsEndAndItsTextHasNot) {
    LineSplitter splitter(kMost);
    splitter.Add("a\r\nb\n\r\n\n\rc\r\r\n");
    Lines bytes;
    Lines texts;
    while (const auto line = splitter.Take()) {
        bytes.push_back(line->bytes);
        texts.emplace_back(line->GetText());
    }
    EXPECT_EQ(bytes, (Lines{"a\r\n", "b\n", "\r\n", "\n", "\rc\r\r\n"}));
    EXPECT_EQ(texts, (Lines{"a", "b", "", "", "\rc\r"}));
}

TEST(Lines, TheLongestLineIsTakenWithEitherEnd) {
    EXPECT_EQ(LinesOf({"12345\n12345\r\n"}), (Lines{"12345\n", "12345\r\n"}));
}

TEST(Lines, ALongerOneComesOnceWithItsBeginning) {
    EXPECT_EQ(LinesOf({"123456\na\n"}), (Lines{"!12345", "a\n"}));
    EXPECT_EQ(LinesOf({"12345\r\r\na\n"}), (Lines{"!12345", "a\n"}));
    EXPECT_EQ(LinesOf({"1234567890", "1234567890", "12\n", "a\n"}), (Lines{"!12345", "a\n"}));
}

TEST(Lines, ALongerOneComesBeforeItsEnd) {
    EXPECT_EQ(LinesOf({"123456"}), Lines{"!12345"});
    EXPECT_EQ(LinesOf({"12345\r"}), Lines{}) << "its end may follow";
    EXPECT_EQ(LinesOf({"12345\r", "\n"}), Lines{"12345\r\n"});
    EXPECT_EQ(LinesOf({"12345\r", "x\n"}), Lines{"!12345"});
}

TEST(Lines, WhatIsTooLongIsMarkedAndItsTextIsItsBeginning) {
    LineSplitter splitter(kMost);
    splitter.Add("1234\r678\n");
    const auto line = splitter.Take();
    ASSERT_TRUE(line);
    EXPECT_TRUE(line->tooLong);
    EXPECT_EQ(line->GetText(), "1234\r");
}

TEST(Lines, OneLineEndsOnceAndHoldsNoControlCharacter) {
    for (const char* line : {"a\n", "a b\r\n", "\n", "\r\n", "12345\r\n", "12345\n"})
        EXPECT_TRUE(IsOneLine(line, kMost)) << testing::PrintToString(line);
    for (const char* bytes :
         {"", "a", "a\r", "a\nb", "a\nb\n", "a\rb\n", "a\n\n", "a\r\r\n", "\ta\n", "123456\n"})
        EXPECT_FALSE(IsOneLine(bytes, kMost)) << testing::PrintToString(bytes);
    EXPECT_FALSE(IsOneLine(std::string_view("a\0\n", 3), kMost));
}

TEST(Lines, ThePiecesThatTheyComeInMakeNoDifference) {
    const std::string text = "\n1\r\n12345\r\n123456\r\n\r\r1234567890123\n12345\nabc\r";
    const Lines whole = LinesOf({text});
    ASSERT_EQ(whole.size(), 6u);
    for (std::size_t first = 0; first <= text.size(); ++first) {
        for (std::size_t second = first; second <= text.size(); ++second) {
            const Lines pieces{text.substr(0, first), text.substr(first, second - first),
                               text.substr(second)};
            ASSERT_EQ(LinesOf(pieces), whole) << first << " " << second;
        }
    }
}

TEST(Lines, ALineThatHasBegunIsKnown) {
    LineSplitter splitter(kMost);
    EXPECT_FALSE(splitter.IsInLine());
    LinesOf(splitter, {"a"});
    EXPECT_TRUE(splitter.IsInLine());
    LinesOf(splitter, {"\n"});
    EXPECT_FALSE(splitter.IsInLine());
    LinesOf(splitter, {"1234567"});
    EXPECT_TRUE(splitter.IsInLine());
    LinesOf(splitter, {"890"});
    EXPECT_TRUE(splitter.IsInLine());
    LinesOf(splitter, {"\n"});
    EXPECT_FALSE(splitter.IsInLine());
}

TEST(Lines, AClearedSplitterIsAtALinesStart) {
    LineSplitter splitter(kMost);
    LinesOf(splitter, {"1234567"});
    splitter.Clear();
    EXPECT_EQ(LinesOf(splitter, {"ab"}), Lines{});
    splitter.Clear();
    EXPECT_EQ(LinesOf(splitter, {"c\n"}), Lines{"c\n"});
}

} // namespace
} // namespace korvel::common
