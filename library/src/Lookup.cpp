// What drivers look up in the media database. No exception leaves these operations.
#include <algorithm>

#include "Rows.h"
#include "Sqlite.h"
#include "library/MediaDatabase.h"
#include "platform/EntryGuard.h"
#include "platform/XmlHelper.h"

using kv::auto_com;
using kv::GuardEntry;
using KVXML::INode;

namespace korvel::media {

namespace {

enum class Category { Unknown, Song, Station, Album, Playlist };

Category CategoryOf(const std::string& text) {
    if (text == "SONG" || text == "SONGS")
        return Category::Song;
    if (text == "BROADCAST_AUDIO")
        return Category::Station;
    if (text == "ALBUM" || text == "ALBUM_MP3" || text == "ALBUM_CD")
        return Category::Album;
    if (text == "PLAYLIST")
        return Category::Playlist;
    return Category::Unknown;
}

const char* LocationQuery(Category category) {
    switch (category) {
        case Category::Song:
            return "SELECT location FROM songs WHERE id = ?";
        case Category::Station:
            return "SELECT location FROM stations WHERE id = ?";
        case Category::Album:
            return "SELECT s.location FROM album_songs m JOIN songs s ON s.id = m.song_id WHERE m.album_id = "
                   "?"
                   " ORDER BY m.position, s.disc, s.track, s.title, m.song_id LIMIT 1";
        case Category::Playlist:
            return "SELECT s.location FROM playlist_items i JOIN songs s ON s.id = i.media_id"
                   " WHERE i.playlist_id = ? AND i.type = 1 ORDER BY i.position LIMIT 1";
        case Category::Unknown:
            break;
    }
    return nullptr;
}

// Parameters: 1 device, 2 artist, 3 genre, 4 count, 5 first.
const char* ListQuery(Category category) {
    switch (category) {
        case Category::Song:
            return "SELECT s.id, s.title FROM songs s WHERE (?1 = 0 OR s.device_id = ?1)"
                   " AND (?2 = '' OR s.artist = ?2 OR s.album_artist = ?2) AND (?3 = '' OR s.genre = ?3)"
                   " ORDER BY s.id LIMIT ?4 OFFSET ?5";
        case Category::Station:
            return "SELECT id, name FROM stations ORDER BY id LIMIT ?4 OFFSET ?5";
        case Category::Album:
            return "SELECT a.id, a.title FROM albums a WHERE (?1 = 0 AND ?2 = '' AND ?3 = '') OR EXISTS"
                   " (SELECT 1 FROM album_songs m JOIN songs s ON s.id = m.song_id WHERE m.album_id = a.id"
                   "  AND (?1 = 0 OR s.device_id = ?1)"
                   "  AND (?2 = '' OR s.artist = ?2 OR s.album_artist = ?2) AND (?3 = '' OR s.genre = ?3))"
                   " ORDER BY a.id LIMIT ?4 OFFSET ?5";
        case Category::Playlist:
            return "SELECT id, title FROM playlists WHERE (?1 = 0 OR device_id = ?1)"
                   " ORDER BY id LIMIT ?4 OFFSET ?5";
        case Category::Unknown:
            break;
    }
    return nullptr;
}

const char* ElementName(Category category) {
    switch (category) {
        case Category::Song:
            return "song";
        case Category::Station:
            return "station";
        case Category::Album:
            return "album";
        default:
            return "playlist";
    }
}

void AddKnown(INode& node, const char* name, const std::string& text) {
    if (!text.empty())
        XmlHelper::AddChild(node, name, text);
}

void AddSongId(INode& parent, std::uint32_t id) {
    XmlHelper::toXml(id, *XmlHelper::AddChild(parent, "song"), "id");
}

auto_com<INode> SongNode(MediaDatabase& database, std::uint32_t id) {
    const auto song = database.FindSong(id);
    if (!song)
        return nullptr;
    auto node = KVXML::CreateXmlNode("song");
    AddKnown(*node, "name", song->title);
    AddKnown(*node, "album_title", song->album);
    AddKnown(*node, "artist", song->artist);
    AddKnown(*node, "genre", song->genre);
    AddKnown(*node, "img", song->image);
    return node;
}

auto_com<INode> StationNode(MediaDatabase& database, std::uint32_t id) {
    const auto station = database.FindStation(id);
    if (!station)
        return nullptr;
    auto node = KVXML::CreateXmlNode("station");
    AddKnown(*node, "name", station->name);
    AddKnown(*node, "genre", station->genre);
    AddKnown(*node, "img", station->image);
    return node;
}

auto_com<INode> AlbumNode(MediaDatabase& database, std::uint32_t id) {
    const auto album = database.FindAlbum(id);
    if (!album)
        return nullptr;
    auto node = KVXML::CreateXmlNode("album");
    XmlHelper::toXml(album->id, *node, "id");
    AddKnown(*node, "title", album->title);
    AddKnown(*node, "LOCAL_INPUT_NAME", album->inputName);
    for (const std::uint32_t song : album->songs)
        AddSongId(*node, song);
    return node;
}

auto_com<INode> PlaylistNode(MediaDatabase& database, Connection& connection, std::uint32_t id) {
    const auto playlist = database.FindPlaylist(id);
    if (!playlist)
        return nullptr;
    auto node = KVXML::CreateXmlNode("playlist");
    AddKnown(*node, "title", playlist->title);
    auto songs = XmlHelper::AddChild(*node, "songs");
    // The ids of other items count in other id spaces: as a song's id they would name the wrong song.
    for (const MediaItem& item : ReadPlaylist(connection, id))
        AddSongId(*songs, item.type == kSongType ? item.mediaId : 0);
    return node;
}

// A list of numbers as a JSON array, so that one parameter carries it.
std::string JsonList(const std::vector<std::uint32_t>& numbers) {
    std::string text = "[";
    for (const std::uint32_t number : numbers)
        text.append(text.size() > 1 ? "," : "").append(std::to_string(number));
    return text + "]";
}

void AppendSongs(Query& query, std::vector<MediaItem>& songs) {
    while (songs.size() < MediaDatabase::kMaxItems && query.Next()) {
        MediaItem item;
        item.type = kSongType;
        item.mediaId = query.UInt(0);
        songs.push_back(std::move(item));
    }
}

// Parameters: the devices, then the artist, then the genre. Each query states only what it filters by.
std::vector<MediaItem> QuerySongs(Connection& connection, const std::vector<std::uint32_t>& devices,
                                  const std::string* artist, const std::string* genre) {
    std::string sql =
        "SELECT s.id FROM songs s WHERE (?1 = '[]' OR s.device_id IN (SELECT value FROM json_each(?1)))";
    if (artist)
        sql += " AND (s.artist = ?2 OR (s.album_artist = ?2 AND ?2 <> ''))";
    if (genre)
        sql += " AND s.genre = ?3";
    sql.append(" ORDER BY ").append(kSongOrder).append(" LIMIT ?4");
    Query query = connection.Prepare(sql);
    query.Bind(JsonList(devices)).Bind(artist ? *artist : "").Bind(genre ? *genre : "");
    query.Bind(MediaDatabase::kMaxItems);
    std::vector<MediaItem> songs;
    AppendSongs(query, songs);
    return songs;
}

} // namespace

std::int32_t MediaDatabase::GetLocation(std::uint32_t mediaId, const std::string& category,
                                        std::string& location) {
    return GuardEntry("MediaDatabase::GetLocation", kFailed, [&] {
        const char* sql = LocationQuery(CategoryOf(category));
        if (!sql)
            return kFailed;
        Query query = m_connection->Prepare(sql);
        query.Bind(mediaId);
        if (!query.Next())
            return kFailed;
        location = query.Text(0);
        return 0;
    });
}

std::uint32_t MediaDatabase::GetStorageDevice(std::uint32_t mediaId) {
    return GuardEntry("MediaDatabase::GetStorageDevice", 0u, [&] {
        Query query = m_connection->Prepare("SELECT device_id FROM songs WHERE id = ?");
        query.Bind(mediaId);
        return query.Next() ? query.UInt(0) : 0u;
    });
}

auto_com<INode> MediaDatabase::GetAlbumInfo(std::uint32_t albumId) {
    return GuardEntry("MediaDatabase::GetAlbumInfo", auto_com<INode>(),
                      [&] { return AlbumNode(*this, albumId); });
}

auto_com<INode> MediaDatabase::GetMediaRecord(std::uint32_t mediaId, const std::string& category) {
    return GuardEntry("MediaDatabase::GetMediaRecord", auto_com<INode>(), [&]() -> auto_com<INode> {
        switch (CategoryOf(category)) {
            case Category::Song:
                return SongNode(*this, mediaId);
            case Category::Station:
                return StationNode(*this, mediaId);
            case Category::Album:
                return AlbumNode(*this, mediaId);
            case Category::Playlist:
                return PlaylistNode(*this, *m_connection, mediaId);
            case Category::Unknown:
                break;
        }
        return nullptr;
    });
}

auto_com<INode> MediaDatabase::GetMediaList(std::uint32_t deviceId, const std::string& category,
                                            const std::string& filter1, const std::string& filter2,
                                            std::int32_t first, std::int32_t count) {
    return GuardEntry("MediaDatabase::GetMediaList", auto_com<INode>(), [&]() -> auto_com<INode> {
        const Category kind = CategoryOf(category);
        const char* sql = ListQuery(kind);
        if (!sql)
            return nullptr;
        const auto most = static_cast<std::int32_t>(kMaxItems);
        Query query = m_connection->Prepare(sql);
        query.Bind(deviceId).Bind(filter1).Bind(filter2).Bind(count < 0 ? most : std::min(count, most));
        query.Bind(std::max(first, 0));
        auto list = KVXML::CreateXmlNode("list");
        while (query.Next()) {
            auto record = XmlHelper::AddChild(*list, ElementName(kind));
            XmlHelper::toXml(query.UInt(0), *record, "id");
            XmlHelper::toXml(query.Text(1), *record, "title");
        }
        return list;
    });
}

std::vector<MediaItem> MediaDatabase::GetSongsForAlbums(const std::vector<std::uint32_t>& albumIds,
                                                        const std::vector<std::uint32_t>& deviceIds) {
    return GuardEntry("MediaDatabase::GetSongsForAlbums", std::vector<MediaItem>(), [&] {
        const std::string devices = JsonList(deviceIds);
        std::vector<MediaItem> songs;
        for (const std::uint32_t album : albumIds) {
            Query query = m_connection->Prepare(
                std::string("SELECT s.id FROM album_songs m JOIN songs s ON s.id = m.song_id"
                            " WHERE m.album_id = ?1 AND (?2 = '[]'"
                            " OR s.device_id IN (SELECT value FROM json_each(?2))) ORDER BY ") +
                kAlbumSongOrder);
            query.Bind(album).Bind(devices);
            AppendSongs(query, songs);
        }
        return songs;
    });
}

std::vector<MediaItem> MediaDatabase::GetSongsByArtist(const std::vector<std::uint32_t>& deviceIds,
                                                       const std::string& artist) {
    return GuardEntry("MediaDatabase::GetSongsByArtist", std::vector<MediaItem>(),
                      [&] { return QuerySongs(*m_connection, deviceIds, &artist, nullptr); });
}

std::vector<MediaItem> MediaDatabase::GetSongsByGenre(const std::vector<std::uint32_t>& deviceIds,
                                                      const std::string& genre) {
    return GuardEntry("MediaDatabase::GetSongsByGenre", std::vector<MediaItem>(),
                      [&] { return QuerySongs(*m_connection, deviceIds, nullptr, &genre); });
}

std::vector<MediaItem> MediaDatabase::GetSongsByArtistAndGenre(const std::vector<std::uint32_t>& deviceIds,
                                                               const std::string& artist,
                                                               const std::string& genre) {
    return GuardEntry("MediaDatabase::GetSongsByArtistAndGenre", std::vector<MediaItem>(),
                      [&] { return QuerySongs(*m_connection, deviceIds, &artist, &genre); });
}

} // namespace korvel::media
