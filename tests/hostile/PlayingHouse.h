// A house with all its programs.
#pragma once

#include <filesystem>

#include "Bed.h"
#include "HouseProcess.h"
#include "library/MediaDatabase.h"

namespace korvel::tests {

// One room, "Hall", and in the library songs of long tones.
class PlayingHouse : public Bed {
protected:
    static constexpr int kTone = 500;
    static constexpr int kOtherTone = 1000;

    PlayingHouse() { std::filesystem::create_directory(PathOf("state")); }

    // Puts a song of that place into the library, which finds none by itself, and returns its id. Before Open().
    std::uint32_t AddSong(const std::string& location) {
        media::SongRecord song;
        song.title = "Song " + std::to_string(++m_songs);
        song.location = location;
        return Library().PutSong(song);
    }
    std::uint32_t AddTone(int hertz) {
        const std::string name = std::to_string(hertz) + ".wav";
        return AddSong(ToneFile(name, {{hertz, 60}}));
    }
    media::MediaDatabase Library() { return media::MediaDatabase(PathOf("state/media.db")); }

    // Starts the controller, with these settings besides.
    void Open(const std::string& more = "") {
        m_house = std::make_unique<HouseProcess>(
            PathOf(""), more + "[[server]]\nport = " + std::to_string(ServerPort()) +
                            "\n[[room]]\nid = 1\nname = \"Hall\"\nport = " + std::to_string(m_hall->Port()));
    }
    // The same, with a song that plays.
    void OpenAndPlay(const std::string& more = "") {
        const auto song = AddTone(kTone);
        Open(more);
        ASSERT_TRUE(m_house->IsReady()) << m_house->Log();
        ASSERT_EQ(Play(song), 200);
        ASSERT_TRUE(m_hall->Hears(kTone, 0.5)) << m_house->Log();
    }
    int Play(std::uint32_t song) {
        return m_house->Command("ADD_SONG", {{"ROOM_ID", 1}, {"MEDIA_ID", song}}).status;
    }
    std::string Queue() {
        const nlohmann::json asked = {{"name", "GET_QUEUE_INFO"}, {"parameters", {{"ROOM_ID", 1}}}};
        return m_house->Post("/api/request", asked).body.dump();
    }
    bool IsInServerLog(const std::string& text) { return Server().Errors().find(text) != std::string::npos; }

    const std::unique_ptr<Room> m_hall = AddRoom("hall");
    std::unique_ptr<HouseProcess> m_house;

private:
    int m_songs = 0;
};

} // namespace korvel::tests
