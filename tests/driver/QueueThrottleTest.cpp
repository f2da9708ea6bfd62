// The throttle on media that fail: a queue stops at the sixth failure within a minute.
#include "QueueFixture.h"

namespace {

using QueueThrottle = QueueFixture;

TEST_F(QueueThrottle, SixthFailureWithinAMinuteStops) {
    EXPECT_FALSE(queue->ShouldStopPlayback()); // begins a period
    for (int i = 0; i < 5; ++i)
        EXPECT_FALSE(queue->ShouldStopPlayback());
    EXPECT_FALSE(queue->IsStoppedByErrors());
    EXPECT_TRUE(queue->ShouldStopPlayback());
    EXPECT_TRUE(queue->IsStoppedByErrors());
    // The period begins anew with it.
    Advance(59999);
    for (int i = 0; i < 5; ++i)
        EXPECT_FALSE(queue->ShouldStopPlayback());
    EXPECT_FALSE(queue->IsStoppedByErrors());
    EXPECT_TRUE(queue->ShouldStopPlayback());
}

TEST_F(QueueThrottle, StopBeginsTheMinuteAnew) {
    queue->ShouldStopPlayback();
    Advance(30000);
    for (int i = 0; i < 5; ++i)
        queue->ShouldStopPlayback();
    ASSERT_TRUE(queue->ShouldStopPlayback());
    Advance(30000); // a minute after the first one, half a minute after the stop
    for (int i = 0; i < 5; ++i)
        EXPECT_FALSE(queue->ShouldStopPlayback());
    EXPECT_TRUE(queue->ShouldStopPlayback());
}

TEST_F(QueueThrottle, FailuresAMinuteApartBeginANewPeriod) {
    queue->ShouldStopPlayback();
    for (int i = 0; i < 5; ++i)
        queue->ShouldStopPlayback();
    Advance(60000);
    EXPECT_FALSE(queue->ShouldStopPlayback());
    for (int i = 0; i < 5; ++i)
        EXPECT_FALSE(queue->ShouldStopPlayback());
    EXPECT_TRUE(queue->ShouldStopPlayback());
}

TEST_F(QueueThrottle, FailureAtTheLastMillisecondStillCounts) {
    queue->ShouldStopPlayback();
    Advance(59999);
    for (int i = 0; i < 5; ++i)
        EXPECT_FALSE(queue->ShouldStopPlayback());
    EXPECT_TRUE(queue->ShouldStopPlayback());
}

TEST_F(QueueThrottle, PeriodThatIsOverClearsTheStop) {
    for (int i = 0; i < 7; ++i)
        queue->ShouldStopPlayback();
    ASSERT_TRUE(queue->IsStoppedByErrors());
    Advance(60000);
    EXPECT_FALSE(queue->ShouldStopPlayback());
    EXPECT_FALSE(queue->IsStoppedByErrors());
}

// What starts the count of failures again, and whether it lifts the stop.
TEST_F(QueueThrottle, CountStartsAgainWithWhatThePersonDoes) {
    struct Reset {
        const char* name;
        std::function<void(AudioQueue&)> action;
        bool liftsStop;
    };
    const Reset resets[] = {
        {"state", [](AudioQueue& q) { q.SetQueueState(STOP); }, true},
        {"unknown state", [](AudioQueue& q) { q.SetQueueState(static_cast<QueueState>(7)); }, true},
        {"channel off", [](AudioQueue& q) { q.SetIsRhapsodyChannel(false); }, true},
        {"channel on", [](AudioQueue& q) { q.SetIsRhapsodyChannel(true); }, true},
        {"radio on", [](AudioQueue& q) { q.SetIsInternetRadio(true); }, true},
        {"count", [](AudioQueue& q) { q.ResetErrorCount(); }, false},
    };
    for (const Reset& reset : resets) {
        for (int i = 0; i < 20 && !queue->ShouldStopPlayback(); ++i) {
        }
        ASSERT_TRUE(queue->IsStoppedByErrors());
        reset.action(*queue);
        EXPECT_EQ(queue->IsStoppedByErrors(), !reset.liftsStop) << reset.name;
        for (int i = 0; i < 4; ++i)
            queue->ShouldStopPlayback();
        reset.action(*queue);
        for (int i = 0; i < 5; ++i)
            EXPECT_FALSE(queue->ShouldStopPlayback()) << reset.name;
        EXPECT_TRUE(queue->ShouldStopPlayback()) << reset.name;
    }
    queue->ClearStoppedByErrors();
    EXPECT_FALSE(queue->IsStoppedByErrors());
}

TEST_F(QueueThrottle, LeavingRadioModeStartsTheCountAgainButItsBeingOffDoesNot) {
    queue->SetIsInternetRadio(true);
    queue->ShouldStopPlayback();
    for (int i = 0; i < 5; ++i)
        queue->ShouldStopPlayback();
    queue->SetIsInternetRadio(false);
    for (int i = 0; i < 5; ++i)
        EXPECT_FALSE(queue->ShouldStopPlayback());
    queue->SetIsInternetRadio(false);
    EXPECT_TRUE(queue->ShouldStopPlayback());
    queue->SetIsInternetRadio(false);
    EXPECT_TRUE(queue->IsStoppedByErrors());
}

} // namespace
