#include "Rows.h"

#include <stdexcept>

#include "library/MediaDatabase.h"

namespace korvel::media {

SongRecord ReadSong(const Query& row, int first) {
    SongRecord song;
    song.id = row.UInt(first);
    song.location = row.Text(first + 1);
    song.deviceId = row.UInt(first + 2);
    song.title = row.Text(first + 3);
    song.artist = row.Text(first + 4);
    song.album = row.Text(first + 5);
    song.albumArtist = row.Text(first + 6);
    song.genre = row.Text(first + 7);
    song.image = row.Text(first + 8);
    song.trackNumber = row.UInt(first + 9);
    song.discNumber = row.UInt(first + 10);
    song.durationMs = row.UInt(first + 11);
    song.fileSize = static_cast<std::uint64_t>(row.Int(first + 12));
    song.fileTimeNs = row.Int(first + 13);
    song.presence = static_cast<Presence>(row.Int(first + 14));
    return song;
}

MediaItem ReadItem(const Query& row, int first) {
    MediaItem item;
    item.type = static_cast<std::int32_t>(row.Int(first));
    item.externalId = row.Text(first + 1);
    item.mediaId = row.UInt(first + 2);
    item.extra = row.UInt(first + 3);
    return item;
}

std::vector<MediaItem> ReadPlaylist(Connection& connection, std::uint32_t playlistId) {
    Query query = connection.Prepare(
        "SELECT type, external_id, media_id, extra FROM playlist_items WHERE playlist_id = ? ORDER BY "
        "position");
    query.Bind(playlistId);
    std::vector<MediaItem> items;
    while (query.Next())
        items.push_back(ReadItem(query));
    return items;
}

void WritePlaylist(Connection& connection, std::uint32_t playlistId, const std::vector<MediaItem>& items) {
    if (items.size() > MediaDatabase::kMaxItems)
        throw std::runtime_error("media database: a playlist takes " +
                                 std::to_string(MediaDatabase::kMaxItems) + " items at most");
    connection.Prepare("DELETE FROM playlist_items WHERE playlist_id = ?").Bind(playlistId).Run();
    std::uint32_t position = 0;
    for (const MediaItem& item : items) {
        Query query = connection.Prepare(
            "INSERT INTO playlist_items (playlist_id, position, type, external_id, media_id, extra)"
            " VALUES (?, ?, ?, ?, ?, ?)");
        query.Bind(playlistId).Bind(position++).Bind(item.type).Bind(item.externalId).Bind(item.mediaId);
        query.Bind(item.extra).Run();
    }
}

std::uint32_t WritePlaylistRecord(Connection& connection, std::uint32_t id, std::uint32_t deviceId,
                                  const std::string& title) {
    Query query = connection.Prepare(
        "INSERT INTO playlists (id, device_id, title) VALUES (NULLIF(?, 0), ?, ?)"
        " ON CONFLICT (id) DO UPDATE SET device_id = excluded.device_id, title = excluded.title");
    query.Bind(id).Bind(deviceId).Bind(title).Run();
    return id != 0 ? id : connection.LastId();
}

} // namespace korvel::media
