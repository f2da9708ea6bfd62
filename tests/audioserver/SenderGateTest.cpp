#include <gtest/gtest.h>

#include "roomplayer/SenderGate.h"

namespace korvel::roomplayer {
namespace {

using std::chrono::milliseconds;

class SenderGateTest : public testing::Test {
protected:
    // Packets of a sender every 4 ms for a while; whether the last one was heard.
    bool Send(std::uint32_t sender, milliseconds length) {
        bool heard = false;
        for (milliseconds sent{0}; sent < length; sent += milliseconds(4)) {
            Pass(milliseconds(4));
            heard = m_gate.Admit(sender, m_timestamp, m_now);
        }
        return heard;
    }
    void Pass(milliseconds time) {
        m_now += time;
        m_timestamp += static_cast<std::uint32_t>(time.count() * SenderGate::kTimestampRate / 1000);
    }
    // Both send; which of them is heard in the end.
    std::uint32_t SendBoth(std::uint32_t one, std::uint32_t other, milliseconds length) {
        for (milliseconds sent{0}; sent < length; sent += milliseconds(4)) {
            Send(one, milliseconds(4));
            Send(other, milliseconds(4));
        }
        return m_gate.Current().value_or(0);
    }

    SenderGate m_gate;
    SenderGate::Clock::time_point m_now{};
    std::uint32_t m_timestamp = 0xfffff000; // wraps soon
};

TEST_F(SenderGateTest, HearsTheFirstSender) {
    EXPECT_FALSE(m_gate.Current());
    EXPECT_TRUE(Send(1, milliseconds(4)));
    EXPECT_EQ(m_gate.Current(), 1U);
}

TEST_F(SenderGateTest, HearsTheNewestWhileTheOldOneGoesOn) {
    Send(1, milliseconds(100));
    EXPECT_TRUE(Send(2, milliseconds(4)));
    EXPECT_EQ(SendBoth(1, 2, milliseconds(2000)), 2U);
    EXPECT_FALSE(Send(1, milliseconds(4)));
}

TEST_F(SenderGateTest, ReturnsToTheOldOneWhenItStartsAnew) {
    Send(1, milliseconds(100));
    Send(2, SenderGate::kRestart + milliseconds(100));
    EXPECT_TRUE(Send(1, milliseconds(4)));
}

TEST_F(SenderGateTest, ReturnsToTheOldOneWhenTheNewestFallsSilent) {
    Send(1, milliseconds(100));
    SendBoth(1, 2, milliseconds(300));
    EXPECT_FALSE(Send(1, SenderGate::kLost - milliseconds(20)));
    EXPECT_TRUE(Send(1, milliseconds(40)));
}

TEST_F(SenderGateTest, ALongPauseChangesNothing) {
    Send(1, milliseconds(100));
    Pass(milliseconds(60000));
    EXPECT_TRUE(Send(1, milliseconds(4)));
}

TEST_F(SenderGateTest, NoiseCannotFlapTheRoom) {
    Send(1, milliseconds(100));
    EXPECT_TRUE(Send(2, milliseconds(4)));
    EXPECT_FALSE(Send(3, milliseconds(4)));
    EXPECT_EQ(m_gate.Current(), 2U);
}

TEST_F(SenderGateTest, WhatWasHeldUpHasNotPaused) {
    Send(1, milliseconds(100));
    SendBoth(1, 2, milliseconds(300));
    // For a second nothing is taken in; then all that came meanwhile is there at once.
    m_now += milliseconds(1000);
    for (int packets = 0; packets < 250; ++packets) {
        m_timestamp += 192;
        EXPECT_FALSE(m_gate.Admit(1, m_timestamp, m_now));
        EXPECT_TRUE(m_gate.Admit(2, m_timestamp, m_now));
    }
}

TEST_F(SenderGateTest, AReturnIsNotLostInTheMomentAfterAChange) {
    Send(1, milliseconds(100));
    Send(2, SenderGate::kRestart + milliseconds(100));
    Send(3, milliseconds(4));
    EXPECT_FALSE(Send(1, milliseconds(4)));
    EXPECT_TRUE(Send(1, SenderGate::kHold));
}

TEST_F(SenderGateTest, LeftSendersAreTakenOnceAndLate) {
    Send(1, milliseconds(100));
    Send(2, milliseconds(100));
    EXPECT_FALSE(m_gate.TakeLeft(m_now, milliseconds(300)));
    Send(2, milliseconds(300));
    EXPECT_EQ(m_gate.TakeLeft(m_now, milliseconds(300)), 1U);
    EXPECT_FALSE(m_gate.TakeLeft(m_now, milliseconds(300)));
}

TEST_F(SenderGateTest, ManySendersAreForgotten) {
    for (std::uint32_t sender = 1; sender < 1000; ++sender) {
        Send(sender, milliseconds(100));
        EXPECT_EQ(m_gate.Current(), sender);
        m_gate.TakeLeft(m_now, milliseconds(300));
    }
}

TEST_F(SenderGateTest, NoMoreAreLetInThanAreLeftAgain) {
    std::uint32_t sender = 1;
    for (; sender <= 1 + SenderGate::kMaxEarlier; ++sender)
        EXPECT_TRUE(Send(sender, SenderGate::kHold));
    EXPECT_FALSE(Send(sender, SenderGate::kHold));
    EXPECT_EQ(m_gate.TakeLeft(m_now, milliseconds(0)), 1U);
    EXPECT_TRUE(Send(sender, SenderGate::kHold));
}

TEST_F(SenderGateTest, KnowsThePresentAndEarlierSenders) {
    Send(1, milliseconds(100));
    Send(2, milliseconds(100));
    EXPECT_TRUE(m_gate.Knows(1));
    EXPECT_TRUE(m_gate.Knows(2));
    EXPECT_FALSE(m_gate.Knows(3));
}

} // namespace
} // namespace korvel::roomplayer
