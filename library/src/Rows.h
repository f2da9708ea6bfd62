// How rows of the database become records.
#pragma once

#include "Sqlite.h"
#include "library/MediaRecords.h"

namespace korvel::media {

// The media type code of a song of the database.
inline constexpr std::int32_t kSongType = 1;

// What a failed operation of IMediaManager returns.
inline constexpr std::int32_t kFailed = -1;

// The columns that ReadSong takes, of a table named s.
inline constexpr const char* kSongColumns =
    "s.id, s.location, s.device_id, s.title, s.artist, s.album, s.album_artist, s.genre, s.image, s.track, "
    "s.disc,"
    " s.duration_ms, s.file_size, s.file_time, s.presence";
// Songs outside an album's own order. Songs that no scan found and that have no track go by their ids alone.
inline constexpr const char* kSongOrder =
    "s.album, s.disc, s.track, CASE WHEN s.file_size = 0 AND s.track = 0 THEN '' ELSE s.title END, s.id";
// Songs of an album (members named m). Those of a scanned album share one position.
inline constexpr const char* kAlbumSongOrder = "m.position, s.disc, s.track, s.title, m.song_id";

// `first` is the column to begin at.
SongRecord ReadSong(const Query& row, int first = 0);
// Columns: type, external_id, media_id, extra.
MediaItem ReadItem(const Query& row, int first = 0);

// The items of a playlist, in order.
std::vector<MediaItem> ReadPlaylist(Connection& connection, std::uint32_t playlistId);
// Replaces the items of a playlist. To be called in a transaction.
void WritePlaylist(Connection& connection, std::uint32_t playlistId, const std::vector<MediaItem>& items);
// Adds a playlist under `id`, or a new one for 0; replaces the title and owner of one that is there.
std::uint32_t WritePlaylistRecord(Connection& connection, std::uint32_t id, std::uint32_t deviceId,
                                  const std::string& title);

} // namespace korvel::media
