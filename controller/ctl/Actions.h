#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "ctl/Client.h"

namespace korvel::ctl {

// What korvelctl can do: each operation prints its result to `out` and throws Failure with one line
// otherwise. A room is named by its id or its name, a song by its id or its title.
class Actions {
public:
    Actions(Client& client, std::ostream& out) : m_client(client), m_out(out) {}

    void Rooms();
    void Status();
    void Search(const std::string& text);
    // Replaces what the room's queue holds and plays, or with `add` puts the songs at its end.
    void Play(const std::string& room, const std::vector<std::string>& songs, bool add);
    // Replace what the room hears by a station, a line input or a saved playlist, each named by its id or
    // name. The first waits until the station is heard, and fails with the audio server's reason when it is not.
    void PlayStation(const std::string& room, const std::string& station);
    void PlayInput(const std::string& room, const std::string& input);
    void PlayPlaylist(const std::string& room, const std::string& playlist);
    // A command that takes nothing but the room.
    void Transport(const std::string& command, const std::string& room);
    // The others hear what the room hears. Fails, too, when one of them does not in the end.
    void Join(const std::string& room, const std::vector<std::string>& others);
    // Plays the file once in the rooms, over whatever they hear, and returns when it has been heard.
    void Announce(const std::string& file, const std::vector<std::string>& rooms);
    void Command(const std::string& name, const std::vector<std::string>& parameters);
    void Request(const std::string& name, const std::vector<std::string>& parameters);
    void Watch();

private:
    void StorageStatus(const nlohmann::json& storage);
    std::string RoomId(const std::string& room);
    std::string SongId(const std::string& song);
    // Throws when the song's file is gone.
    void RequireFile(const std::string& songId);
    // The id of what the library lists under `list` with this id or name.
    std::string ListedId(const std::string& list, const std::string& what, const std::string& wanted);
    void PlayListed(const std::string& command, nlohmann::json parameters);
    // The parameters with rooms that are named by name.
    nlohmann::json Resolve(const std::vector<std::string>& words);
    std::string Run(const std::string& name, const nlohmann::json& parameters);

    Client& m_client;
    std::ostream& m_out;
};

// {"KEY": "VALUE", ...} of the words KEY=VALUE. Throws Failure for a word without a key.
nlohmann::json ParseParameters(const std::vector<std::string>& words);

// The text of a "MEDIA" parameter that holds these songs of the database.
std::string SongListXml(const std::vector<std::string>& songIds);

} // namespace korvel::ctl
