#include "ctl/Actions.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <utility>

#include "platform/XmlHelper.h"

namespace korvel::ctl {
namespace {

using nlohmann::json;

constexpr int kMaxSuggestions = 10;
// Stands in a text for bytes that are no UTF-8.
constexpr const char* kReplacement = "\xEF\xBF\xBD";

bool IsNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

bool EqualIgnoringCase(const std::string& a, const std::string& b) {
    return std::ranges::equal(
        a, b, [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

std::string Text(const json& object, const char* name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

std::string Id(const json& object) {
    return object.at("id").dump();
}

std::string SongLine(const json& song) {
    return Id(song) + "  " + Text(song, "title") + " - " + Text(song, "artist") + " (" + Text(song, "album") +
           ")";
}

std::string MediaLine(const json& room, const json& inputs) {
    if (!room.at("routed").get<bool>())
        return "off";
    for (const json& input : inputs) {
        if (input.at("device") == room.at("source"))
            return "queue " + room.at("queue").dump() + ", " + Text(input, "name");
    }
    const json& media = room.at("media");
    if (!media.is_object() || (Text(media, "title").empty() && Text(media, "channel").empty()))
        return "queue " + room.at("queue").dump() + ", nothing playing";
    std::string line = Text(media, "title");
    for (const char* more : {"channel", "artist", "album"}) {
        if (const std::string text = Text(media, more); !text.empty())
            line += (line.empty() ? "" : " - ") + text;
    }
    return "queue " + room.at("queue").dump() + ", " + line;
}

std::string ServerState(const json& server) {
    if (server.at("connected").get<bool>())
        return "connected";
    const std::string problem = Text(server, "problem");
    return "not connected" + (problem.empty() ? "" : ": " + problem);
}

} // namespace

void Actions::Rooms() {
    const json inputs = m_client.Get("/api/library/inputs").at("items");
    for (const json& room : m_client.Get("/api/rooms"))
        m_out << Id(room) << "  " << Text(room, "name") << ": " << MediaLine(room, inputs) << "\n";
}

void Actions::Status() {
    const json status = m_client.Get("/api/status");
    m_out << "controller " << Text(status, "version") << ": "
          << (status.at("ready").get<bool>() ? "ready" : Text(status, "notReadyBecause")) << "\n";
    for (const json& server : status.at("servers")) {
        m_out << "audio server " << Text(server, "host") << ":" << server.at("port") << " (binding "
              << server.at("binding") << "): " << ServerState(server) << "\n";
    }
    const json& scan = status.at("scan");
    m_out << "scan: " << Text(scan, "phase") << ", " << scan.at("done") << " of " << scan.at("seen")
          << " files, " << scan.at("added") << " added, " << scan.at("missing") << " missing\n";
    for (const json& place : scan.at("away"))
        m_out << "not there now: " << Text(place, "path") << " (" << Text(place, "reason") << ")\n";
    StorageStatus(status.at("storage"));
}

void Actions::StorageStatus(const json& storage) {
    for (const json& each : storage.at("notWritten"))
        m_out << "not written: the " << Text(each, "what") << " (" << Text(each, "reason") << ")\n";
    for (const json& each : storage.at("keptAside"))
        m_out << "of no use: " << Text(each, "file") << " (" << Text(each, "reason") << "), kept as '"
              << Text(each, "as") << "'\n";
    if (const std::string why = Text(storage, "copyFailure"); !why.empty())
        m_out << "no copy of the library: " << why << "\n";
    if (const json& copies = storage.at("copies"); !copies.empty())
        m_out << "copies of the library: " << copies.size() << ", the newest " << copies[0].get<std::string>()
              << "; korvel-controller --restore brings it back\n";
}

void Actions::Search(const std::string& text) {
    const json found = m_client.Get("/api/library/search?q=" + PercentEncode(text));
    for (const json& song : found.at("songs").at("items"))
        m_out << "song   " << SongLine(song) << "\n";
    for (const json& album : found.at("albums").at("items"))
        m_out << "album  " << Id(album) << "  " << Text(album, "title") << " - " << Text(album, "artist")
              << "\n";
    for (const json& artist : found.at("artists").at("items"))
        m_out << "artist " << Text(artist, "name") << "\n";
    if (std::ranges::all_of(found, [](const json& list) { return list.at("items").empty(); }))
        throw Failure("nothing has '" + text + "' in its name");
}

std::string Actions::RoomId(const std::string& room) {
    std::string known;
    for (const json& each : m_client.Get("/api/rooms")) {
        if (Id(each) == room || EqualIgnoringCase(Text(each, "name"), room))
            return Id(each);
        known += (known.empty() ? "" : ", ") + Text(each, "name");
    }
    throw Failure("there is no room '" + room + "'; the rooms are: " + known);
}

std::string Actions::SongId(const std::string& song) {
    if (IsNumber(song))
        return Id(m_client.Get("/api/library/songs/" + song));
    json found = m_client.Get("/api/library/songs?title=" + PercentEncode(song)).at("items");
    if (found.empty())
        found = m_client.Get("/api/library/search?q=" + PercentEncode(song)).at("songs").at("items");
    if (found.empty())
        throw Failure("there is no song '" + song + "'");
    if (found.size() == 1)
        return Id(found[0]);
    std::string text = "'" + song + "' may be any of these, say which by its id:";
    for (std::size_t i = 0; i < found.size() && i < kMaxSuggestions; ++i)
        text += "\n  " + SongLine(found[i]);
    throw Failure(text);
}

// The controller listens on this machine alone, so its files are here.
void Actions::RequireFile(const std::string& songId) {
    const json song = m_client.Get("/api/library/songs/" + songId);
    const std::string file = Text(song, "location");
    if (file.find(kReplacement) == std::string::npos && access(file.c_str(), F_OK) != 0 && errno == ENOENT)
        throw Failure("the file of " + Text(song, "title") + " is not there: " + file);
}

std::string Actions::Run(const std::string& name, const json& parameters) {
    return Text(m_client.Post("/api/command", {{"name", name}, {"parameters", parameters}}), "return");
}

void Actions::Play(const std::string& room, const std::vector<std::string>& songs, bool add) {
    const std::string roomId = RoomId(room);
    std::vector<std::string> ids;
    for (const std::string& song : songs)
        ids.push_back(SongId(song));
    std::ranges::for_each(ids, [this](const std::string& id) { RequireFile(id); });
    json parameters = {{"ROOM_ID", roomId},
                       {"CLEAR", add ? "0" : "1"},
                       // "Now" waits for a song that plays; "next" after clearing does not.
                       {"PLAY_NOW", add ? "1" : "0"},
                       {"PLAY_NEXT", add ? "0" : "1"}};
    if (ids.size() == 1)
        parameters["MEDIA_ID"] = ids[0];
    else
        parameters["MEDIA"] = SongListXml(ids);
    if (Run(ids.size() == 1 ? "ADD_SONG" : "ADD_SONG_LIST", parameters).empty())
        throw Failure("the controller did not take the songs");
    m_out << ids.size() << (ids.size() == 1 ? " song" : " songs") << (add ? " added\n" : " playing\n");
}

std::string Actions::ListedId(const std::string& list, const std::string& what, const std::string& wanted) {
    std::size_t seen = 0;
    for (;;) {
        const json page = m_client.Get("/api/library/" + list + "?offset=" + std::to_string(seen));
        for (const json& item : page.at("items")) {
            const std::string name = Text(item, item.contains("name") ? "name" : "title");
            if (Id(item) == wanted || EqualIgnoringCase(name, wanted))
                return Id(item);
        }
        seen += page.at("items").size();
        if (page.at("items").empty() || seen >= page.at("total").get<std::size_t>())
            throw Failure("there is no " + what + " '" + wanted + "'");
    }
}

void Actions::PlayListed(const std::string& command, json parameters) {
    if (Run(command, parameters).empty())
        throw Failure("the controller did not take it");
}

void Actions::PlayStation(const std::string& room, const std::string& station) {
    const std::string roomId = RoomId(room);
    // The room as the device that added the station: the driver tells it how the station does.
    const json parameters = {
        {"ROOM_ID", roomId}, {"MEDIA_ID", ListedId("stations", "station", station)}, {"DEVICE_ID", roomId}};
    bool asked = false;
    std::string reason = "its audio server is lost";
    m_client.Watch([&](const json& event) {
        // Asked for once the events come, none of which is missed so.
        if (!std::exchange(asked, true))
            PlayListed("ADD_IR_STREAM", parameters);
        const std::string type = Text(event, "type");
        if (type == "media")
            reason = Text(event, "reason");
        if (type == "room" && Id(event) == roomId && !event.at("routed").get<bool>())
            throw Failure("the station '" + station + "' cannot be played: " + reason);
        return type != "message" || event.at("room").dump() != roomId ||
               Text(event, "name") != "QUEUE_STREAM_STATUS_CHANGED" ||
               Text(event.at("parameters"), "STATUS") != "playing";
    });
}

void Actions::PlayInput(const std::string& room, const std::string& input) {
    PlayListed("ADD_ALBUM_MP3",
               {{"ROOM_ID", RoomId(room)}, {"MEDIA_ID", ListedId("inputs", "input", input)}});
}

void Actions::PlayPlaylist(const std::string& room, const std::string& playlist) {
    PlayListed("ADD_PLAYLIST", {{"ROOM_ID", RoomId(room)},
                                {"MEDIA_ID", ListedId("playlists", "playlist", playlist)},
                                {"CLEAR", "1"}});
}

void Actions::Transport(const std::string& command, const std::string& room) {
    Run(command, {{"ROOM_ID", RoomId(room)}});
}

void Actions::Join(const std::string& room, const std::vector<std::string>& others) {
    const std::string roomId = RoomId(room);
    std::string list;
    for (const std::string& other : others)
        list += (list.empty() ? "" : ",") + RoomId(other);
    const std::string answer = Run("ADD_ROOMS_TO_SESSION", {{"ROOM_ID", roomId}, {"ROOM_ID_LIST", list}});
    // The answer comes when the rooms have followed.
    for (const json& each : m_client.Get("/api/rooms")) {
        const std::string queue = "<queueid>" + each.at("queue").dump() + "</queueid>";
        if (("," + list + ",").find("," + Id(each) + ",") != std::string::npos && queue != answer)
            throw Failure(Text(each, "name") + " did not join");
    }
}

void Actions::Announce(const std::string& file, const std::vector<std::string>& rooms) {
    json ids = json::array();
    for (const std::string& room : rooms)
        ids.push_back(json::parse(RoomId(room)));
    const json wish = {{"rooms", ids}, {"file", std::filesystem::absolute(file).lexically_normal().string()}};
    json id;
    m_client.Watch([&](const json& event) {
        // Asked for once the events come, none of which is missed so.
        if (id.is_null())
            id = m_client.Post("/api/announce", wish).at("id");
        if (Text(event, "type") != "announcement" || event.at("id") != id)
            return true;
        if (const std::string reason = Text(event, "reason"); !reason.empty())
            throw Failure(std::string("the announcement ") +
                          (Text(event, "state") == "failed" ? "failed: " : "was abandoned: ") + reason);
        return Text(event, "state") != "complete";
    });
}

nlohmann::json Actions::Resolve(const std::vector<std::string>& words) {
    json parameters = ParseParameters(words);
    for (const char* name : {"ROOM_ID", "JOIN_ID"}) {
        if (parameters.contains(name) && !IsNumber(parameters[name]))
            parameters[name] = RoomId(parameters[name]);
    }
    return parameters;
}

void Actions::Command(const std::string& name, const std::vector<std::string>& parameters) {
    if (const std::string answer = Run(name, Resolve(parameters)); !answer.empty())
        m_out << answer << "\n";
}

void Actions::Request(const std::string& name, const std::vector<std::string>& parameters) {
    const json answer = m_client.Post("/api/request", {{"name", name}, {"parameters", Resolve(parameters)}});
    if (const std::string reply = Text(answer, "reply"); !reply.empty())
        m_out << reply << "\n";
}

void Actions::Watch() {
    m_client.Watch([this](const json& event) {
        m_out << event.dump() << std::endl;
        return true;
    });
}

nlohmann::json ParseParameters(const std::vector<std::string>& words) {
    json parameters = json::object();
    for (const std::string& word : words) {
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos || equals == 0)
            throw Failure("'" + word + "' is not of the form KEY=VALUE");
        parameters[word.substr(0, equals)] = word.substr(equals + 1);
    }
    return parameters;
}

std::string SongListXml(const std::vector<std::string>& songIds) {
    const auto media = KVXML::CreateXmlNode("MEDIA");
    for (const std::string& id : songIds)
        XmlHelper::AddChild(*media, "MEDIA_ID", id);
    return media->ToText();
}

} // namespace korvel::ctl
