#include "korvel_digitalaudio/IDigitalAudio.h"
#include "replay/Arguments.h"
#include "replay/Session.h"
#include "replay/Verbs.h"
#include "replay/Words.h"

namespace korvel::replay {

namespace {

void Advance(Session& session, Arguments& arguments) {
    const std::uint32_t milliseconds = arguments.Number("MS");
    arguments.ExpectEnd();
    session.Advance(milliseconds);
}

void Announce(Session& session, Arguments& arguments) {
    const std::string operation = arguments.Value("create, play or remove");
    const std::string path = operation == "play" ? arguments.Value("PATH") : "";
    arguments.ExpectEnd();
    session.GetDriver();
    auto* announcements = kv::GetService<IDigitalAudio>(session.GetInstances());
    if (!announcements)
        throw FormatError("the driver offers no announcements");

    if (operation == "create")
        session.Enter([&] { announcements->CreateAnnouncementStream(); });
    else if (operation == "play")
        session.Enter([&] { announcements->PlayAnnouncement(path); });
    else if (operation == "remove")
        session.Enter([&] { announcements->RemoveAnnouncementStream(); });
    else
        throw FormatError("announce wants create, play or remove, not " + FormatValue(operation));
}

void CompletePlaylists(Session& session, Arguments& arguments, IRhapsodyCallback& callback) {
    std::vector<DataPlaylistLite> playlists;
    while (!arguments.AtEnd()) {
        DataPlaylistLite playlist;
        playlist.id = arguments.Value("ID");
        playlist.name = arguments.Value("NAME");
        playlists.push_back(std::move(playlist));
    }
    session.Enter([&] { callback.RC_Completed(playlists); });
}

void CompletePlaylistTracks(Session& session, Arguments& arguments, IRhapsodyCallback& callback) {
    std::vector<DataTrackInfo> tracks;
    while (!arguments.AtEnd())
        tracks.push_back({arguments.Value("ID")});
    session.Enter([&] { callback.RC_Completed(static_cast<unsigned int>(tracks.size()), tracks); });
}

void CompleteTrack(Session& session, Arguments& arguments, IRhapsodyCallback& callback) {
    std::vector<DataTrackFull> tracks;
    if (!arguments.AtEnd()) {
        const Fields fields(arguments, {"id", "context", "album", "artist", "name", "img"});
        tracks.push_back({.id = fields.Text("id"),
                          .context = fields.Text("context"),
                          .album = fields.Text("album"),
                          .artist = fields.Text("artist"),
                          .name = fields.Text("name"),
                          .image = fields.Text("img")});
    }
    session.Enter([&] { callback.RC_Completed(tracks); });
}

void HandleError(Session& session, Arguments& arguments, IRhapsodyCallback& callback) {
    const RC_Error code = arguments.SignedNumber("N");
    arguments.ExpectEnd();
    session.Enter([&] { callback.RC_ErrorHandler(code); });
}

void Rhapsody(Session& session, Arguments& arguments) {
    const std::string answer = arguments.Value("playlists, playlist-tracks, track or error");
    session.GetDriver();
    IRhapsodyCallback* callback = session.GetRhapsody().GetCallback();
    if (!callback)
        throw FormatError("the driver has no client of the streaming service");

    if (answer == "playlists")
        CompletePlaylists(session, arguments, *callback);
    else if (answer == "playlist-tracks")
        CompletePlaylistTracks(session, arguments, *callback);
    else if (answer == "track")
        CompleteTrack(session, arguments, *callback);
    else if (answer == "error")
        HandleError(session, arguments, *callback);
    else
        throw FormatError("rhapsody wants playlists, playlist-tracks, track or error, not " +
                          FormatValue(answer));
}

constexpr Verb kServiceVerbs[] = {
    {"advance", "MS", "time passes; timers expire", Advance},
    {"announce", "create | play PATH | remove", "the driver's announcement stream", Announce},
    {"rhapsody",
     "playlists [ID NAME]... | playlist-tracks ID... | track [id= context= album= artist= name= img=] | "
     "error N",
     "an answer of the streaming service", Rhapsody},
};

} // namespace

std::span<const Verb> GetServiceVerbs() {
    return kServiceVerbs;
}

} // namespace korvel::replay
