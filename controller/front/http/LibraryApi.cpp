#include <nlohmann/json.hpp>

#include "actions/Playlists.h"
#include "base/Refused.h"
#include "front/http/Api.h"
#include "front/http/ApiRequests.h"

namespace korvel::controller {
namespace {

using media::MediaDatabase;
using nlohmann::json;

json ToJson(const media::SongRecord& song) {
    return {{"id", song.id},
            {"title", song.title},
            {"artist", song.artist},
            {"album", song.album},
            {"albumArtist", song.albumArtist},
            {"genre", song.genre},
            {"image", song.image},
            {"track", song.trackNumber},
            {"disc", song.discNumber},
            {"durationMs", song.durationMs},
            {"missing", song.presence != media::Presence::Here}};
}

json ToJson(const media::AlbumSummary& album) {
    return {{"id", album.id},
            {"title", album.title},
            {"artist", album.artist},
            {"image", album.image},
            {"songs", album.songCount}};
}

json ToJson(const media::NameSummary& name) {
    return {{"name", name.name}, {"songs", name.songCount}};
}

json ToJson(const media::StationRecord& station) {
    return {{"id", station.id}, {"name", station.name}, {"genre", station.genre}, {"image", station.image}};
}

json ToJson(const media::PlaylistSummary& playlist) {
    return {{"id", playlist.id}, {"title", playlist.title}, {"items", playlist.itemCount}};
}

json ToJson(const media::PlaylistEntry& entry) {
    return {{"type", entry.item.type},
            {"mediaId", entry.item.mediaId},
            {"externalId", entry.item.externalId},
            {"song", entry.song ? ToJson(*entry.song) : json(nullptr)}};
}

template <class Record>
json ListOf(const std::vector<Record>& records) {
    json list = json::array();
    for (const Record& record : records)
        list.push_back(ToJson(record));
    return list;
}

template <class Record>
json ToJson(const media::Page<Record>& page, const media::Window& window) {
    return {{"total", page.total}, {"offset", window.offset}, {"items", ListOf(page.items)}};
}

media::Window WindowOf(const Target& target) {
    const auto offset = target.Number("offset", 0);
    const auto limit = target.Number("limit", media::kMaxPageSize);
    if (!offset || !limit)
        throw Refused(Refused::Why::Invalid, "offset and limit must be whole numbers");
    return {*offset, *limit};
}

json Songs(MediaDatabase& database, const Target& target, const media::Window& window) {
    if (target.query.contains("title")) {
        const auto songs = database.FindSongsByTitle(target.Text("title"));
        return {{"total", songs.size()}, {"offset", 0}, {"items", ListOf(songs)}};
    }
    if (target.query.contains("artist"))
        return ToJson(database.ListSongsOfArtist(target.Text("artist"), window), window);
    if (target.query.contains("genre"))
        return ToJson(database.ListSongsOfGenre(target.Text("genre"), window), window);
    return ToJson(database.ListSongs(window), window);
}

json Albums(MediaDatabase& database, const Target& target, const media::Window& window) {
    if (target.query.contains("artist"))
        return ToJson(database.ListAlbumsOfArtist(target.Text("artist"), window), window);
    return ToJson(database.ListAlbums(window), window);
}

json Inputs(const Library& library) {
    json items = json::array();
    for (const LineInput& input : library.Inputs())
        items.push_back({{"id", input.albumId}, {"name", input.name}, {"device", input.deviceId}});
    return {{"total", items.size()}, {"offset", 0}, {"items", std::move(items)}};
}

json Search(MediaDatabase& database, const Target& target, const media::Window& window) {
    const std::string text = target.Text("q");
    if (text.empty())
        throw Refused(Refused::Why::Invalid, "q must say what to search for");
    return {{"songs", ToJson(database.SearchSongs(text, window), window)},
            {"albums", ToJson(database.SearchAlbums(text, window), window)},
            {"artists", ToJson(database.SearchArtists(text, window), window)}};
}

json List(MediaDatabase& database, const std::string& kind, const Target& target) {
    const media::Window window = WindowOf(target);
    if (kind == "songs")
        return Songs(database, target, window);
    if (kind == "albums")
        return Albums(database, target, window);
    if (kind == "artists")
        return ToJson(database.ListArtists(window), window);
    if (kind == "genres")
        return ToJson(database.ListGenres(window), window);
    if (kind == "playlists")
        return ToJson(database.ListPlaylists(window), window);
    if (kind == "stations")
        return ToJson(database.ListStations(window), window);
    if (kind == "search")
        return Search(database, target, window);
    return nullptr;
}

json One(MediaDatabase& database, const std::string& kind, std::uint32_t id, const Target& target) {
    const media::Window window = WindowOf(target);
    if (kind == "songs") {
        const auto song = database.FindSong(id);
        if (!song)
            return nullptr;
        json found = ToJson(*song);
        found["location"] = song->location;
        return found;
    }
    if (kind == "albums") {
        const auto album = database.FindAlbum(id);
        if (!album)
            return nullptr;
        return {{"id", id},
                {"title", album->title},
                {"input", album->inputName},
                {"songs", ToJson(database.ListSongsOfAlbum(id, window), window)}};
    }
    if (kind == "playlists") {
        const auto playlist = database.FindPlaylist(id);
        if (!playlist)
            return nullptr;
        json found = ToJson(*playlist);
        found["entries"] = ToJson(database.ListPlaylistEntries(id, window), window);
        return found;
    }
    if (kind == "stations") {
        const auto station = database.FindStation(id);
        return station ? ToJson(*station) : json(nullptr);
    }
    return nullptr;
}

// What the path asks for, as people say it: "song 77".
std::string NameOf(const std::vector<std::string>& path) {
    if (path.size() != 4)
        return "such thing in the library";
    const std::string& kind = path[2];
    return (kind.ends_with('s') ? kind.substr(0, kind.size() - 1) : kind) + " " + path[3];
}

} // namespace

HttpReply ChangeLibrary(Library& library, const std::string& action) {
    if (action == "forget-missing") {
        const std::uint32_t forgotten = library.ForgetMissing();
        return JsonReply(
            {{"forgotten", forgotten}, {"kept", library.Database().CountSongs(media::Presence::Away)}});
    }
    if (!library.StartScan())
        throw Refused(Refused::Why::Conflict, "a scan is running already");
    return JsonReply({{"started", true}}, 202);
}

HttpReply SavePlaylist(Library& library, const json& body) {
    const PlaylistOrder order = ReadPlaylist(body);
    return JsonReply({{"id", SavePlaylist(library.Database(), order.title, order.songs)}});
}

HttpReply BrowseLibrary(Library& library, const Target& target) {
    MediaDatabase& database = library.Database();
    const auto& path = target.path;
    json found = nullptr;
    if (path.size() == 3 && path[2] == "inputs") {
        found = Inputs(library);
    } else if (path.size() == 3) {
        found = List(database, path[2], target);
    } else if (path.size() == 4) {
        if (const auto id = ParseNumber(path[3]))
            found = One(database, path[2], *id, target);
    }
    return found.is_null() ? ErrorReply(404, "there is no " + NameOf(path)) : JsonReply(found);
}

} // namespace korvel::controller
