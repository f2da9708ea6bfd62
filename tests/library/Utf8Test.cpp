#include <gtest/gtest.h>

#include "library/Utf8.h"

using korvel::media::CleanText;
using korvel::media::FoldText;

TEST(CleanText, LeavesGoodTextAsItIs) {
    EXPECT_EQ(CleanText("Für Élise 東京 \U0001F3B5"), "Für Élise 東京 \U0001F3B5");
    EXPECT_EQ(CleanText(""), "");
}

TEST(CleanText, ReplacesEveryByteThatIsNoUtf8) {
    EXPECT_EQ(CleanText("caf\xE9"), "caf\uFFFD");
    EXPECT_EQ(CleanText("a\xC0\x80z"), "a\uFFFD\uFFFDz");                 // an overlong zero
    EXPECT_EQ(CleanText("a\xED\xA0\x80z"), "a\uFFFD\uFFFD\uFFFDz");       // half a surrogate pair
    EXPECT_EQ(CleanText("\xF4\x90\x80\x80"), "\uFFFD\uFFFD\uFFFD\uFFFD"); // past the last character
    EXPECT_EQ(CleanText("\xE6\x9D"), "\uFFFD\uFFFD");                     // cut off
}

TEST(CleanText, MakesBlanksOfControlCharactersAndTrims) {
    EXPECT_EQ(CleanText(std::string("a\0b\nc\x7F", 6) + "d"), "a b c d");
    EXPECT_EQ(CleanText(" \t title \r\n"), "title");
    EXPECT_EQ(CleanText("\xC2\x85 next line"), "next line");
}

TEST(CleanText, CutsBetweenCharacters) {
    EXPECT_EQ(CleanText("abécd", 3), "ab");
    EXPECT_EQ(CleanText("abécd", 4), "abé");
    EXPECT_EQ(CleanText(std::string(5000, 'x')).size(), korvel::media::kMaxTextLength);
}

TEST(FoldText, DropsCaseAndAccents) {
    EXPECT_EQ(FoldText("Motörhead"), "motorhead");
    EXPECT_EQ(FoldText("BJÖRK GUÐMUNDSDÓTTIR"), "bjork gudmundsdottir");
    EXPECT_EQ(FoldText("Dvořák Łódź Ålesund Çetin"), "dvorak lodz alesund cetin");
    EXPECT_EQ(FoldText("Straße Æon Œuvre"), "strasse aeon oeuvre");
    EXPECT_EQ(FoldText("e\u0301te\u0301"), "ete"); // accents of their own
    EXPECT_EQ(FoldText("2×3÷4"), "2×3÷4");
}

TEST(FoldText, LowersGreekAndCyrillic) {
    EXPECT_EQ(FoldText("ΑΓΆΠΗΣ"), FoldText("αγάπης"));
    EXPECT_EQ(FoldText("КИНО Ёлка"), "кино ёлка");
    EXPECT_EQ(FoldText("東京"), "東京");
}
