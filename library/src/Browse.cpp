// Lists of the media database, a page at a time.
#include <algorithm>

#include "Pages.h"
#include "Rows.h"
#include "Sqlite.h"
#include "library/MediaDatabase.h"

namespace korvel::media {

namespace {

PlaylistEntry ReadEntry(const Query& row) {
    PlaylistEntry entry;
    entry.item = ReadItem(row);
    if (row.UInt(4) != 0)
        entry.song = ReadSong(row, 4);
    return entry;
}

StationRecord ReadStation(const Query& row) {
    return {row.UInt(0), row.Text(1), row.Text(2), row.Text(3), row.Text(4)};
}

PlaylistSummary ReadPlaylistSummary(const Query& row) {
    return {row.UInt(0), row.UInt(1), row.Text(2), row.UInt(3)};
}

constexpr const char* kStationColumns = "id, location, name, genre, image";
constexpr const char* kPlaylistColumns =
    "p.id, p.device_id, p.title, (SELECT COUNT(*) FROM playlist_items i WHERE i.playlist_id = p.id)";
constexpr const char* kGenres =
    "(SELECT genre AS name, COUNT(*) AS n FROM songs WHERE genre <> '' GROUP BY genre)";

} // namespace

Page<AlbumSummary> MediaDatabase::ListAlbums(Window window) {
    return ReadPage(*m_connection, {kAlbumColumns, "albums a", "a.title_folded, a.id"}, {}, window,
                    ReadAlbum);
}

Page<NameSummary> MediaDatabase::ListArtists(Window window) {
    return ReadPage(*m_connection, {"name, n", kArtists, "FOLD(name), name"}, {}, window, ReadName);
}

Page<NameSummary> MediaDatabase::ListGenres(Window window) {
    return ReadPage(*m_connection, {"name, n", kGenres, "FOLD(name), name"}, {}, window, ReadName);
}

Page<SongRecord> MediaDatabase::ListSongs(Window window) {
    return ReadPage(*m_connection, {kSongColumns, "songs s", "s.title_folded, s.id"}, {}, window,
                    ReadSongRow);
}

Page<StationRecord> MediaDatabase::ListStations(Window window) {
    return ReadPage(*m_connection, {kStationColumns, "stations", "FOLD(name), id"}, {}, window, ReadStation);
}

Page<PlaylistSummary> MediaDatabase::ListPlaylists(Window window) {
    return ReadPage(*m_connection, {kPlaylistColumns, "playlists p", "FOLD(p.title), p.id"}, {}, window,
                    ReadPlaylistSummary);
}

Page<AlbumSummary> MediaDatabase::ListAlbumsOfArtist(const std::string& artist, Window window) {
    // By the songs, which finds the album of several artists as well.
    const PageQuery query = {
        kAlbumColumns,
        "albums a WHERE a.id IN (SELECT m.album_id FROM songs s JOIN album_songs m"
        " ON m.song_id = s.id WHERE s.artist = ?1 OR (s.album_artist = ?1 AND ?1 <> ''))",
        "a.title_folded, a.id"};
    return ReadPage(
        *m_connection, query, [&](Query& q) { q.Bind(artist); }, window, ReadAlbum);
}

Page<SongRecord> MediaDatabase::ListSongsOfAlbum(std::uint32_t albumId, Window window) {
    const PageQuery query = {kSongColumns,
                             "album_songs m JOIN songs s ON s.id = m.song_id WHERE m.album_id = ?1",
                             kAlbumSongOrder};
    return ReadPage(
        *m_connection, query, [&](Query& q) { q.Bind(albumId); }, window, ReadSongRow);
}

Page<SongRecord> MediaDatabase::ListSongsOfArtist(const std::string& artist, Window window) {
    const PageQuery query = {kSongColumns,
                             "songs s WHERE s.artist = ?1 OR (s.album_artist = ?1 AND ?1 <> '')", kSongOrder};
    return ReadPage(
        *m_connection, query, [&](Query& q) { q.Bind(artist); }, window, ReadSongRow);
}

Page<SongRecord> MediaDatabase::ListSongsOfGenre(const std::string& genre, Window window) {
    const PageQuery query = {kSongColumns, "songs s WHERE s.genre = ?1", kSongOrder};
    return ReadPage(
        *m_connection, query, [&](Query& q) { q.Bind(genre); }, window, ReadSongRow);
}

Page<PlaylistEntry> MediaDatabase::ListPlaylistEntries(std::uint32_t playlistId, Window window) {
    const std::string columns = std::string("i.type, i.external_id, i.media_id, i.extra, ") + kSongColumns;
    const PageQuery query = {columns,
                             "playlist_items i LEFT JOIN songs s ON s.id = i.media_id AND i.type = 1"
                             " WHERE i.playlist_id = ?1",
                             "i.position"};
    return ReadPage(
        *m_connection, query, [&](Query& q) { q.Bind(playlistId); }, window, ReadEntry);
}

std::optional<SongRecord> MediaDatabase::FindSong(std::uint32_t id) {
    Query query =
        m_connection->Prepare(std::string("SELECT ") + kSongColumns + " FROM songs s WHERE s.id = ?");
    query.Bind(id);
    if (!query.Next())
        return std::nullopt;
    return ReadSong(query);
}

std::optional<StationRecord> MediaDatabase::FindStation(std::uint32_t id) {
    Query query =
        m_connection->Prepare(std::string("SELECT ") + kStationColumns + " FROM stations WHERE id = ?");
    query.Bind(id);
    if (!query.Next())
        return std::nullopt;
    return ReadStation(query);
}

std::optional<AlbumRecord> MediaDatabase::FindAlbum(std::uint32_t id) {
    Query query = m_connection->Prepare("SELECT title, input_name FROM albums WHERE id = ?");
    query.Bind(id);
    if (!query.Next())
        return std::nullopt;
    AlbumRecord album{id, query.Text(0), query.Text(1), {}};
    Query songs = m_connection->Prepare(
        std::string("SELECT m.song_id FROM album_songs m LEFT JOIN songs s ON s.id = m.song_id"
                    " WHERE m.album_id = ? ORDER BY ") +
        kAlbumSongOrder);
    songs.Bind(id);
    while (songs.Next())
        album.songs.push_back(songs.UInt(0));
    return album;
}

std::optional<PlaylistSummary> MediaDatabase::FindPlaylist(std::uint32_t id) {
    Query query =
        m_connection->Prepare(std::string("SELECT ") + kPlaylistColumns + " FROM playlists p WHERE p.id = ?");
    query.Bind(id);
    if (!query.Next())
        return std::nullopt;
    return ReadPlaylistSummary(query);
}

} // namespace korvel::media
