#include "actions/CommandChecks.h"

#include <algorithm>
#include <array>
#include <sstream>

#include "base/Refused.h"
#include "platform/Text.h"
#include "platform/XmlHelper.h"

namespace korvel::controller {

using Why = Refused::Why;

namespace {

// The largest SOURCE of what stands in a list of songs: a track of the streaming service.
constexpr std::uint32_t kLastSongSource = 2;
constexpr std::uint32_t kChannelSource = 3;

std::uint32_t AttributeNumber(const KVXML::INode& element, std::string_view name) {
    return kv::ToULong(element.GetAttribute(name));
}

std::vector<std::uint32_t> RoomsListed(const ICmdMessage& command) {
    std::vector<std::uint32_t> rooms;
    std::istringstream list(command.GetParam("ROOM_ID_LIST"));
    for (std::string room; std::getline(list, room, ',');)
        rooms.push_back(kv::ToULong(room));
    return rooms;
}

} // namespace

// What the driver wants to find, besides the room, and what else must be so.
struct CommandChecks::Rule {
    std::string_view command;
    std::array<const char*, 2> required{};
    void (CommandChecks::*before)(const ICmdMessage&) const = nullptr;
    void (CommandChecks::*after)(const ICmdMessage&, bool) const = nullptr;
};

const CommandChecks::Rule* CommandChecks::FindRule(const std::string& command) {
    using C = CommandChecks;
    static constexpr std::array kRules = {
        Rule{"PLAY", {}, &C::Play, &C::Played},
        Rule{"PAUSE", {}, &C::Pause},
        Rule{"STOP", {}, &C::Stop},
        Rule{"SKIP_FWD", {}, &C::Skip, &C::Skipped},
        Rule{"SKIP_REV", {}, &C::SkipBack, &C::Skipped},
        Rule{"GO_TO_SONG", {"MEDIA_ID"}, &C::GoToSong},
        Rule{"REMOVE_SONG", {"MEDIA_ID"}, &C::RemoveSong},
        Rule{"EDIT_QUEUE", {"MEDIA"}, &C::EditQueue},
        Rule{"SAVE_PLAYLIST", {"NAME"}, &C::SavePlaylist},
        Rule{"REMOVE", {}, &C::Leave},
        Rule{"REMOVE_QUEUE", {}, &C::Leave},
        Rule{"REQUEST_CURRENT_MEDIA_INFO", {}, &C::Describe},
        Rule{"ADD_ROOMS_TO_SESSION", {"ROOM_ID_LIST"}, &C::AddRooms},
        Rule{"REMOVE_ROOMS_FROM_SESSION", {"ROOM_ID_LIST"}, &C::RemoveRooms},
        Rule{"JOIN", {}, &C::Join},
        Rule{"ADD_SONG", {"MEDIA_ID"}, &C::AddSong, &C::Added},
        Rule{"ADD_SONG_LIST", {"MEDIA"}, &C::MediaText, &C::Added},
        Rule{"ADD_IR_STREAM", {}, &C::AddStation, &C::Added},
        Rule{"ADD_ALBUM_MP3", {"MEDIA_ID"}, &C::AddAlbum, &C::Added},
        Rule{"ADD_ALBUM_LIST", {"MEDIA"}, &C::MediaText, &C::AlbumsAdded},
        Rule{"ADD_PLAYLIST", {"MEDIA_ID"}, &C::AddPlaylist, &C::Added},
        Rule{"QUEUE_ALL", {}, &C::AddAll, &C::Added},
        Rule{"RENAME_PLAYLIST", {"MEDIA_ID", "NAME"}, &C::KnownPlaylist},
        Rule{"DELETE_PLAYLIST", {"MEDIA_ID"}, &C::KnownPlaylist},
        Rule{"GET_RHAPSODY_MY_PLAYLISTS", {"deviceid"}},
        Rule{"SET_PLAYLIST_CLEAR_FLAG", {"FLAG_VALUE"}},
        Rule{"SET_PLAYLIST_CLEAR_DELAY", {"DELAY_VALUE"}},
        Rule{"SET_PLAY_PREFERENCE", {"PLAY_PREF"}},
    };
    const auto found = std::ranges::find(kRules, std::string_view(command), &Rule::command);
    return found == kRules.end() ? nullptr : &*found;
}

void CommandChecks::Before(const ICmdMessage& command) const {
    const Rule* rule = FindRule(command.GetName());
    if (!rule)
        return;
    for (const char* name : rule->required) {
        if (name && command.GetParam(name).empty())
            throw Refused(Why::Invalid, command.GetName() + " needs " + name);
    }
    if (rule->before)
        (this->*rule->before)(command);
}

void CommandChecks::After(const ICmdMessage& command, bool answered) const {
    const Rule* rule = FindRule(command.GetName());
    if (rule && rule->after)
        (this->*rule->after)(command, answered);
}

std::size_t CommandChecks::Queue::CountSongs() const {
    const KVXML::INode* songs = info->FindChild("songs");
    return songs ? songs->GetChildCount() : 0;
}

bool CommandChecks::Queue::Holds(const ICmdMessage& item) const {
    const KVXML::INode* songs = info->FindChild("songs");
    const std::string source = item.GetParam("SOURCE").empty() ? "1" : item.GetParam("SOURCE");
    for (std::size_t i = 0; songs && i < songs->GetChildCount(); ++i) {
        const KVXML::INode& song = songs->GetChild(i);
        if (song.GetAttribute("id") == item.GetParam("MEDIA_ID") && song.GetAttribute("source") == source)
            return true;
    }
    return false;
}

const Room& CommandChecks::RoomOf(const ICmdMessage& command) const {
    const Room* room = m_parts.rooms.Find(command.GetNumber("ROOM_ID"));
    if (!room)
        throw Refused(Why::NotFound, command.GetName() + " needs ROOM_ID, the id of a room; '" +
                                         command.GetParam("ROOM_ID") + "' is none");
    return *room;
}

std::optional<CommandChecks::Queue> CommandChecks::FindQueue(const std::string& key,
                                                             std::uint32_t value) const {
    const auto request = kv::CreateCmdMessage("GET_QUEUE_INFO");
    request->AddParam(key, "INT", std::to_string(value));
    Queue queue{0, m_parts.driver.Request(*request)};
    if (!queue.info || !XmlHelper::fromXml(*queue.info, "id", queue.id))
        return std::nullopt;
    return queue;
}

CommandChecks::Queue CommandChecks::QueueOf(const ICmdMessage& command, const char* lack) const {
    const Room& room = RoomOf(command);
    auto queue = FindQueue("ROOM_ID", room.config.id);
    if (!queue)
        throw Refused(Why::Conflict, room.config.name + " " + lack);
    return *std::move(queue);
}

// As the driver has published it last: asking for it anew would count as a look at what comes next.
CommandChecks::Status CommandChecks::StatusOf(const Queue& queue) const {
    Status status;
    const auto& variables = m_parts.variables.All();
    const auto found = std::ranges::find_if(
        variables, [](const auto& variable) { return variable.second.name == "QUEUE_STATUS_V2"; });
    const auto document = found == variables.end() ? nullptr : KVXML::CreateXmlDocument(found->second.value);
    const auto root = document ? document->GetRoot() : nullptr;
    for (std::size_t i = 0; root && i < root->GetChildCount(); ++i) {
        const KVXML::INode& element = root->GetChild(i);
        std::uint32_t id = 0;
        XmlHelper::fromXml(element, "id", id);
        if (id != queue.id)
            continue;
        XmlHelper::fromXml(element, "state", status.state);
        XmlHelper::fromXml(element, "index", status.index);
        if (const KVXML::INode* song = element.FindChild("song"))
            status.source = AttributeNumber(*song, "source");
    }
    return status;
}

void CommandChecks::Play(const ICmdMessage& command) const {
    const Queue queue = QueueOf(command, "has nothing to resume");
    const Room& room = RoomOf(command);
    if (room.IsRouted() && StatusOf(queue).state == "Play")
        throw Refused(Why::Conflict, room.config.name + " plays already");
}

void CommandChecks::Played(const ICmdMessage& command, bool) const {
    if (StatusOf(QueueOf(command, "has nothing to resume")).state != "Play")
        throw Refused(Why::Conflict, RoomOf(command).config.name + " has nothing to resume");
}

void CommandChecks::Pause(const ICmdMessage& command) const {
    constexpr const char* kLack = "plays nothing that could be paused";
    const Status status = StatusOf(QueueOf(command, kLack));
    if (status.state == "Pause")
        throw Refused(Why::Conflict, RoomOf(command).config.name + " is paused already");
    if (status.state == "Stop")
        throw Refused(Why::Conflict, RoomOf(command).config.name + " " + kLack);
}

void CommandChecks::Stop(const ICmdMessage& command) const {
    if (StatusOf(QueueOf(command, "plays nothing that could be stopped")).state == "Stop")
        throw Refused(Why::Conflict, RoomOf(command).config.name + " is stopped already");
}

void CommandChecks::Skip(const ICmdMessage& command) const {
    QueueOf(command, "plays nothing");
}

void CommandChecks::SkipBack(const ICmdMessage& command) const {
    if (StatusOf(QueueOf(command, "plays nothing")).source == kChannelSource)
        throw Refused(Why::Conflict, "a channel has no song before the one that plays");
}

// The driver has gone to a place where no song stands, and what plays goes on.
void CommandChecks::Skipped(const ICmdMessage& command, bool) const {
    const Queue queue = QueueOf(command, "plays nothing");
    const Status status = StatusOf(queue);
    if (status.source > kLastSongSource || status.index < queue.CountSongs())
        return;
    const bool forward = command.GetName() == "SKIP_FWD";
    throw Refused(Why::Conflict, std::string("there is no song ") + (forward ? "after" : "before") +
                                     " this one in the queue of " + RoomOf(command).config.name);
}

void CommandChecks::GoToSong(const ICmdMessage& command) const {
    const Queue queue = QueueOf(command, "has no queue");
    const std::string& room = RoomOf(command).config.name;
    if (command.GetParam("MEDIA_INDEX").empty())
        return RemoveSong(command);
    if (const std::size_t songs = queue.CountSongs(); command.GetNumber("MEDIA_INDEX") >= songs) {
        throw Refused(Why::NotFound, "there is no song at " + command.GetParam("MEDIA_INDEX") +
                                         ": the queue of " + room + " has " + std::to_string(songs) +
                                         ", the first is 0");
    }
}

void CommandChecks::RemoveSong(const ICmdMessage& command) const {
    const Queue queue = QueueOf(command, "has no queue");
    if (StatusOf(queue).source <= kLastSongSource && !queue.Holds(command)) {
        throw Refused(Why::NotFound, "the queue of " + RoomOf(command).config.name + " does not hold " +
                                         command.GetParam("MEDIA_ID"));
    }
}

void CommandChecks::EditQueue(const ICmdMessage& command) const {
    QueueOf(command, "has no queue");
    MediaText(command);
}

void CommandChecks::MediaText(const ICmdMessage& command) const {
    if (!KVXML::CreateXmlDocument(command.GetParam("MEDIA")))
        throw Refused(Why::Invalid, "MEDIA of " + command.GetName() + " is not well-formed");
}

void CommandChecks::SavePlaylist(const ICmdMessage& command) const {
    if (QueueOf(command, "has no songs that could be saved").CountSongs() == 0)
        throw Refused(Why::Conflict, RoomOf(command).config.name + " has no songs that could be saved");
}

void CommandChecks::Leave(const ICmdMessage& command) const {
    QueueOf(command, "hears nothing that it could leave");
}

void CommandChecks::Describe(const ICmdMessage& command) const {
    QueueOf(command, "plays nothing");
}

void CommandChecks::AddRooms(const ICmdMessage& command) const {
    const Queue queue = QueueOf(command, "plays nothing that others could join");
    const auto listed = RoomsListed(command);
    for (const std::uint32_t id : listed) {
        if (!m_parts.rooms.Find(id))
            throw Refused(Why::NotFound, "there is no room " + std::to_string(id));
    }
    if (std::ranges::all_of(listed,
                            [&](std::uint32_t id) { return m_parts.rooms.Find(id)->queueId == queue.id; }))
        throw Refused(Why::Conflict, "that is what they hear already");
}

void CommandChecks::RemoveRooms(const ICmdMessage& command) const {
    const Queue queue = QueueOf(command, "plays nothing");
    const auto listed = RoomsListed(command);
    const auto hears = [&](std::uint32_t id) {
        const Room* room = m_parts.rooms.Find(id);
        return room && room->queueId == queue.id;
    };
    if (std::ranges::none_of(listed, hears))
        throw Refused(Why::Conflict, "none of them hears what " + RoomOf(command).config.name + " hears");
}

void CommandChecks::Join(const ICmdMessage& command) const {
    const Room& room = RoomOf(command);
    if (command.GetParam("JOIN_ID").empty()) {
        const std::uint32_t id = command.GetNumber("QUEUE_ID");
        const auto queue = FindQueue("QUEUE_ID", id);
        if (!queue || queue->id != id)
            throw Refused(Why::NotFound, "there is no queue " + std::to_string(id));
        return;
    }
    const Room* other = m_parts.rooms.Find(command.GetNumber("JOIN_ID"));
    if (!other)
        throw Refused(Why::NotFound, "there is no room " + command.GetParam("JOIN_ID"));
    if (other == &room)
        throw Refused(Why::Invalid, "a room cannot join itself");
    if (!FindQueue("ROOM_ID", other->config.id))
        throw Refused(Why::Conflict, other->config.name + " plays nothing that others could join");
}

void CommandChecks::AddSong(const ICmdMessage& command) const {
    RoomOf(command);
    const std::string source = command.GetParam("SOURCE");
    if ((source.empty() || source == "1") &&
        !m_parts.library.Database().FindSong(command.GetNumber("MEDIA_ID")))
        throw Refused(Why::NotFound, "there is no song " + command.GetParam("MEDIA_ID"));
}

void CommandChecks::AddStation(const ICmdMessage& command) const {
    RoomOf(command);
    const std::string id = command.GetParam("MEDIA_ID");
    if (id.empty() && command.GetParam("MEDIA").empty())
        throw Refused(Why::Invalid, "ADD_IR_STREAM needs MEDIA_ID or MEDIA");
    if (!id.empty() && !m_parts.library.Database().FindStation(command.GetNumber("MEDIA_ID")))
        throw Refused(Why::NotFound, "there is no station " + id);
}

void CommandChecks::AddAlbum(const ICmdMessage& command) const {
    RoomOf(command);
    const auto album = m_parts.library.Database().FindAlbum(command.GetNumber("MEDIA_ID"));
    if (!album)
        throw Refused(Why::NotFound, "there is no album " + command.GetParam("MEDIA_ID"));
    if (album->songs.empty() && album->inputName.empty())
        throw Refused(Why::Conflict, "the album '" + album->title + "' is empty");
}

void CommandChecks::AddPlaylist(const ICmdMessage& command) const {
    RoomOf(command);
    KnownPlaylist(command);
    const auto playlist = m_parts.library.Database().FindPlaylist(command.GetNumber("MEDIA_ID"));
    if (playlist->itemCount == 0)
        throw Refused(Why::Conflict, "the playlist '" + playlist->title + "' is empty");
}

void CommandChecks::KnownPlaylist(const ICmdMessage& command) const {
    if (!m_parts.library.Database().FindPlaylist(command.GetNumber("MEDIA_ID")))
        throw Refused(Why::NotFound, "there is no playlist " + command.GetParam("MEDIA_ID"));
}

void CommandChecks::AddAll(const ICmdMessage& command) const {
    RoomOf(command);
    if (!command.HasParam("ARTIST") && !command.HasParam("GENRE"))
        throw Refused(Why::Invalid, "QUEUE_ALL needs ARTIST, GENRE or both");
}

void CommandChecks::Added(const ICmdMessage& command, bool answered) const {
    if (!answered)
        throw Refused(Why::NotFound,
                      "there was nothing to add to the queue of " + RoomOf(command).config.name);
}

// It answers nothing: a room without a queue tells.
void CommandChecks::AlbumsAdded(const ICmdMessage& command, bool) const {
    QueueOf(command, "got no songs: none of the albums has any");
}

} // namespace korvel::controller
