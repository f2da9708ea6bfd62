// What the interface shows of the house, with the real driver.
#include "HouseWithDriver.h"

namespace korvel::controller {
namespace {

using nlohmann::json;

class HouseSessionsTest : public HouseWithDriver {
protected:
    json House(const std::string& query = "") { return house->Get("/api/house" + query).Json(); }
    json Session() { return House()["sessions"].at(0); }
    std::string Address(const json& session) { return "/api/sessions/" + session["id"].dump(); }
    json Entries() { return house->Get(Address(Session()) + "/entries").Json(); }

    // Three songs in room 1, the first of which plays.
    void PlayThree() {
        PlayInRoom1();
        Add(1, kFirstSong + 1);
        Add(1, kFirstSong + 2);
    }
    // Of the entries, in order.
    json Members(const char* member) {
        json members = json::array();
        const json entries = Entries();
        for (const json& entry : entries["items"])
            members.push_back(entry[member]);
        return members;
    }
};

TEST_F(HouseSessionsTest, WhatPlaysInARoomIsASession) {
    PlayInRoom1();
    const json session = Session();
    EXPECT_EQ(session["state"], "playing");
    EXPECT_EQ(session["rooms"], json::array({1}));
    EXPECT_EQ(session["current"]["title"], "Song 0");
    EXPECT_EQ(session["current"]["kind"], "song");
    EXPECT_EQ(session["entries"]["count"], 1);
    EXPECT_EQ(session["canPause"], true);
    const json room = House()["rooms"].at(0);
    EXPECT_EQ(room["name"], "Living room");
    EXPECT_EQ(room["session"], session["id"]);
    EXPECT_EQ(House()["rooms"].at(1)["session"], nullptr);
    EXPECT_EQ(house->Get(Address(session)).Json(), session);
}

TEST_F(HouseSessionsTest, AnEditedQueueKeepsItsEntries) {
    PlayThree();
    const json before = Members("id");
    house->Command(
        "EDIT_QUEUE",
        {{"ROOM_ID", 1}, {"MEDIA", "<MEDIA><MEDIA_ID>1052</MEDIA_ID><MEDIA_ID>1050</MEDIA_ID></MEDIA>"}});
    EXPECT_EQ(Members("title"), (json{"Song 2", "Song 0"}));
    EXPECT_EQ(Members("id"), (json{before[2], before[0]}));
    EXPECT_EQ(Session()["current"]["id"], before[0]);
}

TEST_F(HouseSessionsTest, ASongThatCannotBePlayedStaysWithItsReason) {
    PlayThree();
    server.Send("* addmed BAD=1 no such file\r\n");
    ASSERT_TRUE(Hears("addmed 1 \"file://music/1.flac\""));
    EXPECT_EQ(Members("title"), (json{"Song 0", "Song 1", "Song 2"}));
    EXPECT_EQ(Entries()["items"][0]["unplayable"], (json{{"code", "unplayable"}, {"text", "no such file"}}));
    EXPECT_EQ(Entries()["items"][1]["unplayable"], nullptr);
    EXPECT_EQ(Session()["current"]["title"], "Song 1");
}

TEST_F(HouseSessionsTest, WhatALostServerPlayedSleeps) {
    PlayThree();
    const json before = Members("id");
    server.Kill();
    ASSERT_TRUE(NotRouted(1));
    EXPECT_EQ(Session()["state"], "sleeping");
    EXPECT_EQ(Session()["rooms"], json::array({1}));
    EXPECT_EQ(Session()["current"]["title"], "Song 0");
    EXPECT_EQ(Members("id"), before);
    EXPECT_EQ(House()["rooms"].at(0)["session"], nullptr);
}

TEST_F(HouseSessionsTest, ARoomThatIsSwitchedOffLeavesItsSessionAsleep) {
    PlayThree();
    house->Post("/api/rooms/1/off", "");
    EXPECT_EQ(Session()["state"], "sleeping");
    EXPECT_EQ(Entries()["total"], 3);
}

TEST_F(HouseSessionsTest, ShuffleAndRepeatAreASessionsOwn) {
    PlayThree();
    house->Command("SHUFFLE", {{"ROOM_ID", 1}, {"SHUFFLE", 1}});
    house->Command("REPEAT", {{"ROOM_ID", 1}});
    EXPECT_EQ(Session()["shuffle"], true);
    EXPECT_EQ(Session()["repeat"], true);
    house->Command("REPEAT", {{"ROOM_ID", 1}});
    EXPECT_EQ(Session()["repeat"], false);
}

TEST_F(HouseSessionsTest, EntriesComeInPages) {
    PlayThree();
    const json page = house->Get(Address(Session()) + "/entries?offset=1&limit=1").Json();
    EXPECT_EQ(page["total"], 3);
    EXPECT_EQ(page["offset"], 1);
    ASSERT_EQ(page["items"].size(), 1U);
    EXPECT_EQ(page["items"][0]["title"], "Song 1");
    EXPECT_EQ(house->Get(Address(Session()) + "/entries?offset=9").Json()["items"], json::array());
}

TEST_F(HouseSessionsTest, WhoMissedSomethingAsksForWhatIsNewer) {
    PlayInRoom1();
    const json known = House();
    EXPECT_EQ(known["all"], true);
    const std::string query = "?since=" + known["revision"].dump();
    EXPECT_EQ(House(query)["sessions"], json::array());
    house->Command("PAUSE", {{"ROOM_ID", 1}});
    const json newer = House(query);
    EXPECT_EQ(newer["all"], false);
    ASSERT_EQ(newer["sessions"].size(), 1U);
    EXPECT_EQ(newer["sessions"][0]["state"], "paused");
    EXPECT_EQ(newer["rooms"], json::array());
    EXPECT_GT(newer["revision"], known["revision"]);
    EXPECT_EQ(House("?since=1")["all"], true) << "of another run";
}

TEST_F(HouseSessionsTest, AChangeIsOneEventWithWhatHasChanged) {
    PlayInRoom1();
    loop.RunReady();
    events.clear();
    house->Command("PAUSE", {{"ROOM_ID", 1}});
    ASSERT_TRUE(Told({{"type", "house"}}));
    json told = json::array();
    for (const json& event : events)
        if (event["type"] == "house")
            told.push_back(event);
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0]["sessions"], json::array({Session()}));
    EXPECT_EQ(told[0]["rooms"], json::array());
    EXPECT_EQ(told[0]["revision"], House()["revision"]);
}

TEST_F(HouseSessionsTest, WhatIsNotThereIsSaid) {
    EXPECT_EQ(house->Get("/api/sessions/7").status, 404);
    EXPECT_EQ(house->Get("/api/sessions/x/entries").status, 404);
    EXPECT_EQ(house->Get("/api/house?since=yesterday").status, 400);
}

} // namespace
} // namespace korvel::controller
