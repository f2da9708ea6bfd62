// The send link of an audio server: numbers, order, one line outstanding at a time.
#include <gtest/gtest.h>

#include "TestCore.h"
#include "platform/Services.h"
#include "platform/TimerManager.h"
#include "server/link/RoomClient.h"
#include "server/link/ServerUtility.h"

namespace {

using Lines = std::vector<std::string>;

class SendLink : public testing::Test {
protected:
    // A hook may refer to what a test has on its stack.
    void TearDown() override { m_core.ClearHook(); }

    TestCore m_core;
    kv::auto_com<ServerUtility> m_link =
        kv::auto_com<ServerUtility>::adopt(new ServerUtility(m_core.Helper(), m_core.Instances(), 3000));
};

TEST_F(SendLink, SendsOneLineAtATime) {
    for (const char* text : {"a", "b", "c"})
        m_link->AddToSendQueue(text);
    EXPECT_EQ(m_core.TakeLines(), (Lines{R"(< send 3000 "0 a\r\n")", "< timer 1 5000"}));
    m_link->KillAckTimer();
    EXPECT_EQ(m_core.TakeLines(), (Lines{"< timer-stop 1", R"(< send 3000 "1 b\r\n")", "< timer 2 5000"}));
    EXPECT_EQ(m_core.Run("advance 5000"), (Lines{"= timer 2", R"(< send 3000 "2 c\r\n")", "< timer 3 5000"}));
    m_link->KillAckTimer();
    EXPECT_EQ(m_core.TakeLines(), Lines{"< timer-stop 3"});
}

TEST_F(SendLink, HandsALineOverAsABindingMessageOfTheDriver) {
    Lines calls;
    m_core.SetHook([&](const ServiceCall& call) { calls.push_back(call.ToText()); });
    m_link->AddToSendQueue("a");
    EXPECT_EQ(calls, (Lines{"CreateBindMessage 1 SEND 0 a\r\n", "SendBindMessage 100002 3000 1 SEND 0 a\r\n",
                            "StartTimer 5000 1"}));
}

// The core has not told the timer's id yet.
TEST_F(SendLink, AnAnswerWhileTheTimerStartsStopsNoTimer) {
    Lines calls;
    m_core.SetHook([&](const ServiceCall& call) {
        calls.push_back(call.name);
        if (call.name == "StartTimer")
            m_link->KillAckTimer();
    });
    m_link->AddToSendQueue("a");
    EXPECT_EQ(calls, (Lines{"CreateBindMessage", "SendBindMessage", "StartTimer"}));
    EXPECT_TRUE(m_link->IsAckTimerExpired());
}

TEST_F(SendLink, AnAcknowledgementWhileIdleDoesNothing) {
    m_link->KillAckTimer();
    EXPECT_EQ(m_core.TakeLines(), Lines{});
    EXPECT_TRUE(m_link->IsAckTimerExpired());
    EXPECT_EQ(m_link->GetAckTimer(), 0u);
}

TEST_F(SendLink, TellsWhetherALineIsOutstanding) {
    m_link->AddToSendQueue("a");
    EXPECT_FALSE(m_link->IsAckTimerExpired());
    EXPECT_EQ(m_link->GetAckTimer(), 1u);
    m_link->KillAckTimer();
    EXPECT_TRUE(m_link->IsAckTimerExpired());
    EXPECT_EQ(m_link->GetAckTimer(), 0u);
}

TEST_F(SendLink, SendToServerSendsNothingWhileALineIsOutstanding) {
    m_link->AddToSendQueue("a");
    m_link->AddToSendQueue("b");
    m_core.TakeLines();
    m_link->SendToServer();
    EXPECT_EQ(m_core.TakeLines(), Lines{});
}

TEST_F(SendLink, ATimeoutWithNothingLeftIsIdle) {
    m_link->AddToSendQueue("a");
    EXPECT_EQ(Only(m_core.Run("advance 5000"), "<"), Lines{});
    EXPECT_TRUE(m_link->IsAckTimerExpired());
    EXPECT_EQ(m_link->GetAckTimer(), 0u);
}

TEST_F(SendLink, NumbersWrapAfter65536Lines) {
    for (int i = 0; i < 65537; ++i) {
        m_link->AddToSendQueue("x");
        const auto lines = m_core.TakeLines();
        if (i == 65535) {
            EXPECT_TRUE(Has(lines, R"(< send 3000 "65535 x\r\n")"));
        } else if (i == 65536) {
            EXPECT_TRUE(Has(lines, R"(< send 3000 "0 x\r\n")"));
        }
        m_link->KillAckTimer();
    }
}

TEST_F(SendLink, TakesAnyText) {
    m_link->AddToSendQueue("");
    m_link->AddToSendQueue(nullptr);
    m_link->KillAckTimer();
    EXPECT_EQ(Only(m_core.TakeLines(), "< send"),
              (Lines{R"(< send 3000 "0 \r\n")", R"(< send 3000 "1 \r\n")"}));
}

TEST_F(SendLink, AnUnknownTimerIsNotedAndReleasesNothingThatIsOutstanding) {
    m_link->AddToSendQueue("a");
    m_link->AddToSendQueue("b");
    m_core.TakeLines();
    m_link->OnTimerExpired(99, 0);
    EXPECT_EQ(m_core.TakeLines(), Lines{"< assert korvel_digitalaudio/kvw/ServerUtility 74"});
    EXPECT_EQ(m_link->GetAckTimer(), 1u);
}

// Timers are numbered from 1.
TEST_F(SendLink, ATimerIsUnknownOnceItsLineIsAcknowledged) {
    m_link->AddToSendQueue("a");
    m_link->KillAckTimer();
    m_core.TakeLines();
    EXPECT_EQ(m_link->GetAckTimer(), 0u);
    m_link->OnTimerExpired(1, 0);
    EXPECT_EQ(m_core.TakeLines(), Lines{"< assert korvel_digitalaudio/kvw/ServerUtility 74"});
}

TEST_F(SendLink, ItsEndDropsTheTimerAndTheUnsentLines) {
    m_link->AddToSendQueue("a");
    m_link->AddToSendQueue("b");
    m_core.TakeLines();
    m_link.reset();
    EXPECT_EQ(m_core.TakeLines(), Lines{"< timer-stop 1"});
    EXPECT_EQ(m_core.Run("advance 10000"), Lines{});
}

TEST_F(SendLink, LivesAsLongAsSomebodyHoldsIt) {
    m_link->AddRef();
    EXPECT_EQ(m_link->Release(), 1);
    m_link->AddToSendQueue("a");
    auto client = std::make_unique<RoomClient>(m_link.get());
    m_core.TakeLines();
    m_link.reset();
    EXPECT_EQ(m_core.TakeLines(), Lines{});
    client.reset();
    EXPECT_EQ(m_core.TakeLines(), Lines{"< timer-stop 1"});
}

TEST_F(SendLink, AnAnswerInsideTheHandOverReleasesTheNextLine) {
    int answers = 0;
    m_core.SetHook([&](const ServiceCall& call) {
        if (call.name == "SendBindMessage" && ++answers < 1000)
            m_link->KillAckTimer();
    });
    m_link->AddToSendQueue("a");
    m_link->AddToSendQueue("b");
    EXPECT_EQ(m_core.TakeLines(), (Lines{R"(< send 3000 "0 a\r\n")", R"(< send 3000 "1 b\r\n")"}));
    EXPECT_TRUE(m_link->IsAckTimerExpired());
}

TEST_F(SendLink, LinesAddedInsideTheHandOverKeepTheirOrder) {
    m_core.SetHook([&](const ServiceCall& call) {
        if (call.name == "SendBindMessage" && call.arguments.back() == "0 a\r\n") {
            m_link->AddToSendQueue("b");
            m_link->AddToSendQueue("c");
            m_link->KillAckTimer();
        } else if (call.name == "SendBindMessage") {
            m_link->KillAckTimer();
        }
    });
    m_link->AddToSendQueue("a");
    EXPECT_EQ(m_core.TakeLines(),
              (Lines{R"(< send 3000 "0 a\r\n")", R"(< send 3000 "1 b\r\n")", R"(< send 3000 "2 c\r\n")"}));
}

TEST_F(SendLink, MayLoseItsLastHolderInsideTheHandOver) {
    m_core.SetHook([&](const ServiceCall& call) {
        if (call.name == "SendBindMessage")
            m_link.reset();
    });
    m_link->AddToSendQueue("a");
    m_core.ClearHook();
    EXPECT_FALSE(m_link);
    EXPECT_EQ(m_core.Run("advance 10000"), Lines{});
}

TEST_F(SendLink, ATimerThatCannotBeStartedDoesNotBlockIt) {
    m_core.SetHook([](const ServiceCall& call) {
        if (call.name == "StartTimer")
            throw std::runtime_error("no timers");
    });
    EXPECT_THROW(m_link->AddToSendQueue("a"), std::runtime_error);
    m_core.ClearHook();
    m_core.TakeLines();
    m_link->AddToSendQueue("b");
    EXPECT_EQ(m_core.TakeLines(), (Lines{R"(< send 3000 "1 b\r\n")", "< timer 1 5000"}));
}

class NoTimers final : public ITimerManager {
public:
    std::uint32_t StartTimer(std::uint32_t, std::uint32_t, ITimerManagerCallback*) override { return 0; }
    void CancelTimer(std::uint32_t) override {}
    void RemoveCallback(ITimerManagerCallback*) override {}
};

TEST_F(SendLink, WithoutATimerNoLineIsOutstanding) {
    NoTimers timers;
    m_core.Instances().Offer<ITimerManager>(timers);
    auto link =
        kv::auto_com<ServerUtility>::adopt(new ServerUtility(m_core.Helper(), m_core.Instances(), 3001));
    link->AddToSendQueue("a");
    EXPECT_TRUE(link->IsAckTimerExpired());
    link->AddToSendQueue("b");
    EXPECT_EQ(m_core.TakeLines(), (Lines{R"(< send 3001 "0 a\r\n")", R"(< send 3001 "1 b\r\n")"}));
    link.reset();

    m_core.Instances().RevokeInstance(ITimerManager::kInterfaceId);
    link = kv::auto_com<ServerUtility>::adopt(new ServerUtility(m_core.Helper(), m_core.Instances(), 3002));
    link->AddToSendQueue("a");
    link->AddToSendQueue("b");
    EXPECT_EQ(m_core.TakeLines(), (Lines{R"(< send 3002 "0 a\r\n")", R"(< send 3002 "1 b\r\n")"}));
}

TEST_F(SendLink, AMessageThatCannotBeMadeCountsAsSent) {
    m_core.Instances().RevokeInstance(IBindMessageSender::kInterfaceId);
    const auto link =
        kv::auto_com<ServerUtility>::adopt(new ServerUtility(m_core.Helper(), m_core.Instances(), 3001));
    link->AddToSendQueue("a");
    EXPECT_EQ(m_core.TakeLines(), Lines{"< timer 1 5000"});
}

TEST(RoomClients, AreTheSameByAddressChannelAndPort) {
    RoomClient client(nullptr);
    client.SetRoomInfo("10.0.0.5", 5004, 2);
    EXPECT_TRUE(client.IsClientTheSame("10.0.0.5", 2, 5004));
    EXPECT_FALSE(client.IsClientTheSame("10.0.0.5", 5004, 2));
    EXPECT_FALSE(client.IsClientTheSame("10.0.0.05", 2, 5004));
    EXPECT_FALSE(client.IsClientTheSame("10.0.0.5 ", 2, 5004));
    EXPECT_FALSE(client.IsClientTheSame("10.0.0.5", 1, 5004));
    EXPECT_FALSE(client.IsClientTheSame("10.0.0.5", 2, 5005));
    client.SetRoomInfo("host", 1, 1);
    EXPECT_FALSE(client.IsClientTheSame("HOST", 1, 1));
}

TEST(RoomClients, BeginWithoutAnEndpoint) {
    const RoomClient client(nullptr);
    EXPECT_EQ(client.GetIpAddress(), "");
    EXPECT_EQ(client.GetIpPort(), 0u);
    EXPECT_EQ(client.GetChannel(), 4294967295u);
    EXPECT_TRUE(client.IsClientTheSame("", 4294967295u, 0));
    EXPECT_FALSE(client.IsClientTheSame("", 0, 0));
    const RoomClient known(nullptr, "10.0.0.5", 5004, 2);
    EXPECT_EQ(known.GetIpAddress(), "10.0.0.5");
    EXPECT_EQ(known.GetIpPort(), 5004u);
    EXPECT_EQ(known.GetChannel(), 2u);
}

} // namespace
