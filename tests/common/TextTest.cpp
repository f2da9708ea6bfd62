#include <gtest/gtest.h>

#include "common/Text.h"

namespace korvel::common {
namespace {

using namespace std::string_literals;

TEST(Text, ControlCharactersAreThoseOfAsciiAndNoOthers) {
    for (int code = 0; code < 256; ++code)
        EXPECT_EQ(IsControl(static_cast<char>(code)), code < 32 || code == 127) << code;
}

TEST(Text, OneControlCharacterAnywhereIsFound) {
    EXPECT_FALSE(HasControl(""));
    EXPECT_FALSE(HasControl("Größe \" ="));
    for (const std::string& text : {"\ra"s, "a\nb"s, "ab\x7F"s, "\0"s})
        EXPECT_TRUE(HasControl(text)) << testing::PrintToString(text);
}

TEST(Text, WhatWouldEndAQuotedTextOrItsLineDoesNotFitInQuotes) {
    EXPECT_TRUE(FitsInQuotes(""));
    EXPECT_TRUE(FitsInQuotes("/Größe/a 'b' = c.flac"));
    for (const std::string& text : {"\""s, "a\" b"s, "a\n"s, "\ra"s, "a\tb"s, "a\0b"s, "\x7F"s})
        EXPECT_FALSE(FitsInQuotes(text)) << testing::PrintToString(text);
}

TEST(Text, AReferenceFitsInQuotesAndHasItsLength) {
    EXPECT_TRUE(IsReference("http://radio.example/live?a=b c"));
    EXPECT_TRUE(IsReference(std::string(kMaxReferenceBytes, 'x')));
    EXPECT_FALSE(IsReference(std::string(kMaxReferenceBytes + 1, 'x')));
    EXPECT_FALSE(IsReference("a\nb"));
    EXPECT_FALSE(IsReference("a\"b"));
}

TEST(Text, WhatIsShortEnoughIsNotCut) {
    EXPECT_EQ(CutText("abc", 3), "abc");
    EXPECT_EQ(CutText("abc", 2), "ab");
    EXPECT_EQ(CutText("abc", 0), "");
    EXPECT_EQ(CutText("", 0), "");
}

TEST(Text, ACharacterIsCutOffWholly) {
    const std::string text = "aß€𝄞z"; // 1, 2, 3, 4 and 1 bytes
    const std::size_t whole[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11};
    for (std::size_t most = 0; most < std::size(whole); ++most)
        EXPECT_EQ(CutText(text, most), text.substr(0, whole[most])) << most;
}

TEST(Text, BytesThatAreNoUtf8AreCutAnywhere) {
    const std::string text(10, '\x80');
    EXPECT_EQ(CutText(text, 6).size(), 6u);
    EXPECT_EQ(CutText("\xFF\xFF\xFF", 2).size(), 2u);
}

TEST(Text, OneLineHasNoControlCharactersAndNoBlanksAtItsEnds) {
    EXPECT_EQ(OneLine(" \r\na\tb\x01 c\x7F ", 100), "a b  c");
    EXPECT_EQ(OneLine("\r\n \t", 100), "");
    EXPECT_EQ(OneLine("abcß", 4), "abc");
    EXPECT_EQ(OneLine("abc  d", 5), "abc");
}

TEST(Text, ANumberIsTheWholeTextAndFits) {
    EXPECT_EQ(ParseNumber("0"), 0u);
    EXPECT_EQ(ParseNumber("007"), 7u);
    EXPECT_EQ(ParseNumber("4294967295"), 4294967295u);
    for (const char* text : {"", "4294967296", "-1", "+1", " 1", "1 ", "0x1", "1.0", "a"})
        EXPECT_EQ(ParseNumber(text), std::nullopt) << text;
}

} // namespace
} // namespace korvel::common
