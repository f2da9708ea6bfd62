// Announcements, with the real driver.
#include "HouseWithDriver.h"

namespace korvel::controller {
namespace {

using nlohmann::json;

class HouseAnnouncementTest : public HouseWithDriver {
protected:
    RawReply Announce(const json& rooms, const std::string& path) {
        return house->Post("/api/announce", json{{"rooms", rooms}, {"file", path}}.dump());
    }
    // Starts an announcement and waits until it plays on this stream.
    void AnnounceOn(const std::string& stream, const json& rooms) {
        ASSERT_EQ(Announce(rooms, chime).status, 202);
        ASSERT_TRUE(Hears("addmed " + stream + " \"file:/" + chime + "\""));
    }
    bool IsAnnouncing() { return !house->Get("/api/status").Json()["announcement"].is_null(); }

    const std::string chime = state.Write("chime.wav", "sound");
};

TEST_F(HouseAnnouncementTest, IsHeardInItsRoomsAndThenTheMusicAgain) {
    PlayInRoom1();
    AnnounceOn("2", {1, 2});
    EXPECT_TRUE(server.Heard("addcli 2 127.0.0.1 6200"));
    EXPECT_TRUE(server.Heard("addcli 2 127.0.0.1 6202"));
    EXPECT_NE(Variable("ROOM_MAP_INFO").find("Announcement"), std::string::npos);
    EXPECT_EQ(house->Get("/api/status").Json()["announcement"],
              (json{{"state", "playing"}, {"rooms", {1, 2}}, {"file", chime}}));

    server.Send("* addmed EOM=2\r\n");
    EXPECT_TRUE(Hears("remstr 2"));
    EXPECT_TRUE(Told({{"type", "announcement"}, {"state", "complete"}, {"rooms", {1, 2}}}));
    EXPECT_FALSE(IsAnnouncing());
    EXPECT_EQ(Variable("ROOM_MAP_INFO").find("Announcement"), std::string::npos);
    EXPECT_EQ(QueueOf(1), 10000u);
    EXPECT_FALSE(house->IsRouted(2));
    EXPECT_FALSE(server.Heard("remcli 1")) << "the music goes on beneath";
    EXPECT_FALSE(server.Heard("setsta 1"));
}

TEST_F(HouseAnnouncementTest, OneAtATime) {
    AnnounceOn("1", {1});
    const RawReply second = Announce({2}, chime);
    EXPECT_EQ(second.status, 409);
    EXPECT_EQ(second.Json()["error"], "another announcement is being made");
    server.Send("* addmed EOM=1\r\n");
    ASSERT_TRUE(Told({{"state", "complete"}}));
    events.clear();
    AnnounceOn("2", {2});
    EXPECT_FALSE(server.Heard("addcli 2 127.0.0.1 6200"));
}

TEST_F(HouseAnnouncementTest, AFileThatTheServerRefusesEndsIt) {
    AnnounceOn("1", {1});
    server.Send("* addmed BAD=1 not a sound\r\n");
    EXPECT_TRUE(Told({{"type", "announcement"}, {"state", "complete"}}));
    EXPECT_TRUE(Hears("remstr 1"));
}

TEST_F(HouseAnnouncementTest, ItIsLostWithItsServer) {
    AnnounceOn("1", {1});
    server.Kill();
    EXPECT_TRUE(Told({{"type", "announcement"}, {"state", "abandoned"}}));
    EXPECT_EQ(Announce({1}, chime).status, 503);
    server.Restart();
    ASSERT_TRUE(Ready());
    events.clear();
    AnnounceOn("2", {1});
}

TEST_F(HouseAnnouncementTest, ARoomThatIsSwitchedOffEndsIt) {
    PlayInRoom1();
    AnnounceOn("2", {1, 2});
    house->Post("/api/rooms/1/off", "");
    EXPECT_TRUE(Told({{"type", "announcement"}, {"state", "abandoned"}}));
    EXPECT_TRUE(Hears("remstr 2"));
    EXPECT_FALSE(IsAnnouncing());
}

TEST_F(HouseAnnouncementTest, WhatIsNotThereIsRefused) {
    EXPECT_EQ(Announce({1, 9}, chime).status, 404);
    EXPECT_EQ(Announce(json::array(), chime).status, 400);
    EXPECT_EQ(Announce({"1"}, chime).status, 400);
    EXPECT_EQ(Announce(1, chime).status, 400);
    EXPECT_EQ(Announce({1}, "chime.wav").status, 400);
    EXPECT_EQ(Announce({1}, chime + ".mp3").status, 400);
    EXPECT_EQ(Announce({1}, state.Path()).status, 400);
    EXPECT_EQ(Announce({1}, chime + "\n1 reset").status, 400);
    EXPECT_EQ(house->Post("/api/announce", R"({"rooms":[1]})").status, 400);
    EXPECT_EQ(house->Post("/api/announce", R"({"rooms":[1],"file":"/x","volume":3})").status, 400);
    EXPECT_FALSE(server.Heard("addann"));
    EXPECT_FALSE(IsAnnouncing());
}

} // namespace
} // namespace korvel::controller
