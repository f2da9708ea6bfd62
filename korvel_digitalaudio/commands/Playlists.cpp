// Playlists, which live in the controller's media database under this driver's device.
#include "basics/Asserts.h"
#include "basics/LogLevels.h"
#include "commands/Adding.h"
#include "driver/korvel_digitalaudio.h"
#include "platform/XmlHelper.h"

namespace {

constexpr const char* kCategory = "PLAYLIST";
constexpr std::int32_t kReplace = 1;
constexpr std::int32_t kAll = -1;

// The ids of a playlist record's songs, in order.
std::vector<std::uint32_t> SongIds(const KVXML::INode& record) {
    std::vector<std::uint32_t> ids;
    const KVXML::INode* songs = record.FindChild("songs");
    for (std::size_t i = 0; songs && i < songs->GetChildCount(); ++i) {
        std::uint32_t id = 0;
        XmlHelper::fromXml(songs->GetChild(i), "id", id);
        ids.push_back(id);
    }
    return ids;
}

} // namespace

void korvel_digitalaudio::OnAddPlaylist(const ICmdMessage& message, ICmdReturn* ret) {
    const std::uint32_t roomId = message.GetNumber("ROOM_ID");
    auto flags = commands::AddFlags::ReadForPlaylist(message);
    const auto queue =
        OpenQueueForMedia(roomId, flags, [this](AudioQueue& opened) { InterruptClearTimer(&opened); });
    if (!queue)
        return;
    Playlist_Load(roomId, message.GetNumber("MEDIA_ID"), queue.Get(), flags.playNext ? 1 : 0);

    const bool startsNow = flags.playNow && queue->GetQueueState() != PLAY && !queue->IsSongListEmpty();
    if (flags.playNext || startsNow) {
        // The id 0 leaves the pin that the list was loaded with: no song has it.
        if (!queue->IsShuffleSet())
            queue->SetNextSong(flags.playNext ? AudioMedia::CreateTypeDigital(0) : queue->GetFirstSong());
        if (!queue.IsNew())
            queue->PlayNextSong(true, false);
        UpdateQueueStatusVariable();
    }
    ReturnQueueId(ret, queue->GetQueueId());
}

void korvel_digitalaudio::Playlist_Load(std::uint32_t roomId, std::uint32_t playlistId, AudioQueue* queue,
                                        std::int32_t playNext) {
    IMediaManager* mediaManager = GetMediaManager();
    std::vector<AudioMedia> songs;
    if (mediaManager)
        songs = FromItems(mediaManager->GetPlaylistSongs(playlistId));
    queue->AddSongList(songs, playNext != 0);
    if (playNext != 0 && !songs.empty() && !queue->IsShuffleSet())
        queue->SetNextSong(songs.front());
    if (mediaManager && queue->GetRoomClient(roomId))
        m_roomHistories.AddPlaylistToHistory(roomId, playlistId, mediaManager->GetPlaylistName(playlistId));
    UpdateRoomHistoryVariable();
}

void korvel_digitalaudio::OnSavePlaylist(const ICmdMessage& message, ICmdReturn*) {
    const std::string room = message.GetParam("ROOM_ID");
    const std::string name = message.GetParam("NAME");
    if (room.empty() || name.empty()) {
        kv::AssertWrite(asserts::kDriverPath, asserts::kSavePlaylistParams, kv::StackTrace());
        LogMessage(log_levels::kFailed, "The command SAVE_PLAYLIST does not have the required parameters");
        return;
    }
    Playlist_Save(kv::ToULong(room), name);
}

// Saving under a name that is there replaces what it holds.
void korvel_digitalaudio::Playlist_Save(std::uint32_t roomId, const std::string& name) {
    AudioQueue* queue = AudioServer_GetQueueFromRoom(roomId);
    IMediaManager* mediaManager = GetMediaManager();
    if (!queue || !mediaManager || queue->IsSongListEmpty())
        return;
    std::vector<MediaItem> songs;
    for (const AudioMedia& media : queue->GetSongList())
        songs.push_back(media.ToItem());
    std::uint32_t playlistId = GetPlaylistID(name);
    if (playlistId != 0)
        mediaManager->UpdatePlaylist(playlistId, songs);
    else
        playlistId = mediaManager->CreatePlaylist(GetDeviceId(), name, songs);
    if (playlistId == 0)
        return;
    if (queue->GetRoomClient(roomId))
        m_roomHistories.AddPlaylistToHistory(roomId, playlistId, name);
    UpdateRoomHistoryVariable();
}

std::uint32_t korvel_digitalaudio::GetPlaylistID(const std::string& name) {
    IMediaManager* mediaManager = GetMediaManager();
    const auto list =
        mediaManager ? mediaManager->GetMediaList(GetDeviceId(), kCategory, "", "", kAll, kAll) : nullptr;
    for (std::size_t i = 0; list && i < list->GetChildCount(); ++i) {
        std::string title;
        std::uint32_t id = 0;
        XmlHelper::fromXml(list->GetChild(i), "title", title);
        XmlHelper::fromXml(list->GetChild(i), "id", id);
        if (title == name && id != 0)
            return id;
    }
    return 0;
}

void korvel_digitalaudio::OnRenamePlaylist(const ICmdMessage& message, ICmdReturn*) {
    Playlist_Rename(message.GetParam("NAME"), message.GetNumber("MEDIA_ID"));
}

// A renamed playlist is a new record with the same songs; the old one stays until it is deleted.
void korvel_digitalaudio::Playlist_Rename(const std::string& name, std::uint32_t playlistId) {
    IMediaManager* mediaManager = GetMediaManager();
    const auto record = mediaManager ? mediaManager->GetMediaRecord(playlistId, kCategory) : nullptr;
    if (!record)
        return;
    const std::vector<std::uint32_t> songIds = SongIds(*record);
    const std::string description =
        "<album>\n <title>" + name + "</title>\n <playlist>True</playlist>\n</album>\n";
    std::uint32_t newId = 0;
    if (mediaManager->AddMedia(GetDeviceId(), description, "", name, kReplace, newId) != 0 || newId == 0)
        return;
    std::uint32_t position = 0;
    for (const std::uint32_t songId : songIds) {
        if (mediaManager->AddSongToPlaylist(newId, songId, position++) != 0)
            return;
    }
}

void korvel_digitalaudio::OnDeletePlaylist(const ICmdMessage& message, ICmdReturn*) {
    Playlist_Delete(message.GetNumber("MEDIA_ID"));
}

void korvel_digitalaudio::Playlist_Delete(std::uint32_t playlistId) {
    IMediaManager* mediaManager = GetMediaManager();
    if (playlistId != 0 && mediaManager)
        mediaManager->DeletePlaylist(playlistId);
}

void korvel_digitalaudio::Playlist_Delete(const std::string& name) {
    Playlist_Delete(GetPlaylistID(name));
}
