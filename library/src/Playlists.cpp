// The playlists that drivers save and play. No exception leaves these operations.
#include <algorithm>
#include <cstring>

#include "ChangeUnit.h"
#include "Rows.h"
#include "Sqlite.h"
#include "library/MediaDatabase.h"
#include "platform/EntryGuard.h"
#include "platform/XmlHelper.h"

using kv::GuardEntry;

namespace korvel::media {

namespace {

bool PlaylistExists(Connection& connection, std::uint32_t id) {
    Query query = connection.Prepare("SELECT 1 FROM playlists WHERE id = ?");
    query.Bind(id);
    return query.Next();
}

std::uint32_t PlaylistOfTitle(Connection& connection, std::uint32_t deviceId, const std::string& title) {
    Query query = connection.Prepare("SELECT MIN(id) FROM playlists WHERE device_id = ? AND title = ?");
    query.Bind(deviceId).Bind(title);
    return query.Next() ? query.UInt(0) : 0;
}

// Reads the description of a playlist. False when it is none, or when its title is not plain text.
bool ReadDescription(const std::string& description, std::string& title) {
    const auto document = KVXML::CreateXmlDocument(description);
    if (!document)
        return false;
    const auto root = document->GetRoot();
    const KVXML::INode* element = root->FindChild("title");
    if (root->GetName() != "album" || !XmlHelper::GetBool(*root, "playlist"))
        return false;
    if (element && element->GetChildCount() > 0)
        return false;
    title = element ? element->GetText() : "";
    return true;
}

// The title of the playlist that an AddMedia description asks for; "" for anything else.
std::string DescribedPlaylist(std::string description, const std::string& name) {
    std::string title;
    if (!ReadDescription(description, title)) {
        // Drivers put names in as they are: one like "I <3 you" is what stands between the tags.
        const std::size_t tag = description.find("<title>");
        const std::size_t begin = tag + std::strlen("<title>");
        const std::size_t end = description.rfind("</title>");
        if (tag == std::string::npos || end == std::string::npos || begin > end)
            return "";
        const std::string literal = description.substr(begin, end - begin);
        if (!ReadDescription(description.erase(begin, end - begin), title))
            return "";
        title = literal;
    }
    return title.empty() ? name : title;
}

void InsertItem(Connection& connection, std::uint32_t playlistId, const MediaItem& item,
                std::uint32_t position) {
    std::int64_t end = 0;
    {
        Query last = connection.Prepare(
            "SELECT IFNULL(MAX(position) + 1, 0) FROM playlist_items WHERE playlist_id = ?");
        last.Bind(playlistId);
        end = last.Next() ? last.Int(0) : 0;
    }
    // Appending is the usual case, for a whole list one by one: it must not write the list anew each time.
    if (position >= end && end < MediaDatabase::kMaxItems) {
        Query add = connection.Prepare(
            "INSERT INTO playlist_items (playlist_id, position, type, external_id, media_id, extra)"
            " VALUES (?, ?, ?, '', ?, 0)");
        add.Bind(playlistId).Bind(end).Bind(item.type).Bind(item.mediaId).Run();
        return;
    }
    std::vector<MediaItem> items = ReadPlaylist(connection, playlistId);
    items.insert(items.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(position, items.size())),
                 item);
    WritePlaylist(connection, playlistId, items);
}

template <class Result, class Body>
Result GuardChange(ChangeUnit& changes, const char* entry, Result neutral, Body&& body) noexcept {
    return GuardEntry(entry, neutral, [&] { return changes.Run(neutral, body); });
}

} // namespace

std::vector<MediaItem> MediaDatabase::GetPlaylistSongs(std::uint32_t playlistId) {
    return GuardEntry("MediaDatabase::GetPlaylistSongs", std::vector<MediaItem>(),
                      [&] { return ReadPlaylist(*m_connection, playlistId); });
}

std::string MediaDatabase::GetPlaylistName(std::uint32_t playlistId) {
    return GuardEntry("MediaDatabase::GetPlaylistName", std::string(), [&] {
        const auto playlist = FindPlaylist(playlistId);
        return playlist ? playlist->title : std::string();
    });
}

std::uint32_t MediaDatabase::CreatePlaylist(std::uint32_t deviceId, const std::string& name,
                                            const std::vector<MediaItem>& songs) {
    return GuardChange(*m_changes, "MediaDatabase::CreatePlaylist", 0u,
                       [&] { return PutPlaylist(0, deviceId, name, songs); });
}

std::int32_t MediaDatabase::UpdatePlaylist(std::uint32_t playlistId, const std::vector<MediaItem>& songs) {
    return GuardChange(*m_changes, "MediaDatabase::UpdatePlaylist", kFailed, [&] {
        std::int32_t result = kFailed;
        InTransaction([&] {
            if (!PlaylistExists(*m_connection, playlistId))
                return;
            WritePlaylist(*m_connection, playlistId, songs);
            result = 0;
        });
        return result;
    });
}

std::int32_t MediaDatabase::DeletePlaylist(std::uint32_t playlistId) {
    return GuardChange(*m_changes, "MediaDatabase::DeletePlaylist", kFailed, [&] {
        m_connection->Prepare("DELETE FROM playlists WHERE id = ?").Bind(playlistId).Run();
        return m_connection->Changes() > 0 ? 0 : kFailed;
    });
}

std::int32_t MediaDatabase::AddMedia(std::uint32_t deviceId, const std::string& description,
                                     const std::string&, const std::string& name, std::int32_t replace,
                                     std::uint32_t& newId) {
    return GuardChange(*m_changes, "MediaDatabase::AddMedia", kFailed, [&] {
        const std::string title = DescribedPlaylist(description, name);
        if (title.empty())
            return kFailed;
        std::uint32_t id = 0;
        InTransaction([&] {
            const std::uint32_t old = replace != 0 ? PlaylistOfTitle(*m_connection, deviceId, title) : 0;
            id = PutPlaylist(old, deviceId, title, {});
        });
        newId = id;
        return 0;
    });
}

std::int32_t MediaDatabase::AddSongToPlaylist(std::uint32_t playlistId, std::uint32_t songId,
                                              std::uint32_t position) {
    return GuardChange(*m_changes, "MediaDatabase::AddSongToPlaylist", kFailed, [&] {
        std::int32_t result = kFailed;
        InTransaction([&] {
            if (!PlaylistExists(*m_connection, playlistId))
                return;
            MediaItem item;
            item.type = kSongType;
            item.mediaId = songId;
            if (songId != 0)
                InsertItem(*m_connection, playlistId, item, position);
            result = 0;
        });
        return result;
    });
}

} // namespace korvel::media
