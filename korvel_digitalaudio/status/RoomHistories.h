#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <string>

#include "platform/Xml.h"

// A playlist that was loaded or saved in a room.
struct AHistory {
    std::string name;
    std::uint32_t playlistId = 0;
};

// The playlists used last in each room, newest first. A playlist occurs at most once in a room's list, and a
// list holds at most kMaxEntries.
class RoomHistories {
public:
    static constexpr std::size_t kMaxEntries = 9;

    // Puts the playlist first in the room's list, under this name.
    void AddPlaylistToHistory(std::uint32_t roomId, std::uint32_t playlistId, const std::string& name);
    // Appends a "history" element per room to `parent`, in ascending room id.
    void HistoryToXml(KVXML::INode& parent) const;
    // A "playlists" element for the room, or null when it has no history.
    kv::auto_com<KVXML::INode> HistoryToXml(std::uint32_t roomId) const;

private:
    std::map<std::uint32_t, std::list<AHistory>> m_rooms;
};
