#include <gtest/gtest.h>

#include "replay/Arguments.h"
#include "replay/Words.h"

namespace korvel::replay {
namespace {

Word OnlyWord(std::string_view line) {
    Word word = TakeWord(line);
    EXPECT_TRUE(line.empty()) << line;
    return word;
}

TEST(Words, AValueIsBareWhereverItCanBe) {
    EXPECT_EQ(FormatValue("CreatePlaylist"), "CreatePlaylist");
    EXPECT_EQ(FormatValue("/media/a=b's.flac"), "/media/a=b's.flac");
    EXPECT_EQ(FormatValue("Grüße"), "Grüße");
}

TEST(Words, AValueIsQuotedWhereItMust) {
    EXPECT_EQ(FormatValue(""), R"("")");
    EXPECT_EQ(FormatValue("a b"), R"("a b")");
    EXPECT_EQ(FormatValue("say \"a\""), R"("say \"a\"")");
    EXPECT_EQ(FormatValue("a\\b"), R"("a\\b")");
    EXPECT_EQ(FormatValue("1 addstr\r\n"), R"("1 addstr\r\n")");
    EXPECT_EQ(FormatValue("\t\x01\x7f"), R"("\t\x01\x7f")");
}

TEST(Words, ATextEscapesOnlyBackslashAndControlCharacters) {
    EXPECT_EQ(FormatText("<a b=\"c d\">e</a>"), "<a b=\"c d\">e</a>");
    EXPECT_EQ(FormatText("a\\b\r\n\t\x1f"), R"(a\\b\r\n\t\x1f)");
    EXPECT_EQ(FormatText(""), "");
}

TEST(Words, EveryByteSurvivesTheWayThereAndBack) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    EXPECT_EQ(OnlyWord(FormatValue(all)).text, all);
    EXPECT_EQ(ParseText(FormatText("x" + all)), "x" + all);
    EXPECT_EQ(ParseText(FormatValue(all)), all);
    for (const char byte : all) {
        const std::string value(1, byte);
        EXPECT_EQ(OnlyWord(FormatValue(value)).text, value);
        EXPECT_EQ(OnlyWord("key=" + FormatValue(value)).text, "key=" + value);
    }
}

TEST(Words, AreTakenFromLeftToRight) {
    std::string_view line = "  one\t\"two words\"  key=\"a \\\"b\\\"\" last";
    EXPECT_EQ(TakeWord(line).text, "one");
    EXPECT_EQ(TakeWord(line).text, "two words");
    const Word pair = TakeWord(line);
    EXPECT_EQ(pair.text, "key=a \"b\"");
    EXPECT_EQ(pair.equals, 3u);
    EXPECT_EQ(TakeWord(line).text, "last");
    EXPECT_EQ(line, "");
}

TEST(Words, OnlyTheFirstEqualsSignOutsideOfQuotesMakesAKey) {
    EXPECT_EQ(OnlyWord("key=a=b").equals, 3u);
    EXPECT_EQ(OnlyWord("\"1 addstr stream=1\"").equals, std::string::npos);
}

TEST(Words, HexadecimalEscapesTakeLettersOfEitherCase) {
    EXPECT_EQ(OnlyWord(R"("\x4a\x4A")").text, "JJ");
}

TEST(Words, BadQuotingIsRefused) {
    for (const char* line : {R"("open)", R"("a"b)", R"(key="a"b)", R"(a"b")", R"(key=a"b")", R"(a\b)",
                             R"("\q")", R"("\x1")", R"("\x1g")", R"("\)", R"("a\")", "a\x01"}) {
        std::string_view rest = line;
        EXPECT_THROW(TakeWord(rest), FormatError) << line;
    }
    for (const char* text : {R"("open)", R"("a" b)", R"(a\)", R"(a\q)", R"(a\x1)"})
        EXPECT_THROW(ParseText(text), FormatError) << text;
}

TEST(Words, AnInputTextMayBeQuotedOrNot) {
    EXPECT_EQ(ParseText("<a b=\"c\"></a>"), "<a b=\"c\"></a>");
    EXPECT_EQ(ParseText("\"<a b=\\\"c\\\"></a>\" "), "<a b=\"c\"></a>");
    EXPECT_EQ(ParseText(R"(  two\nlines)"), "two\nlines");
    EXPECT_EQ(ParseText(""), "");
    EXPECT_EQ(ParseText(R"("")"), "");
}

TEST(Words, NumbersAreDecimalAndHave32Bits) {
    EXPECT_EQ(ParseNumber("4294967295", "N"), 4294967295u);
    EXPECT_EQ(ParseSignedNumber("-2147483648", "N"), -2147483647 - 1);
    for (const char* text : {"", "-1", "+1", "4294967296", "1x", " 1", "0x10"})
        EXPECT_THROW(ParseNumber(text, "N"), FormatError) << text;
}

TEST(Arguments, SayWhichWordIsMissing) {
    Arguments arguments(" 7 ");
    EXPECT_EQ(arguments.Number("ROOM"), 7u);
    EXPECT_TRUE(arguments.AtEnd());
    try {
        arguments.Value("NAME");
        FAIL();
    } catch (const FormatError& error) {
        EXPECT_STREQ(error.what(), "NAME is missing");
    }
}

TEST(Arguments, RefuseWordsTooMany) {
    Arguments arguments("7 8");
    arguments.Number("ROOM");
    EXPECT_THROW(arguments.ExpectEnd(), FormatError);
}

TEST(Arguments, ReadLists) {
    EXPECT_EQ(Arguments("1,2,3").NumberList("LIST"), (std::vector<std::uint32_t>{1, 2, 3}));
    EXPECT_EQ(Arguments("\"\"").NumberList("LIST"), std::vector<std::uint32_t>());
    for (const char* text : {"1,", ",1", "1,,2", "a"})
        EXPECT_THROW(Arguments(text).NumberList("LIST"), FormatError) << text;
}

TEST(Arguments, ReadPairsInTheirOrder) {
    const auto pairs = Arguments(R"(b="x y" a= c=1=2)").Pairs();
    ASSERT_EQ(pairs.size(), 3u);
    EXPECT_EQ(pairs[0], std::make_pair(std::string("b"), std::string("x y")));
    EXPECT_EQ(pairs[1], std::make_pair(std::string("a"), std::string()));
    EXPECT_EQ(pairs[2], std::make_pair(std::string("c"), std::string("1=2")));
    for (const char* text : {"word", "=value", "\"a=b\""})
        EXPECT_THROW(Arguments(text).Pairs(), FormatError) << text;
}

TEST(Fields, KnowTheirKeys) {
    Arguments arguments("queue=10000 media=1,2 kind=SONG");
    const Fields fields(arguments, {"queue", "media", "kind", "ip"});
    EXPECT_EQ(fields.Number("queue"), 10000u);
    EXPECT_EQ(fields.NumberList("media"), (std::vector<std::uint32_t>{1, 2}));
    EXPECT_EQ(fields.Text("kind"), "SONG");
    EXPECT_EQ(fields.Text("ip"), "");
    EXPECT_EQ(fields.Number("ip"), 0u);

    Arguments unknown("qeue=1");
    EXPECT_THROW(Fields(unknown, {"queue"}), FormatError);
    Arguments twice("queue=1 queue=2");
    EXPECT_THROW(Fields(twice, {"queue"}), FormatError);
}

} // namespace
} // namespace korvel::replay
