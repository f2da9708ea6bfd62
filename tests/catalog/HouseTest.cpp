// The driver, the controller's client and the gateway together; the audio server follows a script.
#include <nlohmann/json.hpp>

#include "Gateway.h"
#include "GatewayClient.h"
#include "TestHouse.h"
#include "platform/Utilities.h"

namespace korvel::controller {
namespace {

using nlohmann::json;

class CatalogHouse : public testing::Test {
protected:
    CatalogHouse() {
        Config config;
        config.rooms = {{1, "Living room", "127.0.0.1", 6200, 1}, {2, "Kitchen", "127.0.0.1", 6202, 1}};
        config.servers = {{"127.0.0.1", server.GetPort()}};
        config.stateFolder = state.Path();
        config.plugin = KORVEL_DRIVER;
        config.catalogAddress = gateway.Address();
        core = std::make_unique<Core>(loop.loop, config, log);
        core->GetEvents().Add([this](const auto& text) { events.push_back(json::parse(*text)); });
        core->Start();
        EXPECT_TRUE(loop.RunUntil([&] { return core->GetBindings().WhyNotReady().empty(); }));
    }

    void Command(const std::string& name,
                 const std::vector<std::pair<std::string, std::string>>& parameters) {
        const auto command = kv::CreateCmdMessage(name);
        for (const auto& [key, value] : parameters)
            command->AddParam(key, "STRING", value);
        core->GetCommands().Execute(*command);
    }
    bool Hears(const std::string& line) {
        return loop.RunUntil([&] { return server.Heard(line); });
    }
    // Whether a message of this name, with all of these in its parameters, comes to the room.
    bool Tells(std::uint32_t room, const std::string& name, const std::vector<std::string>& texts) {
        return loop.RunUntil([&] {
            return std::ranges::any_of(events, [&](const json& event) {
                return event.value("name", "") == name && event.value("room", 0u) == room &&
                       std::ranges::all_of(texts, [&](const std::string& text) {
                           return event.at("parameters")
                                      .dump(-1, ' ', false, json::error_handler_t::replace)
                                      .find(text) != std::string::npos;
                       });
            });
        });
    }

    tests::Folder folder;
    tests::Gateway gateway{folder.Write("c.toml", tests::TrackEntry("a") + tests::TrackEntry("b") +
                                                      tests::ListEntry("playlist", "p", "[\"b\", \"a\"]") +
                                                      tests::ListEntry("playlist", "q", "[]") +
                                                      tests::ListEntry("channel", "c", "[\"b\", \"a\"]"))};
    ScratchFolder state;
    TestLoop loop;
    ScriptedServer server{loop};
    common::Log log{common::LogLevel::Error, std::fopen("/dev/null", "w")};
    std::vector<json> events;
    std::unique_ptr<Core> core;
};

TEST_F(CatalogHouse, ATrackIsPlayedAndDescribed) {
    Command("ADD_SONG", {{"ROOM_ID", "1"}, {"MEDIA_ID", "a"}, {"SOURCE", "2"}});
    EXPECT_TRUE(Hears("addmed 1 \"rhap://1:a\""));
    EXPECT_TRUE(Tells(1, "UPDATE_MEDIA_INFO",
                      {"<mediaidV2>a</mediaidV2>", "<mediatypeV2>RHAPSODY</mediatypeV2>",
                       "<album>Album a</album>", "<artist>Artist a</artist>", "<title>Title a</title>"}));
}

TEST_F(CatalogHouse, AChannelIsPlayedAndItsPresentTrackDescribed) {
    tests::GatewayClient audioServer(gateway.Port());
    Command("ADD_SONG", {{"ROOM_ID", "1"}, {"MEDIA_ID", "c"}, {"SOURCE", "3"}});
    ASSERT_TRUE(Hears("addmed 1 \"rhap://1:channel-c\""));
    audioServer.Ask({{"op", "resolve"}, {"stream", 1}, {"media", "channel-c"}});
    EXPECT_TRUE(Tells(1, "UPDATE_MEDIA_INFO",
                      {"<mediatypeV2>RHAPSODY_CHANNEL</mediatypeV2>", "<mediaidV2>b</mediaidV2>",
                       "<stationid>c</stationid>", "<title>Title b</title>"}));
}

TEST_F(CatalogHouse, APlaylistFillsTheQueueWithItsTracks) {
    Command("ADD_SONG_LIST",
            {{"ROOM_ID", "2"}, {"MEDIA", "<MEDIA><SONG SOURCE=\"4\" ID=\"p\"></SONG></MEDIA>"}});
    EXPECT_TRUE(Hears("addmed 1 \"rhap://1:b\""));
    Command("SKIP_FWD", {{"ROOM_ID", "2"}});
    EXPECT_TRUE(Hears("addmed 1 \"rhap://1:a\""));
    EXPECT_TRUE(Tells(2, "UPDATE_MEDIA_INFO", {"<title>Title a</title>"}));
}

TEST_F(CatalogHouse, TheMembersPlaylistsComeToWhoeverAsked) {
    Command("GET_RHAPSODY_MY_PLAYLISTS", {{"deviceid", "2"}});
    const json data = {
        {"type", "data"},
        {"device", 2},
        {"xml",
         "<RhapsodyPlaylists><Playlist><PlaylistId>p</PlaylistId><Name>Name p</Name></Playlist>"
         "<Playlist><PlaylistId>q</PlaylistId><Name>Name q</Name></Playlist></RhapsodyPlaylists>"}};
    EXPECT_TRUE(loop.RunUntil([&] { return std::ranges::find(events, data) != events.end(); }));
}

TEST_F(CatalogHouse, TheDriverGoesOnWithoutACatalogue) {
    EXPECT_TRUE(gateway.Stop());
    Command("GET_RHAPSODY_MY_PLAYLISTS", {{"deviceid", "2"}});
    Command("ADD_SONG", {{"ROOM_ID", "1"}, {"MEDIA_ID", "a"}, {"SOURCE", "2"}});
    EXPECT_TRUE(Hears("addmed 1 \"rhap://1:a\""));
    core->Stop(); // with questions that nobody has answered
}

TEST(CatalogSetting, IsAnAddressWithAPort) {
    EXPECT_EQ(ParseConfig("", "f", "/").catalogAddress, "");
    EXPECT_EQ(ParseConfig("[catalog]\naddress = \"music.example:5556\"", "f", "/").catalogAddress,
              "music.example:5556");
    for (const std::string address : {"", "music.example", ":5555", "music.example:", "music.example:0",
                                      "music.example:65536", "music.example:x"})
        EXPECT_THROW(ParseConfig("[catalog]\naddress = \"" + address + "\"", "f", "/"), ConfigError)
            << address;
    EXPECT_THROW(ParseConfig("[catalog]\ncolour = 1\naddress = \"h:1\"", "f", "/"), ConfigError);
}

} // namespace
} // namespace korvel::controller
