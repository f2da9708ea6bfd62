// Stations, line inputs and playlists, with the real driver.
#include "HouseWithDriver.h"

namespace korvel::controller {
namespace {

using nlohmann::json;

constexpr std::uint32_t kTurntable = 120001;
constexpr std::uint32_t kTape = 120002;
constexpr std::uint32_t kDriver = 100002;

class HouseSourcesTest : public HouseWithDriver {
protected:
    void Adjust(Config& config) override {
        config.stations = {{"Night Jazz", "http://radio.example/jazz", "Jazz", ""},
                           {"News", "http://radio.example/news", "", ""}};
        config.inputs = inputs;
        config.rooms.push_back({3, "Bath", "127.0.0.1", 6204, 1});
    }

    std::uint32_t IdOf(const std::string& list, const std::string& name) {
        const json found = house->Get("/api/library/" + list).Json();
        for (const json& item : found["items"]) {
            if (item.value("name", item.value("title", "")) == name)
                return item["id"];
        }
        return 0;
    }
    void PlayInput(std::uint32_t room, const std::string& name) {
        ASSERT_EQ(
            house->Command("ADD_ALBUM_MP3", {{"ROOM_ID", room}, {"MEDIA_ID", IdOf("inputs", name)}}).status,
            200);
    }
    std::uint32_t SourceOf(std::uint32_t room) { return house->Room(room)["source"]; }

    std::vector<std::string> inputs = {"Turntable", "Tape"};
};

TEST_F(HouseSourcesTest, AStationPlays) {
    house->Command("ADD_IR_STREAM", {{"ROOM_ID", 1}, {"MEDIA_ID", IdOf("stations", "News")}});
    EXPECT_TRUE(Hears("addmed 1 \"file:/stream-http://radio.example/news\""));
    server.Send("* SYS STREAM=1 streamInfo:Ensemble - A Song\r\n");
    EXPECT_TRUE(loop.RunUntil([&] {
        return house->Room(1)["mediaInfo"].get<std::string>().find("A Song") != std::string::npos;
    })) << house->Room(1);
}

TEST_F(HouseSourcesTest, AStationTakesTheMusicsPlace) {
    PlayInRoom1();
    house->Command("ADD_IR_STREAM", {{"ROOM_ID", 1}, {"MEDIA_ID", IdOf("stations", "Night Jazz")}});
    EXPECT_TRUE(Hears("addmed 1 \"file:/stream-http://radio.example/jazz\""));
    EXPECT_EQ(SourceOf(1), kDriver);
}

TEST_F(HouseSourcesTest, AnInputPlaysAndIsTheRoomsSource) {
    PlayInput(1, "Tape");
    EXPECT_TRUE(Hears("addcli 1 127.0.0.1 6200"));
    EXPECT_TRUE(Hears("addmed 1 Tape"));
    EXPECT_EQ(SourceOf(1), kTape);
    EXPECT_EQ(house->Get("/api/library/inputs").Json()["items"][1],
              (json{{"id", IdOf("inputs", "Tape")}, {"name", "Tape"}, {"device", kTape}}));
    EXPECT_EQ(house->Get("/api/library/albums/" + std::to_string(IdOf("inputs", "Tape"))).Json()["input"],
              "Tape");
}

TEST_F(HouseSourcesTest, AnInputTakesTheMusicsPlaceAndMusicTheInputs) {
    PlayInRoom1();
    PlayInput(1, "Turntable");
    EXPECT_TRUE(Hears("remstr 1"));
    EXPECT_TRUE(Hears("addmed 2 Turntable"));
    EXPECT_EQ(SourceOf(1), kTurntable);
    Add(1, kFirstSong + 1);
    EXPECT_TRUE(Hears("addmed 3 \"file://music/1.flac\""));
    EXPECT_EQ(SourceOf(1), kDriver);
    EXPECT_TRUE(house->IsRouted(1));
}

TEST_F(HouseSourcesTest, RoomsThatPlayOneInputHearOneQueue) {
    PlayInput(1, "Turntable");
    ASSERT_TRUE(Hears("addmed 1 Turntable"));
    PlayInput(2, "Turntable");
    EXPECT_TRUE(Hears("addcli 1 127.0.0.1 6202"));
    EXPECT_EQ(QueueOf(2), QueueOf(1));
    EXPECT_NE(QueueOf(1), 0u);
    EXPECT_EQ(SourceOf(2), kTurntable);
}

TEST_F(HouseSourcesTest, RoomsThatJoinTakeTheSourceOfTheOthers) {
    PlayInput(1, "Turntable");
    ASSERT_TRUE(Hears("addmed 1 Turntable"));
    house->Post("/api/rooms/2/select", R"({"join":1})");
    house->Post("/api/rooms/3/select", R"({"join":1})");
    EXPECT_EQ(QueueOf(2), QueueOf(1));
    EXPECT_EQ(QueueOf(3), QueueOf(1));
    EXPECT_EQ(SourceOf(2), kTurntable);
    EXPECT_EQ(SourceOf(3), kTurntable);
    house->Post("/api/rooms/2/deselect", "");
    EXPECT_EQ(SourceOf(2), 0u);
    EXPECT_EQ(SourceOf(1), kTurntable);
}

TEST_F(HouseSourcesTest, StationsAndInputsKeepTheirIdsOverRestarts) {
    const std::uint32_t news = IdOf("stations", "News");
    const std::uint32_t tape = IdOf("inputs", "Tape");
    inputs = {"Tape"};
    Restart();
    EXPECT_EQ(IdOf("stations", "News"), news);
    EXPECT_EQ(IdOf("inputs", "Tape"), tape);
    EXPECT_EQ(IdOf("inputs", "Turntable"), 0u);
    EXPECT_EQ(house->Get("/api/library/inputs").Json()["total"], 1);
}

TEST_F(HouseSourcesTest, ASavedPlaylistPlays) {
    PlayInRoom1();
    house->Command("SAVE_PLAYLIST", {{"ROOM_ID", 1}, {"NAME", "Evening"}});
    house->Command("ADD_PLAYLIST", {{"ROOM_ID", 2}, {"MEDIA_ID", IdOf("playlists", "Evening")}});
    EXPECT_TRUE(Hears("addmed 2 \"file://music/0.flac\""));
    EXPECT_TRUE(house->IsRouted(2));
}

} // namespace
} // namespace korvel::controller
