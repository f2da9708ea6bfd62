// An announcement and the core that it reports to.
#include <gtest/gtest.h>

#include "TestCore.h"
#include "server/Announcement.h"

namespace {

using Lines = std::vector<std::string>;

class AnnouncementStream : public testing::Test {
protected:
    // A hook may refer to what a test has on its stack.
    void TearDown() override { m_core.ClearHook(); }

    bool Data(const std::string& line) {
        m_changed = false;
        return m_announcement.OnDataIn(ASPacket(line + "\r\n"), m_changed);
    }
    // Every line that waits, acknowledged at once.
    Lines Sent() {
        while (!m_link->IsAckTimerExpired())
            m_link->KillAckTimer();
        return Only(m_core.TakeLines(), "< send");
    }

    TestCore m_core;
    kv::auto_com<ServerUtility> m_link =
        kv::auto_com<ServerUtility>::adopt(new ServerUtility(m_core.Helper(), m_core.Instances(), 3000));
    Announcement m_announcement{m_core.Instances(), m_link.get()};
    bool m_changed = false;
};

TEST_F(AnnouncementStream, TakesNothingWhileIdle) {
    EXPECT_FALSE(Data("1 addann stream=5"));
    EXPECT_FALSE(Data("1 OK addcli 4095"));
}

TEST_F(AnnouncementStream, TakesOnlyItsAnswerWhileRequested) {
    m_announcement.CreateStream();
    EXPECT_EQ(Sent(), Lines{R"(< send 3000 "0 addann\r\n")"});
    EXPECT_FALSE(Data("1 OK addcli 5"));
    EXPECT_FALSE(Data("1 xaddann stream=5"));
    EXPECT_TRUE(Data("1 addann stream=5"));
    EXPECT_FALSE(m_changed);
    EXPECT_FALSE(Data("1 OK addcli 6"));
    EXPECT_TRUE(Data("1 OK addcli 5"));
    EXPECT_TRUE(Data("* x WAT=5"));
    EXPECT_FALSE(m_changed);
}

TEST_F(AnnouncementStream, TellsTheCoreBeforeItSendsWhatWaits) {
    m_announcement.CreateStream();
    m_announcement.AddClient(7, "10.0.0.7", 6200);
    EXPECT_EQ(Sent(), Lines{R"(< send 3000 "0 addann\r\n")"});
    Data("1 addann stream=5");
    const auto lines = m_core.TakeLines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0], "< announcement ready");
    EXPECT_EQ(lines[1], R"(< send 3000 "1 addcli 5 10.0.0.7 6200\r\n")");
}

TEST_F(AnnouncementStream, ListsItsRoomsUntilItIsComplete) {
    m_announcement.CreateStream();
    m_announcement.AddClient(8, "10.0.0.8", 6200);
    m_announcement.AddClient(7, "10.0.0.7", 6200);
    EXPECT_EQ(m_announcement.GetRooms(), (std::vector<std::uint32_t>{8, 7}));
    EXPECT_EQ(m_announcement.GetAddresses(), (Lines{"10.0.0.8", "10.0.0.7"}));
    Data("1 addann stream=5");
    EXPECT_TRUE(Data("* addmed EOM=5"));
    EXPECT_TRUE(m_changed);
    EXPECT_TRUE(m_announcement.GetRooms().empty());
    EXPECT_TRUE(m_announcement.GetAddresses().empty());
}

TEST_F(AnnouncementStream, IsCompleteByARefusedFileOnly) {
    m_announcement.CreateStream();
    Data("1 addann stream=5");
    EXPECT_TRUE(Data("1 NO remmed 5"));
    EXPECT_FALSE(m_changed);
    EXPECT_TRUE(Data("1 NO xaddmed 5"));
    EXPECT_FALSE(m_changed);
    EXPECT_TRUE(Data("1 NO addmed 5"));
    EXPECT_TRUE(m_changed);
    EXPECT_TRUE(Data("* addmed BAD=5 gone"));
    EXPECT_TRUE(m_changed);
}

TEST_F(AnnouncementStream, AnewFirstSendsWhatTheOldStreamStillHas) {
    m_announcement.CreateStream();
    Data("1 addann stream=5");
    m_announcement.Play("/a.wav");
    m_announcement.CreateStream();
    EXPECT_EQ(Sent(),
              (Lines{R"(< send 3000 "0 addann\r\n")", R"(< send 3000 "1 addmed 5 \"file://a.wav\"\r\n")",
                     R"(< send 3000 "2 addann\r\n")"}));
    EXPECT_FALSE(Data("1 OK addcli 5"));
}

TEST_F(AnnouncementStream, AnewDropsWhatHadNoStream) {
    m_announcement.CreateStream();
    m_announcement.Play("/a.wav");
    m_announcement.CreateStream();
    Data("1 addann stream=6");
    EXPECT_EQ(Sent(), (Lines{R"(< send 3000 "0 addann\r\n")", R"(< send 3000 "1 addann\r\n")"}));
}

TEST_F(AnnouncementStream, GivenUpStillWaitsForItsAnswer) {
    m_announcement.CreateStream();
    m_announcement.CleanupAnnouncement();
    EXPECT_TRUE(Data("1 addann stream=5"));
    EXPECT_TRUE(Has(m_core.TakeLines(), "< announcement ready"));
}

TEST_F(AnnouncementStream, MayBeGivenUpByTheCoreAsSoonAsItIsReady) {
    m_announcement.CreateStream();
    m_announcement.Play("/a.wav");
    m_core.SetHook([&](const ServiceCall& call) {
        if (call.name == "AnnouncementStreamReady")
            m_announcement.CleanupAnnouncement();
    });
    Data("1 addann stream=5");
    m_core.ClearHook();
    EXPECT_EQ(Sent(), Lines{R"(< send 3000 "0 addann\r\n")"});
    EXPECT_FALSE(Data("1 OK addcli 5"));
}

} // namespace
