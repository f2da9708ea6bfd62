#include <gtest/gtest.h>

#include "replay/Checker.h"

namespace korvel::replay {
namespace {

using Lines = std::vector<std::string>;

// The complaint about a script with one input that gave `given`; "" when there is none.
std::string Complaint(const std::string& text, const Lines& given) {
    const Script script = ParseScript("a.txt", text);
    const auto mismatches = Check(script, {given});
    return mismatches.empty() ? "" : mismatches.front().text;
}

bool Passes(const std::string& text, const Lines& given) {
    return Complaint(text, given).empty();
}

TEST(Check, AnInputWithoutExpectationsAcceptsAnything) {
    EXPECT_TRUE(Passes("start\n", {}));
    EXPECT_TRUE(Passes("start\n# comment\n", {"< event 1", "= timer 1"}));
}

TEST(Check, OtherLinesMayStandBetween) {
    const Lines given = {"< a", "< b", "= timer 1", "< c"};
    EXPECT_TRUE(Passes("start\n< a\n< c\n", given));
    EXPECT_TRUE(Passes("start\n< b\n= timer 1\n", given));
    EXPECT_TRUE(Passes("start\n< a\n\n# comment\n< b\n= timer 1\n< c\n", given));
}

TEST(Check, TheOrderCounts) {
    EXPECT_FALSE(Passes("start\n< c\n< a\n", {"< a", "< b", "< c"}));
    EXPECT_FALSE(Passes("start\n< a\n= timer 1\n", {"= timer 1", "< a"}));
}

TEST(Check, ALineIsUsedOnce) {
    EXPECT_FALSE(Passes("start\n< a\n< a\n", {"< a", "< b"}));
    EXPECT_TRUE(Passes("start\n< a\n< a\n", {"< a", "< b", "< a"}));
}

TEST(Check, ALineIsExpectedWhole) {
    EXPECT_FALSE(Passes("start\n< set 1004\n", {"< set 1004 <a></a>"}));
    EXPECT_FALSE(Passes("start\n< set 1004 <a></a>\n", {"< set 1004"}));
}

TEST(Check, BlanksAtTheEndsOfLinesDoNotCount) {
    EXPECT_TRUE(Passes("start\n< return a \n", {"< return a"}));
    EXPECT_TRUE(Passes("start\n< return a\n", {"< return a  "}));
    EXPECT_TRUE(Passes("exact\nstart\n< return a\n", {"< return a  "}));
}

TEST(Check, AnExactScriptAllowsNoOtherLines) {
    EXPECT_TRUE(Passes("exact\nstart\n< a\n= timer 1\n", {"< a", "= timer 1"}));
    EXPECT_TRUE(Passes("exact\nstart\n", {}));
    EXPECT_FALSE(Passes("exact\nstart\n", {"< a"}));
    EXPECT_FALSE(Passes("exact\nstart\n< a\n", {"< a", "< b"}));
    EXPECT_FALSE(Passes("exact\nstart\n< a\n< c\n", {"< a", "< b", "< c"}));
    EXPECT_FALSE(Passes("exact\nstart\n< a\n< b\n", {"< a"}));
}

TEST(Check, AForbiddenStartMayNotAppearAnywhereInTheBlock) {
    EXPECT_TRUE(Passes("start\n! send\n", {"< event 1"}));
    EXPECT_FALSE(Passes("start\n! send\n", {"< event 1", "< send 3000 \"0 reset\\r\\n\""}));
    EXPECT_FALSE(
        Passes("start\n< event 1\n! send 3000\n< event 2\n", {"< send 3000 x", "< event 1", "< event 2"}));
    EXPECT_TRUE(Passes("start\n! send 3001\n", {"< send 3000 x"}));
    EXPECT_FALSE(Passes("start\n! send\n", {"= data 3000 x", "< send 3000 y"}));
}

TEST(Check, ForbiddingConcernsOutputsOnly) {
    EXPECT_TRUE(Passes("start\n! timer\n", {"= timer 1"}));
    EXPECT_TRUE(Passes("start\n! event\n", {"< log 3 an event"}));
}

TEST(Check, AForbiddenNothingForbidsEveryOutput) {
    EXPECT_TRUE(Passes("start\n!\n", {"= timer 1"}));
    EXPECT_FALSE(Passes("start\n!\n", {"< event 1"}));
}

TEST(Check, ForbiddingEndsAtTheNextInput) {
    const Script script = ParseScript("a.txt", "start\n! event\nstop\n");
    EXPECT_TRUE(Check(script, {{}, {"< event 1"}}).empty());
}

TEST(Check, AComplaintShowsThePlaceAndWhatWasThere) {
    EXPECT_EQ(Complaint("# head\nstart\n< a\n< x\n", {"< a", "< b"}),
              "a.txt:2: start\n"
              "  line 4 missing: < x\n"
              "  there was (* is as expected):\n"
              "  * < a\n"
              "    < b\n");
    EXPECT_EQ(Complaint("exact\nstart\n< a\n< x\n", {"< a", "< b"}),
              "a.txt:2: start\n"
              "  line 4 expected: < x\n"
              "  but found: < b\n"
              "  there was (* is as expected):\n"
              "  * < a\n"
              "    < b\n");
    EXPECT_EQ(Complaint("start\n< x\n", {}),
              "a.txt:1: start\n"
              "  line 2 missing: < x\n"
              "  there was no output\n");
    EXPECT_EQ(Complaint("start\n! log 7\n", {"< log 7 bad"}),
              "a.txt:1: start\n"
              "  line 2 forbidden: < log 7 bad\n"
              "  there was (* is as expected):\n"
              "    < log 7 bad\n");
}

TEST(Check, EveryInputThatDiffersIsReported) {
    const Script script = ParseScript("a.txt", "start\n< a\nstop\npersist\n< c\n");
    const auto mismatches = Check(script, {{}, {}, {}});
    ASSERT_EQ(mismatches.size(), 2u);
    EXPECT_EQ(mismatches[0].inputLine, 1u);
    EXPECT_EQ(mismatches[1].inputLine, 4u);
}

std::string Updated(const std::string& text, const RunLines& run) {
    return WithExpectations(ParseScript("a.txt", text), run);
}

TEST(Update, PutsTheOutputsUnderTheirInputs) {
    EXPECT_EQ(Updated("start\nstop\n", {{"< a", "= timer 1"}, {"< b"}}),
              "start\n< a\n= timer 1\nstop\n< b\n");
}

TEST(Update, ReplacesOldExpectations) {
    EXPECT_EQ(Updated("start\n< old\n= timer 9\nstop\n< older\n", {{"< a"}, {}}), "start\n< a\nstop\n");
}

TEST(Update, KeepsEverythingElseInItsPlace) {
    EXPECT_EQ(Updated("exact\n# head\n\nstart\n# before\n< old\n! bad\n\n# tail\nstop  x\n",
                      {{"< a", "< b"}, {"< c"}}),
              "exact\n# head\n\nstart\n# before\n< a\n< b\n! bad\n\n# tail\nstop  x\n< c\n");
}

TEST(Update, ACommentStaysBehindTheLineItFollowed) {
    EXPECT_EQ(Updated("start\n< a\n# about a\n< gone\n# about b\n< b\n", {{"< new", "< a", "< b", "< more"}}),
              "start\n< new\n< a\n# about a\n# about b\n< b\n< more\n");
}

TEST(Update, WithoutOldExpectationsTheOutputsComeFirst) {
    EXPECT_EQ(Updated("start\n! bad\n# note\nstop\n", {{"< a"}, {}}), "start\n< a\n! bad\n# note\nstop\n");
}

TEST(Update, LeavesNoBlanksAtTheEndsOfOutputs) {
    EXPECT_EQ(Updated("start\n", {{"< log 3 a  "}}), "start\n< log 3 a\n");
}

TEST(Update, OfWhatItWroteChangesNothing) {
    const RunLines run = {{"< a", "< a", "= timer 1", "< b"}, {}};
    const std::string once = Updated("# head\nstart\n< a\n# why\n< b\n! bad\nstop\n", run);
    EXPECT_EQ(Updated(once, run), once);
    EXPECT_TRUE(Check(ParseScript("a.txt", "exact\n" + once), run).empty());
}

TEST(Update, AScriptWithoutInputsStaysAsItIs) {
    EXPECT_EQ(Updated("# head\n\n", {}), "# head\n\n");
}

} // namespace
} // namespace korvel::replay
