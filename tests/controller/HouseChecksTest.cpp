// What changes nothing is refused with the reason, with the real driver.
#include "HouseWithDriver.h"

namespace korvel::controller {
namespace {

using nlohmann::json;

class HouseChecksTest : public HouseWithDriver {
protected:
    // The answer to a command that is refused: "STATUS reason".
    std::string Refusal(const std::string& name, const json& parameters) {
        const RawReply reply = house->Command(name, parameters);
        return std::to_string(reply.status) + " " + reply.Json().value("error", "");
    }
    int Status(const std::string& name, const json& parameters) {
        return house->Command(name, parameters).status;
    }
};

TEST_F(HouseChecksTest, ARoomWithoutAQueueHasNothingToDoItTo) {
    const json kitchen = {{"ROOM_ID", 2}};
    EXPECT_EQ(Refusal("PLAY", kitchen), "409 Kitchen has nothing to resume");
    EXPECT_EQ(Refusal("PAUSE", kitchen), "409 Kitchen plays nothing that could be paused");
    EXPECT_EQ(Refusal("STOP", kitchen), "409 Kitchen plays nothing that could be stopped");
    EXPECT_EQ(Refusal("SKIP_FWD", kitchen), "409 Kitchen plays nothing");
    EXPECT_EQ(Refusal("SKIP_REV", kitchen), "409 Kitchen plays nothing");
    EXPECT_EQ(Refusal("REMOVE", kitchen), "409 Kitchen hears nothing that it could leave");
    EXPECT_EQ(Refusal("REMOVE_QUEUE", kitchen), "409 Kitchen hears nothing that it could leave");
    EXPECT_EQ(Refusal("REQUEST_CURRENT_MEDIA_INFO", kitchen), "409 Kitchen plays nothing");
    EXPECT_EQ(Refusal("SAVE_PLAYLIST", {{"ROOM_ID", 2}, {"NAME", "Evening"}}),
              "409 Kitchen has no songs that could be saved");
    EXPECT_EQ(Refusal("EDIT_QUEUE", {{"ROOM_ID", 2}, {"MEDIA", "<MEDIA></MEDIA>"}}),
              "409 Kitchen has no queue");
    EXPECT_EQ(Refusal("GO_TO_SONG", {{"ROOM_ID", 2}, {"MEDIA_ID", 1050}}), "409 Kitchen has no queue");
    EXPECT_EQ(Refusal("REMOVE_SONG", {{"ROOM_ID", 2}, {"MEDIA_ID", 1050}}), "409 Kitchen has no queue");
}

TEST_F(HouseChecksTest, ARoomThatIsNotThereIsNotFound) {
    for (const char* name : {"PLAY", "PAUSE", "STOP", "SKIP_FWD", "SKIP_REV", "REMOVE"})
        EXPECT_EQ(Refusal(name, {{"ROOM_ID", 9}}),
                  "404 " + std::string(name) + " needs ROOM_ID, the id of a room; '9' is none");
}

TEST_F(HouseChecksTest, WhatIsSoAlreadyIsRefused) {
    PlayInRoom1();
    const json room = {{"ROOM_ID", 1}};
    EXPECT_EQ(Refusal("PLAY", room), "409 Living room plays already");
    EXPECT_EQ(Status("PAUSE", room), 200);
    EXPECT_EQ(Refusal("PAUSE", room), "409 Living room is paused already");
    EXPECT_EQ(Status("PLAY", room), 200);
    EXPECT_EQ(Status("STOP", room), 200);
    EXPECT_EQ(Refusal("STOP", room), "409 Living room is stopped already");
    EXPECT_EQ(Refusal("PAUSE", room), "409 Living room plays nothing that could be paused");
    EXPECT_EQ(Status("PLAY", room), 200);
}

TEST_F(HouseChecksTest, AtAnEndOfTheQueueThereIsNoSongToSkipTo) {
    PlayInRoom1();
    Add(1, kFirstSong + 1);
    EXPECT_EQ(Status("SKIP_FWD", {{"ROOM_ID", 1}}), 200);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Refusal("SKIP_FWD", {{"ROOM_ID", 1}}),
                  "409 there is no song after this one in the queue of Living room");
    }
}

TEST_F(HouseChecksTest, ASongThatTheQueueDoesNotHoldCannotBeReachedOrRemoved) {
    PlayInRoom1();
    EXPECT_EQ(Refusal("GO_TO_SONG", {{"ROOM_ID", 1}, {"MEDIA_ID", 1050}, {"MEDIA_INDEX", 1}}),
              "404 there is no song at 1: the queue of Living room has 1, the first is 0");
    EXPECT_EQ(Status("GO_TO_SONG", {{"ROOM_ID", 1}, {"MEDIA_ID", 1050}, {"MEDIA_INDEX", 0}}), 200);
    EXPECT_EQ(Refusal("GO_TO_SONG", {{"ROOM_ID", 1}, {"MEDIA_ID", 1051}}),
              "404 the queue of Living room does not hold 1051");
    EXPECT_EQ(Refusal("REMOVE_SONG", {{"ROOM_ID", 1}, {"MEDIA_ID", 1051}}),
              "404 the queue of Living room does not hold 1051");
    EXPECT_EQ(Status("REMOVE_SONG", {{"ROOM_ID", 1}, {"MEDIA_ID", 1050}}), 200);
}

TEST_F(HouseChecksTest, WhatTheLibraryDoesNotHaveIsNotFound) {
    const auto add = [this](const char* name, int id) {
        return Refusal(name, {{"ROOM_ID", 1}, {"MEDIA_ID", id}});
    };
    EXPECT_EQ(add("ADD_SONG", 77), "404 there is no song 77");
    EXPECT_EQ(add("ADD_IR_STREAM", 77), "404 there is no station 77");
    EXPECT_EQ(add("ADD_ALBUM_MP3", 77), "404 there is no album 77");
    EXPECT_EQ(add("ADD_PLAYLIST", 77), "404 there is no playlist 77");
    EXPECT_EQ(add("DELETE_PLAYLIST", 77), "404 there is no playlist 77");
    EXPECT_EQ(Refusal("QUEUE_ALL", {{"ROOM_ID", 1}, {"ARTIST", "Nobody"}}),
              "404 there was nothing to add to the queue of Living room");
    EXPECT_EQ(Refusal("ADD_ALBUM_LIST", {{"ROOM_ID", 1}, {"MEDIA", "<albums><id>77</id></albums>"}}),
              "409 Living room got no songs: none of the albums has any");
    house->GetCore().GetLibrary().Database().PutPlaylist(3, 0, "Evening", {});
    EXPECT_EQ(add("ADD_PLAYLIST", 3), "409 the playlist 'Evening' is empty");
    EXPECT_FALSE(server.Heard("addstr"));
}

TEST_F(HouseChecksTest, RoomsThatHearItAlreadyDoNotJoin) {
    EXPECT_EQ(Refusal("ADD_ROOMS_TO_SESSION", {{"ROOM_ID", 1}, {"ROOM_ID_LIST", "2"}}),
              "409 Living room plays nothing that others could join");
    PlayInRoom1();
    EXPECT_EQ(Refusal("ADD_ROOMS_TO_SESSION", {{"ROOM_ID", 1}, {"ROOM_ID_LIST", "2,9"}}),
              "404 there is no room 9");
    EXPECT_EQ(Refusal("REMOVE_ROOMS_FROM_SESSION", {{"ROOM_ID", 1}, {"ROOM_ID_LIST", "2"}}),
              "409 none of them hears what Living room hears");
    EXPECT_EQ(Status("ADD_ROOMS_TO_SESSION", {{"ROOM_ID", 1}, {"ROOM_ID_LIST", "2"}}), 200);
    EXPECT_EQ(Refusal("ADD_ROOMS_TO_SESSION", {{"ROOM_ID", 1}, {"ROOM_ID_LIST", "2"}}),
              "409 that is what they hear already");
    EXPECT_EQ(Refusal("JOIN", {{"ROOM_ID", 1}, {"JOIN_ID", 1}}), "400 a room cannot join itself");
    EXPECT_EQ(Refusal("JOIN", {{"ROOM_ID", 1}, {"QUEUE_ID", 7}}), "404 there is no queue 7");
}

TEST_F(HouseChecksTest, ACommandThatLacksAParameterSaysWhich) {
    PlayInRoom1();
    EXPECT_EQ(Refusal("GO_TO_SONG", {{"ROOM_ID", 1}}), "400 GO_TO_SONG needs MEDIA_ID");
    EXPECT_EQ(Refusal("SAVE_PLAYLIST", {{"ROOM_ID", 1}}), "400 SAVE_PLAYLIST needs NAME");
    EXPECT_EQ(Refusal("QUEUE_ALL", {{"ROOM_ID", 1}}), "400 QUEUE_ALL needs ARTIST, GENRE or both");
    EXPECT_EQ(Refusal("ADD_IR_STREAM", {{"ROOM_ID", 1}}), "400 ADD_IR_STREAM needs MEDIA_ID or MEDIA");
    EXPECT_EQ(Refusal("ADD_SONG_LIST", {{"ROOM_ID", 1}, {"MEDIA", "<MEDIA>"}}),
              "400 MEDIA of ADD_SONG_LIST is not well-formed");
    EXPECT_EQ(Refusal("SET_PLAY_PREFERENCE", json::object()), "400 SET_PLAY_PREFERENCE needs PLAY_PREF");
}

TEST_F(HouseChecksTest, ACommandAskedAsARequestIsCheckedToo) {
    const RawReply reply = house->Post("/api/request", R"({"name":"PAUSE","parameters":{"ROOM_ID":"1"}})");
    EXPECT_EQ(reply.status, 409);
}

TEST_F(HouseChecksTest, TheHouseLearnsWhyMediaCannotBePlayed) {
    server.EndMedia("BAD", "No such file or directory");
    Add(1);
    EXPECT_TRUE(Told({{"type", "media"}, {"state", "failed"}, {"reason", "No such file or directory"}}));
}

TEST_F(HouseChecksTest, APlaylistOfTheSameTitleIsReplaced) {
    const auto save = [this](const json& body) {
        return house->Post("/api/library/save-playlist", body.dump());
    };
    const RawReply first = save({{"title", "Evening"}, {"songs", {1050}}});
    EXPECT_EQ(first.status, 200);
    EXPECT_EQ(save({{"title", "Evening"}, {"songs", {1051, 1052}}}).Json(), first.Json());
    const json lists = house->Get("/api/library/playlists").Json();
    EXPECT_EQ(lists["total"], 1);
    EXPECT_EQ(lists["items"][0]["items"], 2);
    EXPECT_EQ(Status("ADD_PLAYLIST", {{"ROOM_ID", 1}, {"MEDIA_ID", first.Json()["id"]}}), 200);
    EXPECT_TRUE(Hears("addmed 1 \"file://music/1.flac\""));
}

TEST_F(HouseChecksTest, APlaylistOfNothingIsRefused) {
    const auto save = [this](const json& body) {
        return house->Post("/api/library/save-playlist", body.dump()).status;
    };
    EXPECT_EQ(save({{"title", "Evening"}, {"songs", json::array()}}), 400);
    EXPECT_EQ(save({{"title", "Evening"}, {"songs", {77}}}), 404);
    EXPECT_EQ(save({{"title", "a\nb"}, {"songs", {1050}}}), 400);
    EXPECT_EQ(save({{"songs", {1050}}}), 400);
    EXPECT_EQ(house->Get("/api/library/save-playlist").status, 405);
}

} // namespace
} // namespace korvel::controller
