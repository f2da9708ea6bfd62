// Announcements, with the real driver.
#include "HouseWithDriver.h"
#include "Sound.h"

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
    // Whether an announcement came to this state so far.
    bool Happened(const std::string& what) {
        return std::ranges::any_of(events, [&](const json& event) {
            return event["type"] == "announcement" && event["state"] == what;
        });
    }
    bool IsAnnouncing() { return !house->Get("/api/status").Json()["announcement"].is_null(); }

    const std::string chime = state.Write("chime.wav", tests::WavOf({{500, 0.1}}));
};

TEST_F(HouseAnnouncementTest, IsHeardInItsRoomsAndThenTheMusicAgain) {
    PlayInRoom1();
    AnnounceOn("2", {1, 2});
    EXPECT_TRUE(server.Heard("addcli 2 127.0.0.1 6200"));
    EXPECT_TRUE(server.Heard("addcli 2 127.0.0.1 6202"));
    EXPECT_NE(Variable("ROOM_MAP_INFO").find("Announcement"), std::string::npos);
    EXPECT_EQ(house->Get("/api/status").Json()["announcement"],
              (json{{"id", 1}, {"state", "playing"}, {"rooms", {1, 2}}, {"file", chime}}));

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

TEST_F(HouseAnnouncementTest, EachHasAnIdOfItsOwn) {
    server.EndMedia("EOM");
    EXPECT_EQ(Announce({1}, chime).Json()["id"], 1);
    EXPECT_TRUE(Told({{"type", "announcement"}, {"id", 1}, {"state", "complete"}}));
    EXPECT_EQ(Announce({1}, chime).Json()["id"], 2);
    EXPECT_TRUE(Told({{"type", "announcement"}, {"id", 2}, {"state", "complete"}}));
}

TEST_F(HouseAnnouncementTest, AFileThatTheServerCannotPlayFails) {
    AnnounceOn("1", {1});
    server.Send("* addmed BAD=1 not a sound\r\n");
    EXPECT_TRUE(Told({{"type", "announcement"}, {"state", "failed"}, {"reason", "not a sound"}}));
    EXPECT_TRUE(Hears("remstr 1"));
    EXPECT_FALSE(IsAnnouncing());
    EXPECT_FALSE(Happened("complete"));
}

TEST_F(HouseAnnouncementTest, AFileThatTheServerRefusesFails) {
    server.Refuse("addmed");
    ASSERT_EQ(Announce({1}, chime).status, 202);
    EXPECT_TRUE(Told({{"state", "failed"}, {"reason", "the audio server refused the file"}}));
    EXPECT_TRUE(Hears("remstr 1"));
}

TEST_F(HouseAnnouncementTest, WithoutAStreamItFails) {
    server.Refuse("addann");
    ASSERT_EQ(Announce({1}, chime).status, 202);
    ASSERT_TRUE(Hears("addann"));
    server.Refuse("addmed");
    EXPECT_TRUE(Told({{"state", "failed"}, {"reason", "the audio server has no stream for it"}}));
    server.Refuse("");
    server.EndMedia("EOM");
    ASSERT_EQ(Announce({1}, chime).status, 202);
    EXPECT_TRUE(Told({{"id", 2}, {"state", "complete"}}));
}

// What plays in the rooms has a stream of its own, and its failures are no business of the announcement's.
TEST_F(HouseAnnouncementTest, AFailureOfTheMusicIsNotItsOwn) {
    PlayInRoom1();
    AnnounceOn("2", {1, 2});
    server.Send("* addmed BAD=1 gone\r\n* addmed EOM=2\r\n");
    EXPECT_TRUE(Told({{"type", "announcement"}, {"state", "complete"}}));
    EXPECT_FALSE(Happened("failed"));
}

TEST_F(HouseAnnouncementTest, ItIsLostWithItsServer) {
    AnnounceOn("1", {1});
    server.Kill();
    EXPECT_TRUE(Told({{"state", "abandoned"}, {"reason", "its audio server is lost"}}));
    const RawReply reply = Announce({1}, chime);
    EXPECT_EQ(reply.status, 503);
    EXPECT_EQ(reply.Json()["error"], "no audio server is connected");
    server.Restart();
    ASSERT_TRUE(Ready());
    events.clear();
    AnnounceOn("2", {1});
}

TEST_F(HouseAnnouncementTest, ARoomThatIsSwitchedOffEndsIt) {
    PlayInRoom1();
    AnnounceOn("2", {1, 2});
    house->Post("/api/rooms/1/off", "");
    EXPECT_TRUE(Told({{"state", "abandoned"}, {"reason", "a room was switched off"}}));
    EXPECT_TRUE(Hears("remstr 2"));
    EXPECT_FALSE(IsAnnouncing());
}

TEST_F(HouseAnnouncementTest, WhatIsNotThereIsRefused) {
    const RawReply room = Announce({1, 9}, chime);
    EXPECT_EQ(room.status, 404);
    EXPECT_EQ(room.Json()["error"], "there is no room 9");
    for (const std::string& file : {chime + ".mp3", state.Path()}) {
        const RawReply reply = Announce({1}, file);
        EXPECT_EQ(reply.status, 404);
        EXPECT_EQ(reply.Json()["error"], file + " is not there or cannot be read");
    }
    EXPECT_EQ(Announce(json::array(), chime).status, 400);
    EXPECT_EQ(Announce({"1"}, chime).status, 400);
    EXPECT_EQ(Announce(1, chime).status, 400);
    EXPECT_EQ(Announce({1}, "chime.wav").status, 400);
    EXPECT_EQ(Announce({1}, chime + "\n1 reset").status, 400);
    EXPECT_EQ(house->Post("/api/announce", R"({"rooms":[1]})").status, 400);
    EXPECT_EQ(house->Post("/api/announce", R"({"rooms":[1],"file":"/x","volume":3})").status, 400);
    EXPECT_FALSE(server.Heard("addann"));
    EXPECT_FALSE(IsAnnouncing());
    EXPECT_FALSE(Happened("started"));
}

TEST_F(HouseAnnouncementTest, WhatHoldsNoSoundIsRefused) {
    for (const char* name : {"words.wav", "words.mp3", "words.txt", "words"}) {
        const std::string file = state.Write(name, "These are words, and many of them.");
        const RawReply reply = Announce({1}, file);
        EXPECT_EQ(reply.status, 422) << name;
        EXPECT_EQ(reply.Json()["error"], file + " holds no sound that can be played");
    }
    EXPECT_FALSE(server.Heard("addann"));
    EXPECT_FALSE(Happened("started"));
}

} // namespace
} // namespace korvel::controller
