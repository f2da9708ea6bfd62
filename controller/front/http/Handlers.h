// What the routes do. Those that take a `done` answer later with it, as docs/api.md describes them all.
#pragma once

#include <cstdint>
#include <optional>

#include "front/http/ApiRequests.h"
#include "front/http/Routes.h"

namespace korvel::controller {

// The house.
HttpReply ShowStatus(Api& api, const Call& call);
HttpReply ListRooms(Api& api, const Call& call);
HttpReply ListVariables(Api& api, const Call& call);
HttpReply ShowEvents(Api& api, const Call& call);
// A file of the page, or nothing.
HttpReply ShowOther(Api& api, const Call& call);

// Its sessions.
HttpReply ShowHouse(Api& api, const Call& call);
HttpReply ShowSession(Api& api, const Call& call);
HttpReply ListEntries(Api& api, const Call& call);

// The driver.
std::optional<HttpReply> RunCommand(Api& api, const kv::auto_com<ICmdMessage>& command,
                                    const Api::Done& done);
std::optional<HttpReply> RunRequest(Api& api, const kv::auto_com<ICmdMessage>& request,
                                    const Api::Done& done);
std::optional<HttpReply> Announce(Api& api, AnnouncementOrder order, const Api::Done& done);

// Rooms; the id is that of a room.
void SelectInRoom(RoomRouter& router, std::uint32_t id, const SelectOrder& order);
void DeselectRoom(RoomRouter& router, std::uint32_t id, Nothing);
void TurnRoomOff(RoomRouter& router, std::uint32_t id, Nothing);
void AnswerWithRoom(Api& api, std::uint32_t id, const Api::Done& done);

// The library.
HttpReply ListSongs(Api& api, const Call& call);
HttpReply ListAlbums(Api& api, const Call& call);
HttpReply ListArtists(Api& api, const Call& call);
HttpReply ListGenres(Api& api, const Call& call);
HttpReply ListPlaylists(Api& api, const Call& call);
HttpReply ListStations(Api& api, const Call& call);
HttpReply ListInputs(Api& api, const Call& call);
HttpReply SearchLibrary(Api& api, const Call& call);
HttpReply ShowSong(Api& api, const Call& call);
HttpReply ShowAlbum(Api& api, const Call& call);
HttpReply ShowPlaylist(Api& api, const Call& call);
HttpReply ShowStation(Api& api, const Call& call);
HttpReply StartScan(Api& api, const Call& call);
HttpReply ForgetMissing(Api& api, const Call& call);
std::optional<HttpReply> StorePlaylist(Api& api, const PlaylistOrder& order, const Api::Done& done);
// For a path under /api/library that leads nowhere.
HttpReply NotInLibrary(const Target& target);

} // namespace korvel::controller
