#include <gtest/gtest.h>

#include "replay/Script.h"
#include "replay/ScriptError.h"

namespace korvel::replay {
namespace {

std::string SyntaxErrorOf(const std::string& text) {
    try {
        ParseScript("a.txt", text);
    } catch (const ScriptError& error) {
        return error.what();
    }
    return "none";
}

TEST(Script, TheFirstCharacterSaysWhatALineIs) {
    const Script script = ParseScript("a.txt", "# comment\n\nstart\n< event 1\n= timer 1\n! log\n \t\n");
    ASSERT_EQ(script.lines.size(), 7u);
    EXPECT_EQ(script.lines[0].kind, LineKind::Comment);
    EXPECT_EQ(script.lines[1].kind, LineKind::Comment);
    EXPECT_EQ(script.lines[2].kind, LineKind::Input);
    EXPECT_EQ(script.lines[2].text, "start");
    EXPECT_EQ(script.lines[2].number, 3u);
    EXPECT_EQ(script.lines[3].kind, LineKind::Expected);
    EXPECT_EQ(script.lines[4].kind, LineKind::Expected);
    EXPECT_EQ(script.lines[5].kind, LineKind::Forbidden);
    EXPECT_EQ(script.lines[6].kind, LineKind::Comment);
    EXPECT_FALSE(script.exact);
}

TEST(Script, ABlockReachesToTheNextInputLine) {
    const Script script = ParseScript("a.txt", "# head\nstart\n< event 1\n# tail\nstop\n");
    ASSERT_EQ(script.blocks.size(), 2u);
    EXPECT_EQ(script.blocks[0].input, 1u);
    EXPECT_EQ(script.blocks[0].end, 4u);
    EXPECT_EQ(script.blocks[1].input, 4u);
    EXPECT_EQ(script.blocks[1].end, 5u);
}

TEST(Script, IsExactWhenItsFirstLineSaysSo) {
    EXPECT_TRUE(ParseScript("a.txt", "exact\nstart\n").exact);
    EXPECT_TRUE(ParseScript("a.txt", "# why\n\nexact \nstart\n").exact);
    const Script late = ParseScript("a.txt", "start\nexact\n");
    EXPECT_FALSE(late.exact);
    EXPECT_EQ(late.lines[1].kind, LineKind::Input);
}

TEST(Script, TakesLinesWithAnyEnd) {
    const Script script = ParseScript("a.txt", "start\r\nstop");
    ASSERT_EQ(script.lines.size(), 2u);
    EXPECT_EQ(script.lines[0].text, "start");
    EXPECT_EQ(script.lines[1].text, "stop");
    EXPECT_TRUE(ParseScript("a.txt", "").lines.empty());
}

TEST(Script, AnErrorNamesItsLine) {
    EXPECT_EQ(SyntaxErrorOf("start\n7\n"), "a.txt:2: a line starts with a letter or with one of # < = !");
    EXPECT_EQ(SyntaxErrorOf(" start\n"), "a.txt:1: a line starts with a letter or with one of # < = !");
    EXPECT_EQ(SyntaxErrorOf("\n< event 1\n"), "a.txt:2: an expectation stands under an input line");
    EXPECT_EQ(SyntaxErrorOf("exact\n! log\n"), "a.txt:2: an expectation stands under an input line");
}

TEST(Script, AFileThatIsNotThereIsAnError) {
    EXPECT_THROW(ReadScript("/nowhere/a.txt"), ScriptError);
    EXPECT_THROW(ReadScript("/"), ScriptError);
}

} // namespace
} // namespace korvel::replay
