#include <gtest/gtest.h>

#include "platform/TimerManager.h"
#include "replay/RandomSource.h"
#include "replay/VirtualTime.h"

namespace korvel::replay {
namespace {

class Callback final : public ITimerManagerCallback {
public:
    void OnTimerExpired(std::uint32_t, std::int32_t) override {}
};

// The expiries up to a time, as ID@DUE.
std::vector<std::string> TakeAll(TimerQueue& timers, std::uint64_t until) {
    std::vector<std::string> expiries;
    while (const auto expiry = timers.TakeDue(until))
        expiries.push_back(std::to_string(expiry->id) + "@" + std::to_string(expiry->due));
    return expiries;
}

using Expiries = std::vector<std::string>;

TEST(VirtualClock, StartsAtItsFixedTimes) {
    const VirtualClock clock;
    EXPECT_EQ(clock.GetWall(), 1000000000u);
    EXPECT_EQ(clock.GetMonotonic().tv_sec, 100);
    EXPECT_EQ(clock.GetMonotonic().tv_nsec, 0);
}

TEST(VirtualClock, MovesBothClocks) {
    VirtualClock clock;
    clock.AdvanceTo(2999);
    EXPECT_EQ(clock.GetWall(), 1000000002u);
    EXPECT_EQ(clock.GetMonotonic().tv_sec, 102);
    EXPECT_EQ(clock.GetMonotonic().tv_nsec, 999000000);
    clock.AdvanceTo(3000);
    EXPECT_EQ(clock.GetWall(), 1000000003u);
}

TEST(VirtualClock, NeverGoesBack) {
    VirtualClock clock;
    clock.AdvanceTo(5000);
    clock.AdvanceTo(1000);
    EXPECT_EQ(clock.GetElapsed(), 5000u);
}

TEST(VirtualClock, TheWallClockWrapsAt32Bits) {
    VirtualClock clock;
    clock.SetWallStart(4294967295u);
    clock.AdvanceTo(2000);
    EXPECT_EQ(clock.GetWall(), 1u);
}

TEST(TimerQueue, NumbersTimersFromOneAndNeverTwice) {
    TimerQueue timers;
    EXPECT_EQ(timers.Start(0, 10, 1, nullptr), 1u);
    timers.Stop(1);
    EXPECT_EQ(timers.Start(0, 10, 1, nullptr), 2u);
    timers.Clear();
    EXPECT_EQ(timers.Start(0, 10, 1, nullptr), 3u);
}

TEST(TimerQueue, ExpiresInTheOrderOfTimeThenOfIds) {
    TimerQueue timers;
    timers.Start(0, 300, 1, nullptr);
    timers.Start(0, 100, 1, nullptr);
    timers.Start(100, 200, 1, nullptr);
    timers.Start(0, 100, 1, nullptr);
    EXPECT_EQ(TakeAll(timers, 99), Expiries());
    EXPECT_EQ(TakeAll(timers, 1000), (Expiries{"2@100", "4@100", "1@300", "3@300"}));
    EXPECT_EQ(TakeAll(timers, 100000), Expiries());
}

TEST(TimerQueue, RepeatsAsOftenAsItWasTold) {
    TimerQueue timers;
    timers.Start(0, 100, 3, nullptr);
    EXPECT_EQ(TakeAll(timers, 250), (Expiries{"1@100", "1@200"}));
    EXPECT_EQ(TakeAll(timers, 10000), (Expiries{"1@300"}));
}

TEST(TimerQueue, AnEndlessTimerGoesOnUntilItIsStopped) {
    TimerQueue timers;
    timers.Start(0, 10000, TimerQueue::kEndless, nullptr);
    EXPECT_EQ(TakeAll(timers, 30000), (Expiries{"1@10000", "1@20000", "1@30000"}));
    timers.Stop(1);
    EXPECT_EQ(TakeAll(timers, 100000), Expiries());
}

TEST(TimerQueue, ARepeatingTimerLetsTimePass) {
    TimerQueue timers;
    timers.Start(0, 0, TimerQueue::kEndless, nullptr);
    EXPECT_EQ(TakeAll(timers, 2), (Expiries{"1@0", "1@1", "1@2"}));
}

TEST(TimerQueue, StopsTheTimersOfOneCallback) {
    TimerQueue timers;
    Callback a;
    Callback b;
    timers.Start(0, 10, 1, &a);
    timers.Start(0, 20, 1, &b);
    timers.Start(0, 30, 1, &a);
    EXPECT_EQ(timers.StopAllOf(a), (std::vector<std::uint32_t>{1, 3}));
    EXPECT_TRUE(timers.StopAllOf(a).empty());
    const auto expiry = timers.TakeDue(100);
    ASSERT_TRUE(expiry);
    EXPECT_EQ(expiry->callback, &b);
}

TEST(RandomSource, GivesTheNamedNumbersFirst) {
    RandomSource random;
    random.SetNext({5, 6});
    EXPECT_EQ(random.Take(), 5);
    random.SetNext({7});
    EXPECT_EQ(random.Take(), 7);
    // The generator's own start, the same everywhere.
    EXPECT_EQ(random.Take(), 361735857);
    EXPECT_EQ(random.Take(), 1248683453);
}

TEST(RandomSource, StaysWithin31Bits) {
    RandomSource random;
    for (int i = 0; i < 10000; ++i)
        ASSERT_GE(random.Take(), 0);
}

} // namespace
} // namespace korvel::replay
