// The routing of rooms, with the real driver.
#include "HouseWithDriver.h"

namespace korvel::controller {
namespace {

using nlohmann::json;

class HouseTest : public HouseWithDriver {};

TEST_F(HouseTest, TheDriverResetsAServerThatConnects) {
    EXPECT_TRUE(Hears("reset"));
}

TEST_F(HouseTest, ASongThatIsAddedIsHeardInItsRoom) {
    const RawReply reply = Add(1);
    EXPECT_EQ(reply.Json(), (json{{"return", "<queueid>10000</queueid>"}}));
    // The answer to the command comes when the room is routed.
    EXPECT_EQ(QueueOf(1), 10000u);
    EXPECT_FALSE(house->IsRouted(2));
    EXPECT_TRUE(Hears("addstr"));
    EXPECT_TRUE(Hears("addcli 1 127.0.0.1 6200"));
    EXPECT_TRUE(Hears("addmed 1 \"file://music/0.flac\""));
    const json room = house->Room(1);
    EXPECT_EQ(room["media"]["title"], "Song 0");
    EXPECT_EQ(room["queue"], 10000);
}

TEST_F(HouseTest, EveryCommandThatFillsAQueueRoutesItsRoom) {
    const json list = {{"ROOM_ID", 1}, {"MEDIA", "<MEDIA><MEDIA_ID>1051</MEDIA_ID></MEDIA>"}};
    const std::vector<std::pair<std::string, json>> commands = {
        {"ADD_SONG_LIST", list},
        {"ADD_ALBUM_MP3", {{"ROOM_ID", 1}, {"MEDIA_ID", 5}}},
        {"ADD_ALBUM_LIST", {{"ROOM_ID", 1}, {"MEDIA", "<albums><id>5</id></albums>"}}},
        {"QUEUE_ALL", {{"ROOM_ID", 1}, {"ARTIST", "Ann"}}},
    };
    for (const auto& [name, parameters] : commands) {
        EXPECT_EQ(house->Command(name, parameters).status, 200) << name;
        EXPECT_TRUE(house->IsRouted(1)) << name;
        house->Post("/api/rooms/1/off", "");
        EXPECT_FALSE(house->IsRouted(1)) << name;
    }
}

TEST_F(HouseTest, ACommandAskedAsARequestRoutesItsRoomToo) {
    const RawReply reply =
        house->Post("/api/request", R"({"name":"ADD_SONG","parameters":{"ROOM_ID":"1","MEDIA_ID":"1050"}})");
    EXPECT_EQ(reply.Json()["reply"], "<queueid>10000</queueid>");
    EXPECT_TRUE(loop.RunUntil([&] { return QueueOf(1) == 10000; }));
}

TEST_F(HouseTest, ACommandThatAddsNothingRoutesNothing) {
    house->Command("QUEUE_ALL", {{"ROOM_ID", 1}, {"ARTIST", "Nobody"}});
    house->Command("ADD_ALBUM_MP3", {{"ROOM_ID", 1}, {"MEDIA_ID", 77}});
    house->Command("PLAY", {{"ROOM_ID", 1}});
    EXPECT_FALSE(house->IsRouted(1));
    EXPECT_FALSE(server.Heard("addstr"));
}

TEST_F(HouseTest, ARoomThatIsNotThereGetsNoQueue) {
    EXPECT_EQ(Add(9).status, 404);
    EXPECT_EQ(house->Command("ADD_SONG", {{"MEDIA_ID", 1050}}).status, 404);
    const std::string status = house->Command("GET_QUEUE_STATUSV2", json::object()).Json()["return"];
    EXPECT_EQ(status, "<queues></queues>");
}

TEST_F(HouseTest, AnotherSongInARoomThatPlaysGoesToTheSameQueue) {
    PlayInRoom1();
    EXPECT_EQ(Add(1, kFirstSong + 1).Json()["return"], "<queueid>10000</queueid>");
    server.Send("* addmed EOM=1\r\n");
    EXPECT_TRUE(Hears("addmed 1 \"file://music/1.flac\""));
    EXPECT_EQ(house->Room(1)["media"]["title"], "Song 1");
}

TEST_F(HouseTest, ARoomJoinsAnotherOne) {
    PlayInRoom1();
    const RawReply joined = house->Post("/api/rooms/2/select", R"({"join":1})");
    EXPECT_EQ(joined.status, 200);
    EXPECT_EQ(joined.Json()["queue"], 10000);
    EXPECT_EQ(joined.Json()["media"]["title"], "Song 0");
    EXPECT_TRUE(Hears("addcli 1 127.0.0.1 6202"));
}

TEST_F(HouseTest, ARoomLeavesItsQueueForTheOneItJoins) {
    PlayInRoom1();
    Add(2, kFirstSong + 1);
    ASSERT_EQ(QueueOf(2), 10001u);
    ASSERT_TRUE(Hears("addmed 2 \"file://music/1.flac\""));
    EXPECT_EQ(house->Command("ADD_ROOMS_TO_SESSION", {{"ROOM_ID", 1}, {"ROOM_ID_LIST", "2"}}).status, 200);
    EXPECT_EQ(QueueOf(2), 10000u);
    EXPECT_TRUE(Hears("remstr 2"));
    EXPECT_TRUE(Hears("addcli 1 127.0.0.1 6202"));
}

TEST_F(HouseTest, TheCommandJoinRoutesTheRoomThatAsked) {
    PlayInRoom1();
    Add(2, kFirstSong + 1);
    EXPECT_EQ(house->Command("JOIN", {{"ROOM_ID", 2}, {"JOIN_ID", 1}}).Json()["return"],
              "<queueid>10000</queueid>");
    EXPECT_EQ(QueueOf(2), 10000u);
}

TEST_F(HouseTest, ARoomThatPlaysNothingCannotBeJoined) {
    const RawReply reply = house->Post("/api/rooms/2/select", R"({"join":1})");
    EXPECT_EQ(reply.status, 409);
    EXPECT_EQ(reply.Json()["error"], "Living room plays nothing that Kitchen could join");
    EXPECT_EQ(house->Post("/api/rooms/2/select", R"({"join":9})").status, 404);
}

TEST_F(HouseTest, ARoomSelectsAQueueById) {
    PlayInRoom1();
    EXPECT_EQ(house->Post("/api/rooms/2/select", R"({"queue":10000})").status, 200);
    EXPECT_EQ(QueueOf(2), 10000u);
    EXPECT_EQ(house->Post("/api/rooms/2/select", R"({"queue":10007})").status, 404);
    EXPECT_EQ(QueueOf(2), 10000u) << "it keeps what it has";
}

TEST_F(HouseTest, ARoomThatLeavesHearsNothing) {
    PlayInRoom1();
    house->Post("/api/rooms/2/select", R"({"join":1})");
    EXPECT_EQ(house->Command("REMOVE", {{"ROOM_ID", 2}}).status, 200);
    EXPECT_FALSE(house->IsRouted(2));
    EXPECT_TRUE(house->IsRouted(1));
    EXPECT_TRUE(Hears("remcli 1 127.0.0.1 6202"));
}

TEST_F(HouseTest, TheLastRoomThatIsDeselectedTakesTheStreamWithIt) {
    PlayInRoom1();
    const RawReply reply = house->Post("/api/rooms/1/deselect", "");
    EXPECT_EQ(reply.Json()["routed"], false);
    EXPECT_TRUE(reply.Json()["media"].is_null());
    EXPECT_TRUE(Hears("remstr 1"));
    // And the next command starts anew.
    EXPECT_EQ(Add(1).Json()["return"], "<queueid>10001</queueid>");
    EXPECT_EQ(QueueOf(1), 10001u);
    EXPECT_TRUE(Hears("addmed 2 \"file://music/0.flac\""));
}

TEST_F(HouseTest, RemoveQueueTakesAllItsRooms) {
    PlayInRoom1();
    house->Post("/api/rooms/2/select", R"({"join":1})");
    house->Command("REMOVE_QUEUE", {{"ROOM_ID", 1}});
    EXPECT_FALSE(house->IsRouted(1));
    EXPECT_FALSE(house->IsRouted(2));
    EXPECT_TRUE(Hears("remstr 1"));
}

TEST_F(HouseTest, ASongThatTheServerRefusesEmptiesTheRoom) {
    PlayInRoom1();
    server.Send("* addmed BAD=1 no such file\r\n");
    EXPECT_TRUE(NotRouted(1));
}

TEST_F(HouseTest, AQueueAtItsEndIsClearedAfterTheSetDelay) {
    house->Command("SET_PLAYLIST_CLEAR_DELAY", {{"DELAY_VALUE", 0}}); // at once, in a tenth of a second
    PlayInRoom1();
    server.Send("* addmed EOM=1\r\n");
    EXPECT_TRUE(NotRouted(1));
    EXPECT_TRUE(Hears("remstr 1"));
}

TEST_F(HouseTest, TheEndOfAQueueIsAnEventForEachRoom) {
    PlayInRoom1();
    house->Post("/api/rooms/2/select", R"({"join":1})");
    server.Send("* addmed EOM=1\r\n");
    EXPECT_TRUE(Told({{"type", "message"}, {"room", 1}, {"name", "QUEUE_ENDED"}}));
    EXPECT_TRUE(Told({{"type", "message"}, {"room", 2}, {"name", "QUEUE_ENDED"}}));
}

TEST_F(HouseTest, AQueueHasItsRoomsName) {
    PlayInRoom1();
    const std::string status = Variable("QUEUE_STATUS_V2");
    EXPECT_NE(status.find("Living room"), std::string::npos) << status;
}

TEST_F(HouseTest, TransportCommandsReachTheServer) {
    PlayInRoom1();
    house->Command("PAUSE", {{"ROOM_ID", 1}});
    EXPECT_TRUE(Hears("setsta 1 pause"));
    house->Command("PLAY", {{"ROOM_ID", 1}});
    EXPECT_TRUE(Hears("setsta 1 play"));
}

TEST_F(HouseTest, ErrorsForPeopleAreEvents) {
    server.Send("* SYS STREAM=1 ERROR:disk\r\n");
    EXPECT_TRUE(loop.RunUntil([&] { return lastUi.find("Stream Error: disk") != std::string::npos; }));
}

TEST_F(HouseTest, AnyBytesOfAServerAreSurvived) {
    PlayInRoom1();
    std::string noise;
    for (int i = 0; i < 4096; ++i)
        noise.push_back(static_cast<char>((i * 37 + 11) % 256));
    server.Send(noise + "\r\n\n\r\n* \r\n* a b=1\r\n1 OK\r\n" + noise + "\n");
    server.Send("* addmed EOM=1\r\n");
    EXPECT_TRUE(loop.RunUntil([&] { return server.Heard("eos"); }));
    EXPECT_EQ(Add(1, kFirstSong + 2).status, 200);
}

TEST_F(HouseTest, TheFamilyOfServersGrowsWithTheConfiguration) {
    ScriptedServer second(loop);
    ScratchFolder folder;
    TestHouse other(loop, KORVEL_DRIVER, {server.GetPort(), second.GetPort()}, folder);
    EXPECT_TRUE(loop.RunUntil([&] { return second.Heard("reset"); }));
    const json servers = other.Get("/api/status").Json()["servers"];
    EXPECT_EQ(servers[1]["binding"], 3001);
    EXPECT_EQ(servers[1]["connected"], true);
    EXPECT_EQ(servers[1]["problem"], "");
}

} // namespace
} // namespace korvel::controller
