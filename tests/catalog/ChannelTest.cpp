#include <gtest/gtest.h>

#include <random>

#include "Channel.h"

namespace korvel::catalog {
namespace {

using std::chrono::milliseconds;

Track MakeTrack(const std::string& id, int seconds) {
    Track track;
    track.id = id;
    track.duration = std::chrono::seconds(seconds);
    return track;
}

// Three tracks of 10, 20 and 30 seconds; times are in seconds from the channel's start.
class ChannelTest : public testing::Test {
protected:
    Channel::Time After(double seconds) const {
        return start + milliseconds(static_cast<std::int64_t>(seconds * 1000));
    }
    // "track offset" with the offset in milliseconds.
    static std::string Text(const Channel::Place& place) {
        return place.track->id + " " + std::to_string(place.offset.count());
    }
    std::string At(double seconds) { return Text(channel.At(After(seconds))); }
    std::string GoOn(std::uint32_t turn, double seconds) { return Text(channel.GoOn(turn, After(seconds))); }
    std::uint32_t TurnAt(double seconds) { return channel.At(After(seconds)).turn; }

    const Channel::Time start{};
    const Track tracks[3] = {MakeTrack("a", 10), MakeTrack("b", 20), MakeTrack("c", 30)};
    Channel channel{{&tracks[0], &tracks[1], &tracks[2]}, start};
};

TEST_F(ChannelTest, PlaysItsTracksInOrderForEver) {
    EXPECT_EQ(At(0), "a 0");
    EXPECT_EQ(At(9.999), "a 9999");
    EXPECT_EQ(At(10), "b 0");
    EXPECT_EQ(At(30), "c 0");
    EXPECT_EQ(At(59.999), "c 29999");
    EXPECT_EQ(At(60), "a 0");
    EXPECT_EQ(At(60 * 100000 + 15), "b 5000");
}

TEST_F(ChannelTest, EachTrackIsATurn) {
    EXPECT_EQ(TurnAt(5), 1u);
    EXPECT_EQ(TurnAt(10), 2u);
    EXPECT_EQ(TurnAt(60), 4u);
    EXPECT_EQ(TurnAt(60 * 1000 + 15), 3002u);
}

TEST_F(ChannelTest, AListenerAtTheEndOfATrackTakesTheChannelToTheNext) {
    EXPECT_EQ(GoOn(1, 9.5), "b 0");
    EXPECT_EQ(At(10), "b 500");
    EXPECT_EQ(GoOn(2, 12), "c 0");
    EXPECT_EQ(GoOn(3, 13), "a 0");
}

TEST_F(ChannelTest, AListenerThatIsALittleLateHearsTheTrackFromItsStart) {
    EXPECT_EQ(GoOn(1, 10.2), "b 0");
    EXPECT_EQ(At(10.5), "b 300");
}

TEST_F(ChannelTest, AListenerThatIsLateHearsWhatPlaysNow) {
    EXPECT_EQ(GoOn(1, 15), "b 5000");
    EXPECT_EQ(GoOn(1, 59), "c 29000");
}

TEST_F(ChannelTest, ASecondListenerDoesNotSkipWhatTheFirstHasBegun) {
    EXPECT_EQ(GoOn(1, 9.5), "b 0");
    EXPECT_EQ(GoOn(1, 9.7), "b 0");
    EXPECT_EQ(At(10), "b 300");
}

TEST_F(ChannelTest, ATurnOfAnotherTimeTakesItNowhere) {
    EXPECT_EQ(GoOn(77, 15), "b 5000");
    EXPECT_EQ(GoOn(0, 15), "b 5000");
}

TEST_F(ChannelTest, AlwaysHasAPlaceWithinATrack) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::minstd_rand random(seed);
    double now = 0;
    std::uint32_t turn = 0;
    for (int step = 0; step < 10000; ++step) {
        now += static_cast<double>(random() % 100000) / 1000;
        const bool goOn = random() % 2 == 0;
        const Channel::Place place =
            goOn ? channel.GoOn(turn + static_cast<std::uint32_t>(random() % 2), After(now))
                 : channel.At(After(now));
        ASSERT_GE(place.offset.count(), 0);
        ASSERT_LT(place.offset, place.track->duration);
        ASSERT_GE(place.turn, turn);
        ASSERT_EQ(place.track, &tracks[(place.turn - 1) % 3]);
        turn = place.turn;
    }
}

} // namespace
} // namespace korvel::catalog
