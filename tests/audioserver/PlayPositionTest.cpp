#include <gtest/gtest.h>

#include "audioserver/PlayPosition.h"

namespace korvel::audioserver {
namespace {

using std::chrono::milliseconds;

class PlayPositionTest : public testing::Test {
protected:
    static PlayPosition::Time At(int time) { return PlayPosition::Time(milliseconds(time)); }

    // Whether the prediction changes with a packet of this place that is due then.
    bool Gives(int due, int place) { return m_position.Advance(At(due), milliseconds(place)); }

    void IsAt(int time, int place, bool moves) {
        const PlayPosition::Point point = m_position.Get();
        EXPECT_EQ(point.at, At(time));
        EXPECT_EQ(point.position, milliseconds(place));
        EXPECT_EQ(point.moves, moves);
    }

    PlayPosition m_position;
};

TEST_F(PlayPositionTest, IsToldOnceWhileItMovesAsTheClockDoes) {
    EXPECT_TRUE(Gives(1000, 0));
    IsAt(1000, 0, true);
    for (int time = 4; time <= 10000; time += 4)
        EXPECT_FALSE(Gives(1000 + time, time));
    IsAt(1000, 0, true);
}

TEST_F(PlayPositionTest, RestsWhereItWasLast) {
    Gives(1000, 0);
    Gives(1500, 500);
    m_position.Rest(At(1503));
    IsAt(1503, 500, false);
    m_position.Rest(At(2000));
    IsAt(1503, 500, false);
    EXPECT_TRUE(Gives(5000, 504));
    IsAt(5000, 504, true);
}

TEST_F(PlayPositionTest, IsCorrectedWhenItDrifts) {
    const auto drift = static_cast<int>(PlayPosition::kMaxDrift.count());
    Gives(0, 0);
    EXPECT_FALSE(Gives(2000, 2000 - drift + 1));
    EXPECT_FALSE(Gives(3000, 3000 + drift - 1));
    EXPECT_TRUE(Gives(4000, 4000 - drift));
    IsAt(4000, 4000 - drift, true);
    EXPECT_TRUE(Gives(6000, 60000));
}

TEST_F(PlayPositionTest, IsCorrectedOnceASecondAtMost) {
    Gives(0, 0);
    int corrections = 0;
    for (int time = 4; time <= 10000; time += 4)
        corrections += Gives(time, time * 1000) ? 1 : 0;
    EXPECT_EQ(corrections, 10);
}

TEST_F(PlayPositionTest, RestsAtThePlaceThatItIsSetTo) {
    Gives(0, 0);
    m_position.Set(At(50), milliseconds(7000));
    IsAt(50, 7000, false);
    m_position.Rest(At(60));
    IsAt(50, 7000, false);
    EXPECT_TRUE(Gives(70, 7001));
    IsAt(70, 7001, true);
}

} // namespace
} // namespace korvel::audioserver
