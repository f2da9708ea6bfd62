#include "front/http/Routes.h"

#include <array>
#include <nlohmann/json.hpp>

#include "base/Refused.h"
#include "front/http/ApiRequests.h"
#include "front/http/Handlers.h"

namespace korvel::controller {
namespace {

// For what is answered at once.
template <auto Show>
std::optional<HttpReply> Now(Api& api, const Call& call, const Api::Done&) {
    return Show(api, call);
}

// For what takes a body, which `Read` checks.
template <auto Read, auto Handle>
std::optional<HttpReply> Takes(Api& api, const Call& call, const Api::Done& done) {
    return Handle(api, Read(call.body), done);
}

// The same for a room, which must be there.
template <auto Read, auto Change>
std::optional<HttpReply> ForRoom(Api& api, const Call& call, const Api::Done& done) {
    const std::string_view text = call.values.at("id");
    const auto id = ParseNumber(text);
    if (!id || !api.GetParts().rooms.Find(*id))
        throw Refused(Refused::Why::NotFound, "there is no room " + std::string(text));
    const Api::Done checked = api.Checking(done);
    Change(api.GetParts().router, *id, Read(call.body));
    AnswerWithRoom(api, *id, checked);
    return std::nullopt;
}

constexpr std::array kRoutes = {
    Route{"POST", "/api/announce", May::Change, Takes<ReadAnnouncement, Announce>},
    Route{"POST", "/api/command", May::Change, Takes<ReadMessage, RunCommand>},
    Route{"GET", "/api/events", May::Read, Now<ShowEvents>},
    Route{"GET", "/api/house", May::Read, Now<ShowHouse>},
    Route{"GET", "/api/library/albums", May::Read, Now<ListAlbums>},
    Route{"GET", "/api/library/albums/{id}", May::Read, Now<ShowAlbum>},
    Route{"GET", "/api/library/artists", May::Read, Now<ListArtists>},
    Route{"POST", "/api/library/forget-missing", May::Administer, Now<ForgetMissing>},
    Route{"GET", "/api/library/genres", May::Read, Now<ListGenres>},
    Route{"GET", "/api/library/inputs", May::Read, Now<ListInputs>},
    Route{"GET", "/api/library/playlists", May::Read, Now<ListPlaylists>},
    Route{"GET", "/api/library/playlists/{id}", May::Read, Now<ShowPlaylist>},
    Route{"POST", "/api/library/save-playlist", May::Change, Takes<ReadPlaylist, StorePlaylist>},
    Route{"POST", "/api/library/scan", May::Administer, Now<StartScan>},
    Route{"GET", "/api/library/search", May::Read, Now<SearchLibrary>},
    Route{"GET", "/api/library/songs", May::Read, Now<ListSongs>},
    Route{"GET", "/api/library/songs/{id}", May::Read, Now<ShowSong>},
    Route{"GET", "/api/library/stations", May::Read, Now<ListStations>},
    Route{"GET", "/api/library/stations/{id}", May::Read, Now<ShowStation>},
    Route{"POST", "/api/request", May::Change, Takes<ReadMessage, RunRequest>},
    Route{"GET", "/api/rooms", May::Read, Now<ListRooms>},
    Route{"POST", "/api/rooms/{id}/deselect", May::Change, ForRoom<ReadNothing, DeselectRoom>},
    Route{"POST", "/api/rooms/{id}/off", May::Change, ForRoom<ReadNothing, TurnRoomOff>},
    Route{"POST", "/api/rooms/{id}/select", May::Change, ForRoom<ReadSelect, SelectInRoom>},
    Route{"GET", "/api/sessions/{id}", May::Read, Now<ShowSession>},
    Route{"GET", "/api/sessions/{id}/entries", May::Read, Now<ListEntries>},
    Route{"GET", "/api/status", May::Read, Now<ShowStatus>},
    Route{"GET", "/api/variables", May::Read, Now<ListVariables>},
    Route{"GET", kAnyOther, May::Read, Now<ShowOther>},
};

} // namespace

std::span<const Route> Routes() {
    return kRoutes;
}

FoundRoute FindRoute(std::span<const Route> routes, std::string_view method,
                     const std::vector<std::string>& path) {
    FoundRoute found;
    for (const Route& route : routes) {
        if (route.pattern == kAnyOther && !found.allow.empty())
            break;
        auto values = MatchPath(route.pattern, path);
        if (!values)
            continue;
        if (route.method == method)
            return {&route, std::move(*values), ""};
        found.allow.append(found.allow.empty() ? "" : ", ").append(route.method);
    }
    return found;
}

} // namespace korvel::controller
