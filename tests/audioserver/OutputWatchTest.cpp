#include <gtest/gtest.h>

#include "roomplayer/OutputWatch.h"

namespace korvel::roomplayer {
namespace {

using Finding = OutputWatch::Finding;

class OutputWatchTest : public testing::Test {
protected:
    // Looks without anything new until a stall is found; how many.
    static unsigned LooksToStall(OutputWatch& watch, std::uint64_t played) {
        unsigned looks = 1;
        while (watch.Look(played) != Finding::kStalled)
            ++looks;
        return looks;
    }

    OutputWatch m_watch{0};
};

TEST_F(OutputWatchTest, SoundIsNothingToBeTold) {
    for (std::uint64_t played = 0; played < 1000; played += 50)
        EXPECT_EQ(m_watch.Look(played + 50), Finding::kNothingNew);
}

TEST_F(OutputWatchTest, TwoSecondsWithoutABufferAreAStall) {
    EXPECT_EQ(LooksToStall(m_watch, 0), OutputWatch::kPatience);
    EXPECT_EQ(OutputWatch::kPatience * OutputWatch::kInterval, std::chrono::seconds(2));
    OutputWatch other(0);
    other.Look(50);
    EXPECT_EQ(LooksToStall(other, 50), OutputWatch::kPatience);
}

TEST_F(OutputWatchTest, AProgramThatWasStoppedForAWhileHasNotStalled) {
    m_watch.Look(50);
    for (unsigned look = 1; look < OutputWatch::kPatience; ++look)
        EXPECT_EQ(m_watch.Look(50), Finding::kNothingNew);
    EXPECT_EQ(m_watch.Look(51), Finding::kNothingNew);
    EXPECT_EQ(LooksToStall(m_watch, 51), OutputWatch::kPatience);
}

TEST_F(OutputWatchTest, TheLatencyIsNoStall) {
    OutputWatch watch(10);
    EXPECT_EQ(watch.Look(1), Finding::kNothingNew); // the first buffer waits in the device
    EXPECT_EQ(LooksToStall(watch, 1), 10 + OutputWatch::kPatience);
}

TEST_F(OutputWatchTest, ARecoveryIsTwoSecondsOfSound) {
    LooksToStall(m_watch, 0);
    for (std::uint64_t look = 1; look < OutputWatch::kPatience; ++look)
        EXPECT_EQ(m_watch.Look(look), Finding::kNothingNew);
    EXPECT_EQ(m_watch.Look(OutputWatch::kPatience), Finding::kRecovered);
    EXPECT_EQ(LooksToStall(m_watch, OutputWatch::kPatience), OutputWatch::kPatience);
}

TEST_F(OutputWatchTest, WithoutARecoveryItTriesLessAndLessOften) {
    EXPECT_EQ(LooksToStall(m_watch, 0), OutputWatch::kPatience);
    EXPECT_EQ(LooksToStall(m_watch, 0), 2 * OutputWatch::kPatience);
    m_watch.Look(1); // one buffer is no recovery
    EXPECT_EQ(LooksToStall(m_watch, 1), 4 * OutputWatch::kPatience);
    for (int stalls = 0; stalls < 10; ++stalls)
        EXPECT_LE(LooksToStall(m_watch, 0), OutputWatch::kMaxPatience);
    EXPECT_EQ(LooksToStall(m_watch, 0), OutputWatch::kMaxPatience);
}

} // namespace
} // namespace korvel::roomplayer
