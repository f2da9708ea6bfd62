// Internet radio and the streaming service, whose answers arrive later.
#include "commands/Parameters.h"
#include "driver/korvel_digitalaudio.h"
#include "platform/XmlHelper.h"

namespace {
constexpr int kLogLink = 3;
}

void korvel_digitalaudio::OnAddIRSTREAM(const ICmdMessage& message, ICmdReturn* ret) {
    const std::string room = message.GetParam("ROOM_ID");
    if (room.empty())
        return;
    const std::uint32_t roomId = kv::ToULong(room);
    AudioQueue* queue = nullptr;
    bool created = false;
    if (AudioServer_CreateQueue(roomId, &queue, &created) != 0)
        return;
    const std::uint32_t deviceId = message.GetNumber("DEVICE_ID");
    if (queue->GetNotificationDevice() != 0 && queue->GetNotificationDevice() != deviceId)
        queue->ClearNotifications();
    queue->SetNotificationDevice(deviceId);
    queue->SetQueueInfo(message.GetParam("QUEUE_INFO"));
    AttachRoom(*queue, roomId);

    const std::string mediaId = message.GetParam("MEDIA_ID");
    const std::string station = message.GetParam("MEDIA");
    if (mediaId.empty() && station.empty()) {
        LogMessage(kLogLink, "korvel_digitalaudio::OnAddIRSTREAM called with no station or media id");
        return;
    }
    AudioMedia item;
    item.type = MEDIA_INTERNET_RADIO;
    if (mediaId.empty())
        item.externalId = station;
    else
        item.mediaId = kv::ToULong(mediaId);

    queue->ClearSecondaryInfo();
    queue->SetIsInternetRadio(true);
    queue->AddSong(item, false, true);
    InterruptClearTimer(queue);
    if (!queue->IsShuffleSet())
        queue->SetNextSong(item);
    if (!created)
        queue->PlayNextSong(true, false);
    UpdateQueueStatusVariable();
    queue->UpdateInfoVariable();
    ReturnQueueId(ret, queue->GetQueueId());
}

void korvel_digitalaudio::OnGetRhapsodyMyPlaylists(const ICmdMessage& message, ICmdReturn*) {
    const std::string device = message.GetParam("deviceid");
    if (device.empty() || !m_rhapsody)
        return;
    m_playlistsDevice = kv::ToULong(device);
    m_rhapsody->GetMemberPlaylists(this);
}

void korvel_digitalaudio::SendMemberPlaylists(const std::vector<DataPlaylistLite>& playlists) {
    const auto root = KVXML::CreateXmlNode("RhapsodyPlaylists");
    for (const DataPlaylistLite& playlist : playlists) {
        auto element = XmlHelper::AddChild(*root, "Playlist");
        XmlHelper::toXml(playlist.id, *element, "PlaylistId");
        XmlHelper::toXml(playlist.name, *element, "Name");
    }
    SendDataToDevice(m_playlistsDevice, *root);
}

// The tracks of the playlist that a song list named replace what the room's queue held; a room that left its
// queue meanwhile gets a new one.
void korvel_digitalaudio::FillWithPlaylistTracks(const std::vector<DataTrackInfo>& tracks) {
    AudioQueue* queue = nullptr;
    bool created = false;
    if (AudioServer_CreateQueue(m_pendingRhapsodyRoom, &queue, &created) != 0)
        return;
    AttachRoom(*queue, m_pendingRhapsodyRoom); // a new queue needs its room to be found by what comes next
    queue->SetIsRhapsodyChannel(false);
    queue->SetIsInternetRadio(false);
    queue->ClearSongs();
    for (const DataTrackInfo& track : tracks)
        queue->AddSong(AudioMedia::CreateExternal(MEDIA_RHAPSODY_TRACK, track.id), false, false);
    queue->SetNextSong(queue->GetFirstSong());
    queue->PlayNextSong(true, false);
    queue->UpdateInfoVariable();
    UpdateQueueStatusVariable();
}

// A track with a context is what the channel of that queue plays now; one without describes every queue's
// current track of that id.
void korvel_digitalaudio::ShowTrack(const DataTrackFull& track) {
    if (!track.context.empty()) {
        if (AudioQueue* queue = AudioServer_GetQueueFromId(kv::ToULong(track.context))) {
            queue->UpdateCurrentSongMetaData(track.id);
            queue->UpdateRoomMediaVariable(queue->GetFirstSong(), &track, false);
            queue->UpdateInfoVariable();
            UpdateQueueStatusVariable();
        }
        return;
    }
    ForEachQueue([&](AudioQueue& queue) {
        const AudioMedia current = queue.GetCurrentMedia();
        if (current.type != MEDIA_RHAPSODY_TRACK || current.externalId != track.id)
            return;
        queue.UpdateCurrentSongMetaData(track.id);
        queue.UpdateRoomMediaVariable(queue.GetCurrentMedia(), &track, false);
        queue.UpdateInfoVariable();
        UpdateQueueStatusVariable();
    });
}
