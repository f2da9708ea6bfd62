#include <nlohmann/json.hpp>

#include "actions/Playlists.h"
#include "base/Refused.h"
#include "front/http/Handlers.h"

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

// A list as its route asks for it; `list` fetches a page.
template <class List>
HttpReply ListReply(const Call& call, List list) {
    const media::Window window = WindowOf(call.target);
    return JsonReply(ToJson(list(window), window));
}

// The record that the path names, as `find` makes JSON of it: null when there is none.
template <class Find>
HttpReply RecordReply(const Call& call, Find find) {
    const auto id = ParseNumber(call.values.at("id"));
    const json found = id ? find(*id, WindowOf(call.target)) : json(nullptr);
    return found.is_null() ? NotInLibrary(call.target) : JsonReply(found);
}

MediaDatabase& DatabaseOf(Api& api) {
    return api.GetParts().library.Database();
}

} // namespace

// As people say it: "song 77".
HttpReply NotInLibrary(const Target& target) {
    const auto& path = target.path;
    if (path.size() != 4)
        return ErrorReply(404, "there is no such thing in the library");
    const std::string& kind = path[2];
    const std::string one = kind.ends_with('s') ? kind.substr(0, kind.size() - 1) : kind;
    return ErrorReply(404, "there is no " + one + " " + path[3]);
}

HttpReply ListSongs(Api& api, const Call& call) {
    MediaDatabase& database = DatabaseOf(api);
    const Target& target = call.target;
    const media::Window window = WindowOf(target);
    if (target.query.contains("title")) {
        const auto songs = database.FindSongsByTitle(target.Text("title"));
        return JsonReply({{"total", songs.size()}, {"offset", 0}, {"items", ListOf(songs)}});
    }
    if (target.query.contains("artist"))
        return JsonReply(ToJson(database.ListSongsOfArtist(target.Text("artist"), window), window));
    if (target.query.contains("genre"))
        return JsonReply(ToJson(database.ListSongsOfGenre(target.Text("genre"), window), window));
    return JsonReply(ToJson(database.ListSongs(window), window));
}

HttpReply ListAlbums(Api& api, const Call& call) {
    return ListReply(call, [&](const media::Window& window) {
        return call.target.query.contains("artist")
                   ? DatabaseOf(api).ListAlbumsOfArtist(call.target.Text("artist"), window)
                   : DatabaseOf(api).ListAlbums(window);
    });
}

HttpReply ListArtists(Api& api, const Call& call) {
    return ListReply(call, [&](const media::Window& window) { return DatabaseOf(api).ListArtists(window); });
}

HttpReply ListGenres(Api& api, const Call& call) {
    return ListReply(call, [&](const media::Window& window) { return DatabaseOf(api).ListGenres(window); });
}

HttpReply ListPlaylists(Api& api, const Call& call) {
    return ListReply(call,
                     [&](const media::Window& window) { return DatabaseOf(api).ListPlaylists(window); });
}

HttpReply ListStations(Api& api, const Call& call) {
    return ListReply(call, [&](const media::Window& window) { return DatabaseOf(api).ListStations(window); });
}

HttpReply ListInputs(Api& api, const Call&) {
    json items = json::array();
    for (const LineInput& input : api.GetParts().library.Inputs())
        items.push_back({{"id", input.albumId}, {"name", input.name}, {"device", input.deviceId}});
    return JsonReply({{"total", items.size()}, {"offset", 0}, {"items", std::move(items)}});
}

HttpReply SearchLibrary(Api& api, const Call& call) {
    MediaDatabase& database = DatabaseOf(api);
    const media::Window window = WindowOf(call.target);
    const std::string text = call.target.Text("q");
    if (text.empty())
        throw Refused(Refused::Why::Invalid, "q must say what to search for");
    return JsonReply({{"songs", ToJson(database.SearchSongs(text, window), window)},
                      {"albums", ToJson(database.SearchAlbums(text, window), window)},
                      {"artists", ToJson(database.SearchArtists(text, window), window)}});
}

HttpReply ShowSong(Api& api, const Call& call) {
    return RecordReply(call, [&](std::uint32_t id, const media::Window&) -> json {
        const auto song = DatabaseOf(api).FindSong(id);
        if (!song)
            return nullptr;
        json found = ToJson(*song);
        found["location"] = song->location;
        return found;
    });
}

HttpReply ShowAlbum(Api& api, const Call& call) {
    return RecordReply(call, [&](std::uint32_t id, const media::Window& window) -> json {
        const auto album = DatabaseOf(api).FindAlbum(id);
        if (!album)
            return nullptr;
        return {{"id", id},
                {"title", album->title},
                {"input", album->inputName},
                {"songs", ToJson(DatabaseOf(api).ListSongsOfAlbum(id, window), window)}};
    });
}

HttpReply ShowPlaylist(Api& api, const Call& call) {
    return RecordReply(call, [&](std::uint32_t id, const media::Window& window) -> json {
        const auto playlist = DatabaseOf(api).FindPlaylist(id);
        if (!playlist)
            return nullptr;
        json found = ToJson(*playlist);
        found["entries"] = ToJson(DatabaseOf(api).ListPlaylistEntries(id, window), window);
        return found;
    });
}

HttpReply ShowStation(Api& api, const Call& call) {
    return RecordReply(call, [&](std::uint32_t id, const media::Window&) -> json {
        const auto station = DatabaseOf(api).FindStation(id);
        return station ? ToJson(*station) : json(nullptr);
    });
}

HttpReply StartScan(Api& api, const Call&) {
    if (!api.GetParts().library.StartScan())
        throw Refused(Refused::Why::Conflict, "a scan is running already");
    return JsonReply({{"started", true}}, 202);
}

HttpReply ForgetMissing(Api& api, const Call&) {
    Library& library = api.GetParts().library;
    const std::uint32_t forgotten = library.ForgetMissing();
    return JsonReply(
        {{"forgotten", forgotten}, {"kept", library.Database().CountSongs(media::Presence::Away)}});
}

std::optional<HttpReply> StorePlaylist(Api& api, const PlaylistOrder& order, const Api::Done&) {
    return JsonReply({{"id", SavePlaylist(DatabaseOf(api), order.title, order.songs)}});
}

} // namespace korvel::controller
