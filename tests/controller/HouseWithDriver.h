#pragma once

#include <algorithm>

#include "TestHouse.h"

namespace korvel::controller {

// A core with the real driver, an audio server that follows a script and a few songs.
class HouseWithDriver : public testing::Test {
protected:
    void StartHouse() {
        house = std::make_unique<TestHouse>(loop, KORVEL_DRIVER, std::vector{server.GetPort()}, state, "",
                                            [this](Config& config) { Adjust(config); });
        ASSERT_TRUE(Ready());
        house->GetCore().GetEvents().Add([this](const auto& text) {
            events.push_back(nlohmann::json::parse(*text));
            if (events.back()["type"] == "ui")
                lastUi = events.back()["xml"];
        });
        for (std::uint32_t i = 0; i < 3; ++i) {
            media::SongRecord song;
            song.id = kFirstSong + i;
            song.title = "Song " + std::to_string(i);
            song.artist = "Ann";
            song.genre = "Jazz";
            song.location = "/music/" + std::to_string(i) + ".flac";
            house->GetCore().GetLibrary().Database().PutSong(song);
        }
        media::AlbumRecord album;
        album.id = 5;
        album.title = "Songs";
        album.songs = {kFirstSong, kFirstSong + 1};
        house->GetCore().GetLibrary().Database().PutAlbum(album);
    }
    void SetUp() override { StartHouse(); }
    virtual void Adjust(Config&) {}
    void Restart() {
        house->Stop();
        house.reset();
        StartHouse();
    }

    bool Ready() {
        return loop.RunUntil([&] { return house->GetCore().GetBindings().WhyNotReady().empty(); });
    }
    bool Hears(const std::string& line) {
        return loop.RunUntil([&] { return server.Heard(line); });
    }
    bool NotRouted(std::uint32_t room) {
        return loop.RunUntil([&] { return !house->GetCore().GetRooms().Find(room)->IsRouted(); });
    }
    // True when an event came that has all these members.
    bool Told(const nlohmann::json& members) {
        return loop.RunUntil([&] {
            return std::ranges::any_of(events, [&](const nlohmann::json& event) {
                return std::ranges::all_of(members.items(), [&](const auto& member) {
                    return event.contains(member.key()) && event[member.key()] == member.value();
                });
            });
        });
    }
    std::string Variable(const std::string& name) {
        for (const auto& [id, variable] : house->GetCore().GetVariables().All()) {
            if (variable.name == name)
                return variable.value;
        }
        return "no variable " + name;
    }
    RawReply Add(std::uint32_t room, std::uint32_t song = kFirstSong) {
        return house->Command("ADD_SONG", {{"ROOM_ID", room}, {"MEDIA_ID", song}});
    }
    std::uint32_t QueueOf(std::uint32_t room) { return house->GetCore().GetRooms().Find(room)->queueId; }
    // Adds a song in room 1 and waits until it plays.
    void PlayInRoom1() {
        ASSERT_EQ(Add(1).status, 200);
        ASSERT_TRUE(Hears("addmed 1 \"file://music/0.flac\""));
    }

    static constexpr std::uint32_t kFirstSong = 1050;

    std::vector<nlohmann::json> events;
    std::string lastUi; // the last item for user interfaces
    ScratchFolder state;
    TestLoop loop;
    ScriptedServer server{loop};
    std::unique_ptr<TestHouse> house;
};

} // namespace korvel::controller
