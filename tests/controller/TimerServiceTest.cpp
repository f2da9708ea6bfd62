#include <gtest/gtest.h>

#include <vector>

#include "RecordingDriver.h"
#include "TestHouse.h"
#include "driver/services/TimerService.h"

namespace korvel::controller {
namespace {

class TimerServiceTest : public testing::Test, public ITimerManagerCallback {
protected:
    TimerServiceTest() { port.Attach(driver); }
    void OnTimerExpired(std::uint32_t id, std::int32_t) override {
        expired.push_back(id);
        if (onExpiry)
            onExpiry();
    }

    TestLoop loop;
    common::Log log{common::LogLevel::Error};
    RecordingDriver driver;
    DriverPort port{log};
    TimerService timers{loop.loop, port};
    std::vector<std::uint32_t> expired;
    std::function<void()> onExpiry;
};

TEST_F(TimerServiceTest, ExpiresAsOftenAsAskedAndNeverInsideTheCall) {
    const std::uint32_t id = timers.StartTimer(0, 3, this);
    EXPECT_TRUE(expired.empty());
    EXPECT_TRUE(loop.RunUntil([&] { return timers.Running() == 0; }));
    EXPECT_EQ(expired, (std::vector<std::uint32_t>{id, id, id}));
}

TEST_F(TimerServiceTest, IdsAreNeverZeroAndNeverUsedTwice) {
    const std::uint32_t first = timers.StartTimer(60000, 1, this);
    timers.CancelTimer(first);
    const std::uint32_t second = timers.Start(60000, 1, [](std::uint32_t) {});
    EXPECT_NE(first, 0u);
    EXPECT_GT(second, first);
    EXPECT_GT(timers.StartTimer(1, 0, this), second);
}

TEST_F(TimerServiceTest, ACancelledTimerStaysSilentEvenWhenItIsDue) {
    const std::uint32_t due = timers.StartTimer(0, 1, this);
    const std::uint32_t other = timers.StartTimer(0, 1, this);
    // The first to expire cancels the other, whose expiry is on its way by then.
    onExpiry = [&] {
        timers.CancelTimer(due);
        timers.CancelTimer(other);
    };
    EXPECT_TRUE(loop.RunUntil([&] { return timers.Running() == 0; }));
    loop.RunReady();
    EXPECT_EQ(expired.size(), 1u);
}

TEST_F(TimerServiceTest, RemoveCallbackCancelsAllOfOneCallback) {
    timers.StartTimer(0, 1, this);
    timers.StartTimer(0, 5, this);
    bool other = false;
    timers.Start(0, 1, [&](std::uint32_t) { other = true; });
    timers.RemoveCallback(this);
    EXPECT_TRUE(loop.RunUntil([&] { return other; }));
    EXPECT_TRUE(expired.empty());
}

TEST_F(TimerServiceTest, ARepeatingTimerGoesOnUntilItIsCancelled) {
    int count = 0;
    const std::uint32_t id = timers.Start(0, TimerService::kForever, [&](std::uint32_t timerId) {
        if (++count == 4)
            timers.CancelTimer(timerId);
    });
    EXPECT_NE(id, 0u);
    EXPECT_TRUE(loop.RunUntil([&] { return timers.Running() == 0; }));
    EXPECT_EQ(count, 4);
}

TEST_F(TimerServiceTest, CancellingWhatDoesNotRunDoesNothing) {
    timers.CancelTimer(0);
    timers.CancelTimer(77);
    timers.RemoveCallback(nullptr);
    EXPECT_EQ(timers.Running(), 0u);
}

} // namespace
} // namespace korvel::controller
