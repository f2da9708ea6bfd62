// An audio server that stands still, as with its disk or its machine: the system goes on answering for it.
#include <csignal>

#include "PlayingHouse.h"

namespace korvel::tests {
namespace {

class HostileFrozenServer : public PlayingHouse {
protected:
    // What a house takes at most to notice.
    static constexpr std::chrono::milliseconds kNoticed{10000};
    static constexpr const char* kWhy = "the audio server of this machine does not answer";

    ~HostileFrozenServer() override { Server().Signal(SIGCONT); }

    bool IsNoticed(std::chrono::milliseconds patience = kNoticed) {
        return WaitUntil([this] { return m_house->Status().value("notReadyBecause", "") == kWhy; }, patience);
    }
    nlohmann::json ServerStatus() { return m_house->Status().at("servers").at(0); }
};

TEST_F(HostileFrozenServer, ItIsLostAsAnyOtherAndComesBackByItself) {
    OpenAndPlay();
    Server().Signal(SIGSTOP);
    EXPECT_TRUE(IsNoticed()) << m_house->Log();
    EXPECT_EQ(ServerStatus().at("connected"), false);
    EXPECT_EQ(ServerStatus().at("problem"), "it does not answer");
    EXPECT_EQ(m_house->Get("/api/rooms").body.at(0).at("routed"), false);
    const Reply refused = m_house->Command("PLAY", {{"ROOM_ID", 1}});
    EXPECT_EQ(refused.status, 503);
    EXPECT_EQ(refused.Error(), kWhy);
    Server().Signal(SIGCONT);
    EXPECT_TRUE(m_house->IsReady());
    EXPECT_EQ(ServerStatus().at("problem"), "");
    EXPECT_EQ(Play(AddTone(kOtherTone)), 200);
    EXPECT_TRUE(m_hall->Hears(kOtherTone, 0.5)) << m_house->Log();
    EXPECT_FALSE(IsInServerLog("unusable line"));
}

TEST_F(HostileFrozenServer, ItIsNoticedThoughNothingWasEverAskedOfIt) {
    Open();
    ASSERT_TRUE(m_house->IsReady());
    Server().Signal(SIGSTOP);
    EXPECT_TRUE(IsNoticed()) << m_house->Log();
}

TEST_F(HostileFrozenServer, OneThatStoodStillBeforeTheHouseStartedIsNoServer) {
    ServerPort();
    Server().Signal(SIGSTOP);
    Open();
    EXPECT_TRUE(IsNoticed()) << m_house->Log();
    Server().Signal(SIGCONT);
    EXPECT_TRUE(m_house->IsReady());
}

} // namespace
} // namespace korvel::tests
