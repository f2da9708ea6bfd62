// Commands, requests and conditions: how they come in, and the table that leads to their handlers.
#include <algorithm>
#include <boost/bind/bind.hpp>

#include "basics/LogLevels.h"
#include "driver/korvel_digitalaudio.h"
#include "platform/Text.h"

using D = korvel_digitalaudio;
using NodePtr = kv::auto_com<KVXML::INode>;

// docs/commands.md tells the same in its own order; a test compares the two.
const D::Command D::s_commands[] = {
    {"GO_TO_SONG", &D::OnGoToSong, "ROOM_ID, MEDIA_ID", "[MEDIA_INDEX], [SOURCE=1]",
     "plays a song of the queue by position or identity"},
    {"EDIT_QUEUE", &D::OnEditQueue, "ROOM_ID, MEDIA", "",
     "replaces the list by a new order; what plays goes on if it is still there"},
    {"REMOVE_QUEUE", &D::OnRemoveQueue, "ROOM_ID", "", "asks every room of the room's queue to let go"},
    {"ADD_ROOMS_TO_SESSION", &D::OnAddRoomsToSession, "", "ROOM_ID, ROOM_ID_LIST",
     "asks the listed rooms to select the room's queue; answers it"},
    {"REMOVE_ROOMS_FROM_SESSION", &D::OnRemoveRoomsFromSession, "ROOM_ID, ROOM_ID_LIST", "",
     "asks the listed rooms of the same queue to let go"},
    {"ADD_ALBUM_MP3", &D::OnAddAlbumMp3, "", "ROOM_ID, MEDIA_ID, [PLAY_NEXT=0]",
     "the songs of an album, or the line input that it stands for"},
    {"ADD_SONG", &D::OnAddSong, "ROOM_ID, MEDIA_ID", "[SOURCE=1], [PLAY_NOW=1], [PLAY_NEXT=0], [CLEAR=0]",
     "one song, track or channel"},
    {"ADD_IR_STREAM", &D::OnAddIRSTREAM, "ROOM_ID", "[MEDIA_ID], [MEDIA], [DEVICE_ID], [QUEUE_INFO]",
     "an internet radio stream in place of what was there"},
    {"REMOVE_SONG", &D::OnRemoveSong, "ROOM_ID, MEDIA_ID", "[SOURCE=1]",
     "takes a song out, wherever it stands"},
    {"ADD_SONG_LIST", &D::OnAddSongList, "ROOM_ID, MEDIA", "[PLAY_NOW=1], [PLAY_NEXT=0], [CLEAR=0]",
     "a `<MEDIA>` of `<MEDIA_ID>` and `<SONG SOURCE ID>` elements"},
    {"ADD_ALBUM_LIST", &D::OnAddAlbumList, "", "ROOM_ID, MEDIA, [PLAY_NOW=1], [PLAY_NEXT=0]",
     "the songs of several albums"},
    {"SHUFFLE", &D::OnShuffle, "ROOM_ID", "[SHUFFLE]", "sets shuffle, or toggles it; the room remembers"},
    {"REPEAT", &D::OnRepeat, "ROOM_ID", "[REPEAT]", "sets repeat, or toggles it; the room remembers"},
    {"JOIN", &D::OnJoin, "ROOM_ID", "[JOIN_ID], [QUEUE_ID]",
     "answers the queue to join; the room leaves its own"},
    {"REMOVE", &D::OnRemove, "ROOM_ID", "", "asks the room to let go"},
    {"QUEUE_ALL", &D::OnQueueAll, "", "ROOM_ID, [ARTIST], [GENRE], [PLAY_NOW=1], [PLAY_NEXT=0]",
     "every song of an artist, a genre, or both"},
    {"GET_QUEUE_STATUS", &D::OnGetQueueStatus, "", "", "answers the status of all queues, older layout"},
    {"GET_QUEUE_STATUSV2", &D::OnGetQueueStatusV2, "", "", "answers the status of all queues"},
    {"STOP", &D::OnStop, "ROOM_ID", "", "stops and rewinds to the first song"},
    {"PLAY", &D::OnPlay, "ROOM_ID", "", "plays, resumes, or starts again from the top after the end"},
    {"PAUSE", &D::OnPause, "ROOM_ID", "", "pauses; a stream that cannot pause stops"},
    {"SKIP_FWD", &D::OnSkipFwd, "ROOM_ID", "", "next song, also after a stop for errors"},
    {"SKIP_REV", &D::OnSkipRev, "ROOM_ID", "",
     "starts the song again, or within five seconds of a move goes to the one before"},
    {"ADD_PLAYLIST", &D::OnAddPlaylist, "ROOM_ID, MEDIA_ID", "[PLAY_NOW=1], [PLAY_NEXT=1], [CLEAR=0]",
     "a saved playlist"},
    {"SAVE_PLAYLIST", &D::OnSavePlaylist, "", "ROOM_ID, NAME",
     "saves the queue under a name, in place of what has it"},
    {"DELETE_PLAYLIST", &D::OnDeletePlaylist, "MEDIA_ID", "", "deletes a playlist"},
    {"RENAME_PLAYLIST", &D::OnRenamePlaylist, "MEDIA_ID, NAME", "",
     "makes a playlist of the new name with the same songs"},
    {"GET_ROOM_HISTORY", &D::OnGetRoomHistory, "ROOM_ID", "", "answers the playlists last used in the room"},
    {"REQUEST_CURRENT_MEDIA_INFO", &D::OnRequestCurrentMediaInfo, "", "ROOM_ID",
     "has the room's media described again"},
    {"GET_SETTINGS", &D::OnGetSettings, "", "", "sends the settings to the user interfaces"},
    {"SET_PLAYLIST_CLEAR_FLAG", &D::OnSetPlaylistClearFlag, "FLAG_VALUE", "",
     "whether resting queues are cleared"},
    {"SET_PLAYLIST_CLEAR_DELAY", &D::OnSetPlaylistClearDelay, "DELAY_VALUE", "", "after how many minutes"},
    {"SET_PLAY_PREFERENCE", &D::OnSetPlayPreference, "PLAY_PREF", "", "a number kept for user interfaces"},
    {"GET_RHAPSODY_MY_PLAYLISTS", &D::OnGetRhapsodyMyPlaylists, "deviceid", "",
     "sends the streaming service's playlists of the member to a device"},
    {"UPDATE_SECONDARY_MEDIA_INFO", &D::OnUpdateSecondaryMediaInfo, "",
     "[roomId], [queueId], [merge=0], [force=0], [artist], [album], [title], [genre], [imageUrl]",
     "tells what a stream really plays"},
};

const D::Request D::s_requests[] = {
    {"GET_QUEUE_INFO", &D::OnGetQueueInfo, "[ROOM_ID], [QUEUE_ID]",
     "the `info` element of a queue: its songs in order"},
};

std::span<const D::Command> D::Commands() {
    return s_commands;
}

std::span<const D::Request> D::Requests() {
    return s_requests;
}

void korvel_digitalaudio::RegisterCommands() {
    using namespace boost::placeholders;
    for (const Command& command : s_commands) {
        std::vector<std::string> required;
        ASPacket::SplitPacket(command.required, ", ", required, 0);
        RegisterCmd(command.name, boost::bind(&D::RunCommand, this, command.handler, required, _1, _2));
    }
    for (const Request& request : s_requests)
        RegisterUICmd(request.name, boost::bind(request.handler, this, _1));
}

void korvel_digitalaudio::RunCommand(Command::Handler handler, const std::vector<std::string>& required,
                                     const ICmdMessage& message, ICmdReturn* ret) {
    const bool complete = std::none_of(required.begin(), required.end(), [&](const std::string& name) {
        return message.GetParam(name).empty();
    });
    if (complete)
        (this->*handler)(message, ret);
}

std::int32_t korvel_digitalaudio::ExecuteCommand(const ICmdMessage& message, ICmdReturn* ret,
                                                 std::uint32_t source) {
    return Enter("ExecuteCommand", std::int32_t{0}, [&]() -> std::int32_t {
        // There is nothing to play on before the audio server of this controller has come online.
        if (m_activeServerBinding == 0)
            return 0;
        try {
            return KVBaseDriver::ExecuteCommand(message, ret, source);
        } catch (...) {
            if (m_stringX && m_message)
                LogMessage(log_levels::kFailed,
                           "Command failed: " + m_stringX->OneLine(m_message->Describe(message)));
            throw;
        }
    });
}

// Every command that answers with a document serves as a request as well.
NodePtr korvel_digitalaudio::UIRequest(const ICmdMessage& message) {
    return Enter("UIRequest", NodePtr(), [&]() -> NodePtr {
        if (NodePtr answer = KVBaseDriver::UIRequest(message))
            return answer;
        CR_String collector;
        ExecuteCommand(message, &collector, 0);
        if (collector.GetText().empty())
            return nullptr;
        const auto document = KVXML::CreateXmlDocument(collector.GetText());
        return document ? document->GetRoot() : nullptr;
    });
}

bool korvel_digitalaudio::TestCondition(const ICondMessage& condition, std::uint32_t*) {
    return Enter("TestCondition", false, [&] {
        const std::string room = condition.GetParam("ROOM_ID");
        if (room.empty())
            return false;
        const bool inSession = AudioServer_GetQueueFromRoom(kv::ToULong(room)) != nullptr;
        if (condition.GetName() == "InSession")
            return inSession;
        return condition.GetName() == "NotInSession" && !inSession;
    });
}
