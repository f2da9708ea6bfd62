// Opening, and storing single records.
#include "library/MediaDatabase.h"

#include <stdexcept>

#include "ChangeUnit.h"
#include "Rows.h"
#include "Schema.h"
#include "Sqlite.h"
#include "library/DatabaseError.h"
#include "library/Utf8.h"

namespace korvel::media {

namespace {

void CheckId(std::uint32_t id) {
    if (id > kMaxId)
        throw std::invalid_argument("media database: the id " + std::to_string(id) + " is too large");
}

constexpr const char* kPutSong =
    "INSERT INTO songs (id, location, device_id, title, artist, album, album_artist, genre, image, track, "
    "disc,"
    " duration_ms, file_size, file_time, title_folded, folded, presence)"
    " VALUES (NULLIF(?, 0), ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"
    " ON CONFLICT (id) DO UPDATE SET location = excluded.location, device_id = excluded.device_id,"
    " title = excluded.title, artist = excluded.artist, album = excluded.album,"
    " album_artist = excluded.album_artist, genre = excluded.genre, image = excluded.image,"
    " track = excluded.track, disc = excluded.disc, duration_ms = excluded.duration_ms,"
    " file_size = excluded.file_size, file_time = excluded.file_time, title_folded = excluded.title_folded,"
    " folded = excluded.folded, presence = excluded.presence";

} // namespace

MediaDatabase::MediaDatabase(const std::string& path) {
    try {
        Open(path, false);
    } catch (const DatabaseError& error) {
        if (error.GetKind() != DatabaseError::Kind::NoRoom)
            throw;
        m_connection.reset();
        Open(path, true);
        m_isAlone = true;
    }
    m_changes = std::make_unique<ChangeUnit>(*m_connection);
}

void MediaDatabase::Open(const std::string& path, bool alone) {
    try {
        m_connection = std::make_unique<Connection>(path, kBusyTimeoutMs);
    } catch (const DatabaseError& error) {
        throw DatabaseError(error.GetKind(), "cannot open " + path + ": " + error.what());
    }
    try {
        if (alone)
            m_connection->StayAlone();
        PrepareSchema(*m_connection, path);
    } catch (const DatabaseError& error) {
        throw DatabaseError(error.GetKind(), "cannot use " + path + ": " + error.what());
    }
}

MediaDatabase::~MediaDatabase() = default;

void MediaDatabase::SetChangeListener(ChangeListener listener) {
    m_changes->SetListener(std::move(listener));
}

void MediaDatabase::AsOneChange(const std::function<void()>& body) {
    m_changes->AsOne(body);
}

void MediaDatabase::InTransaction(const std::function<void()>& body) {
    m_connection->InTransaction(body);
}

std::uint32_t MediaDatabase::PutSong(const SongRecord& song) {
    CheckId(song.id);
    Query query = m_connection->Prepare(kPutSong);
    query.Bind(song.id).Bind(song.location).Bind(song.deviceId).Bind(song.title).Bind(song.artist);
    query.Bind(song.album).Bind(song.albumArtist).Bind(song.genre).Bind(song.image).Bind(song.trackNumber);
    query.Bind(song.discNumber).Bind(song.durationMs).Bind(static_cast<std::int64_t>(song.fileSize));
    query.Bind(song.fileTimeNs).Bind(FoldText(song.title));
    query.Bind(FoldText(song.title + " " + song.artist + " " + song.albumArtist + " " + song.album));
    query.Bind(static_cast<std::int32_t>(song.presence)).Run();
    return song.id != 0 ? song.id : m_connection->LastId();
}

std::uint32_t MediaDatabase::PutStation(const StationRecord& station) {
    CheckId(station.id);
    Query query = m_connection->Prepare(
        "INSERT INTO stations (id, location, name, genre, image) VALUES (NULLIF(?, 0), ?, ?, ?, ?)"
        " ON CONFLICT (id) DO UPDATE SET location = excluded.location, name = excluded.name,"
        " genre = excluded.genre, image = excluded.image");
    query.Bind(station.id).Bind(station.location).Bind(station.name).Bind(station.genre).Bind(station.image);
    query.Run();
    return station.id != 0 ? station.id : m_connection->LastId();
}

std::uint32_t MediaDatabase::PutAlbum(const AlbumRecord& album) {
    CheckId(album.id);
    std::uint32_t id = album.id;
    InTransaction([&] {
        Query put = m_connection->Prepare(
            "INSERT INTO albums (id, title, artist, input_name, album_group, title_folded, folded)"
            " VALUES (NULLIF(?, 0), ?, '', ?, NULL, ?4, ?4)"
            " ON CONFLICT (id) DO UPDATE SET title = excluded.title, artist = '',"
            " input_name = excluded.input_name, album_group = NULL, title_folded = excluded.title_folded, "
            "folded = excluded.folded");
        put.Bind(id).Bind(album.title).Bind(album.inputName).Bind(FoldText(album.title)).Run();
        if (id == 0)
            id = m_connection->LastId();
        m_connection->Prepare("DELETE FROM album_songs WHERE album_id = ?").Bind(id).Run();
        std::uint32_t position = 0;
        for (const std::uint32_t song : album.songs) {
            Query add = m_connection->Prepare(
                "INSERT INTO album_songs (album_id, position, song_id) VALUES (?, ?, ?)");
            add.Bind(id).Bind(position++).Bind(song).Run();
        }
    });
    return id;
}

std::uint32_t MediaDatabase::PutPlaylist(std::uint32_t id, std::uint32_t deviceId, const std::string& title,
                                         const std::vector<MediaItem>& songs) {
    CheckId(id);
    std::uint32_t playlist = id;
    InTransaction([&] {
        playlist = WritePlaylistRecord(*m_connection, id, deviceId, title);
        WritePlaylist(*m_connection, playlist, songs);
    });
    return playlist;
}

void MediaDatabase::RemoveSong(std::uint32_t id) {
    m_connection->Prepare("DELETE FROM songs WHERE id = ?").Bind(id).Run();
}

void MediaDatabase::RemoveStation(std::uint32_t id) {
    m_connection->Prepare("DELETE FROM stations WHERE id = ?").Bind(id).Run();
}

} // namespace korvel::media
