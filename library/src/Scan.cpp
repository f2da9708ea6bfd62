// What the scanner stores.
#include "Rows.h"
#include "Sqlite.h"
#include "library/MediaDatabase.h"
#include "library/ScanRecords.h"
#include "library/Utf8.h"

namespace korvel::media {

namespace {

// Writes only what has changed: a scan that found nothing new leaves the file as it is.
constexpr const char* kNameAlbumArtists =
    "UPDATE albums SET artist = now.name, folded = title_folded || ' ' || FOLD(now.name) FROM"
    " (SELECT a.id AS id, CASE WHEN MIN(s.id) IS NULL THEN ''"
    "   WHEN MIN(IIF(s.album_artist <> '', s.album_artist, s.artist))"
    "      = MAX(IIF(s.album_artist <> '', s.album_artist, s.artist))"
    "   THEN MIN(IIF(s.album_artist <> '', s.album_artist, s.artist)) ELSE 'Various artists' END AS name"
    "  FROM albums a LEFT JOIN album_songs m ON m.album_id = a.id LEFT JOIN songs s ON s.id = m.song_id"
    "  GROUP BY a.id) AS now"
    " WHERE now.id = albums.id AND albums.artist <> now.name";

std::uint32_t AlbumOf(Connection& connection, const ScannedSong& scanned) {
    const SongRecord& song = scanned.song;
    {
        Query find = connection.Prepare("SELECT id FROM albums WHERE title = ? AND album_group = ?");
        find.Bind(song.album).Bind(scanned.albumGroup);
        if (find.Next())
            return find.UInt(0);
    }
    Query add = connection.Prepare(
        "INSERT INTO albums (title, artist, input_name, album_group, title_folded, folded)"
        " VALUES (?, '', '', ?, ?3, ?3)");
    add.Bind(song.album).Bind(scanned.albumGroup).Bind(FoldText(song.album)).Run();
    return connection.LastId();
}

// A song leaves the scanned album it was in; the albums that were put together by hand keep it.
void JoinAlbum(Connection& connection, std::uint32_t songId, std::uint32_t albumId) {
    Query leave = connection.Prepare(
        "DELETE FROM album_songs WHERE song_id = ? AND EXISTS"
        " (SELECT 1 FROM albums a WHERE a.id = album_songs.album_id AND a.album_group IS NOT NULL)");
    leave.Bind(songId).Run();
    Query join = connection.Prepare("INSERT INTO album_songs (album_id, position, song_id) VALUES (?, 0, ?)");
    join.Bind(albumId).Bind(songId).Run();
}

// As a number in the text: the index of the songs that are not here serves no parameter.
std::string Are(Presence presence) {
    return " WHERE presence = " + std::to_string(static_cast<int>(presence));
}

} // namespace

std::vector<FileStamp> MediaDatabase::ListScannedFiles() {
    Query query = m_connection->Prepare(
        "SELECT id, location, device_id, file_size, file_time, image <> '', presence FROM songs"
        " WHERE file_size > 0");
    std::vector<FileStamp> files;
    while (query.Next()) {
        FileStamp file;
        file.songId = query.UInt(0);
        file.location = query.Text(1);
        file.deviceId = query.UInt(2);
        file.fileSize = static_cast<std::uint64_t>(query.Int(3));
        file.fileTimeNs = query.Int(4);
        file.hasImage = query.Int(5) != 0;
        file.presence = static_cast<Presence>(query.Int(6));
        files.push_back(std::move(file));
    }
    return files;
}

std::vector<FileStamp> MediaDatabase::ListBrokenFiles() {
    Query query = m_connection->Prepare("SELECT location, file_size, file_time, reason FROM broken_files");
    std::vector<FileStamp> files;
    while (query.Next()) {
        FileStamp file;
        file.location = query.Text(0);
        file.fileSize = static_cast<std::uint64_t>(query.Int(1));
        file.fileTimeNs = query.Int(2);
        file.reason = query.Text(3);
        files.push_back(std::move(file));
    }
    return files;
}

std::uint32_t MediaDatabase::PutScannedSong(const ScannedSong& scanned) {
    std::uint32_t id = 0;
    InTransaction([&] {
        id = PutSong(scanned.song);
        JoinAlbum(*m_connection, id, AlbumOf(*m_connection, scanned));
        SetSongHasImage(id, scanned.hasImage);
        ForgetBrokenFile(scanned.song.location);
    });
    return id;
}

void MediaDatabase::MoveSongToDevice(std::uint32_t id, std::uint32_t deviceId) {
    m_connection->Prepare("UPDATE songs SET device_id = ? WHERE id = ?").Bind(deviceId).Bind(id).Run();
}

void MediaDatabase::SetSongPresence(std::uint32_t id, Presence presence) {
    Query query = m_connection->Prepare("UPDATE songs SET presence = ? WHERE id = ?");
    query.Bind(static_cast<std::int32_t>(presence)).Bind(id).Run();
}

std::uint32_t MediaDatabase::ForgetGoneSongs() {
    std::uint32_t forgotten = 0;
    InTransaction([&] {
        m_connection->Prepare("DELETE FROM songs" + Are(Presence::Gone)).Run();
        forgotten = static_cast<std::uint32_t>(m_connection->Changes());
        RefreshAlbums();
    });
    return forgotten;
}

std::uint32_t MediaDatabase::CountSongs(Presence presence) {
    Query query = m_connection->Prepare("SELECT COUNT(*) FROM songs" + Are(presence));
    return query.Next() ? query.UInt(0) : 0;
}

void MediaDatabase::SetSongHasImage(std::uint32_t id, bool hasImage) {
    const std::string image = hasImage ? "cover/" + std::to_string(id) : "";
    m_connection->Prepare("UPDATE songs SET image = ? WHERE id = ?").Bind(image).Bind(id).Run();
}

void MediaDatabase::PutBrokenFile(const FileStamp& file) {
    Query query = m_connection->Prepare(
        "INSERT INTO broken_files (location, file_size, file_time, reason) VALUES (?, ?, ?, ?)"
        " ON CONFLICT (location) DO UPDATE SET file_size = excluded.file_size,"
        " file_time = excluded.file_time, reason = excluded.reason");
    query.Bind(file.location).Bind(static_cast<std::int64_t>(file.fileSize)).Bind(file.fileTimeNs);
    query.Bind(file.reason).Run();
}

void MediaDatabase::ForgetBrokenFile(const std::string& location) {
    m_connection->Prepare("DELETE FROM broken_files WHERE location = ?").Bind(location).Run();
}

void MediaDatabase::RefreshAlbums() {
    InTransaction([&] {
        m_connection
            ->Prepare(
                "DELETE FROM albums WHERE album_group IS NOT NULL"
                " AND NOT EXISTS (SELECT 1 FROM album_songs m WHERE m.album_id = albums.id)")
            .Run();
        m_connection->Prepare(kNameAlbumArtists).Run();
    });
}

} // namespace korvel::media
