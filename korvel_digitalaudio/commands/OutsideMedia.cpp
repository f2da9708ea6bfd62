// Internet radio and the streaming service, whose answers arrive later.
#include "basics/LogLevels.h"
#include "commands/Adding.h"
#include "driver/korvel_digitalaudio.h"
#include "platform/XmlHelper.h"

namespace {

// The device that added the station hears of what becomes of it; another one that did before is told that the
// queue is gone.
void RegisterForNotifications(AudioQueue& queue, std::uint32_t deviceId, const std::string& queueInfo) {
    if (queue.GetNotificationDevice() != 0 && queue.GetNotificationDevice() != deviceId)
        queue.ClearNotifications();
    queue.SetNotificationDevice(deviceId);
    queue.SetQueueInfo(queueInfo);
}

// A station of the media database or, without an id, of an outside catalogue; the empty item without either.
AudioMedia ReadStation(const ICmdMessage& message) {
    const std::string mediaId = message.GetParam("MEDIA_ID");
    AudioMedia station = AudioMedia::CreateExternal(MEDIA_INTERNET_RADIO, message.GetParam("MEDIA"));
    if (!mediaId.empty()) {
        station.externalId.clear();
        station.mediaId = kv::ToULong(mediaId);
    } else if (station.externalId.empty()) {
        return {};
    }
    return station;
}

} // namespace

void korvel_digitalaudio::OnAddIRSTREAM(const ICmdMessage& message, ICmdReturn* ret) {
    const auto queue = OpenQueueForMedia(message.GetNumber("ROOM_ID"), [&](AudioQueue& opened) {
        RegisterForNotifications(opened, message.GetNumber("DEVICE_ID"), message.GetParam("QUEUE_INFO"));
    });
    if (!queue)
        return;
    const AudioMedia station = ReadStation(message);
    if (station.type == MEDIA_NONE) {
        LogMessage(log_levels::kFailed,
                   "korvel_digitalaudio::OnAddIRSTREAM called with no station or media id");
        return;
    }
    queue->ClearSecondaryInfo();
    queue->SetIsInternetRadio(true);
    queue->AddSong(station, false, true);
    InterruptClearTimer(queue.Get());
    commands::GoToItem(queue, station);
    UpdateQueueStatusVariable();
    queue->UpdateInfoVariable();
    ReturnQueueId(ret, queue->GetQueueId());
}

void korvel_digitalaudio::OnGetRhapsodyMyPlaylists(const ICmdMessage& message, ICmdReturn*) {
    if (!m_rhapsody)
        return;
    m_playlistsDevice = message.GetNumber("deviceid");
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
    const auto queue = OpenQueueForMedia(m_pendingRhapsodyRoom, nullptr);
    if (!queue)
        return;
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
