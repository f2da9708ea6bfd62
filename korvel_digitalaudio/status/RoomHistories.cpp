#include "status/RoomHistories.h"

#include <algorithm>

#include "platform/XmlHelper.h"

namespace {

void AppendEntries(KVXML::INode& playlists, const std::list<AHistory>& entries) {
    for (const AHistory& entry : entries) {
        auto playlist = XmlHelper::AddChild(playlists, "playlist");
        playlist->SetAttribute("id", entry.playlistId);
        playlist->SetAttribute("name", entry.name);
    }
}

} // namespace

void RoomHistories::AddPlaylistToHistory(std::uint32_t roomId, std::uint32_t playlistId,
                                         const std::string& name) {
    std::list<AHistory>& entries = m_rooms[roomId];
    const auto known = std::find_if(entries.begin(), entries.end(),
                                    [&](const AHistory& entry) { return entry.playlistId == playlistId; });
    if (known != entries.end())
        entries.erase(known);
    entries.push_front({name, playlistId});
    if (entries.size() > kMaxEntries)
        entries.pop_back();
}

void RoomHistories::HistoryToXml(KVXML::INode& parent) const {
    for (const auto& [roomId, entries] : m_rooms) {
        auto history = XmlHelper::AddChild(parent, "history");
        history->SetAttribute("room", roomId);
        AppendEntries(*XmlHelper::AddChild(*history, "playlists"), entries);
    }
}

kv::auto_com<KVXML::INode> RoomHistories::HistoryToXml(std::uint32_t roomId) const {
    const auto found = m_rooms.find(roomId);
    if (found == m_rooms.end())
        return nullptr;
    auto playlists = KVXML::CreateXmlNode("playlists");
    AppendEntries(*playlists, found->second);
    return playlists;
}
