#include "commands/Parameters.h"
#include "driver/Asserts.h"
#include "driver/korvel_digitalaudio.h"

// The room joins the queue that media is added to; it hears it once it selects the source.
void korvel_digitalaudio::AttachRoom(AudioQueue& queue, std::uint32_t roomId) {
    queue.AddRoomClient(roomId);
    FireEvent(1);
    UpdateRoomMapInfoVar();
}

namespace {

// What a queue whose song was just added plays next. A new queue is not started here: it plays when its
// stream is there.
void PinAndPlay(AudioQueue& queue, const AudioMedia& item, bool created) {
    if (!queue.IsShuffleSet())
        queue.SetNextSong(item);
    if (!created)
        queue.PlayNextSong(true, false);
}

} // namespace

void korvel_digitalaudio::OnAddSong(const ICmdMessage& message, ICmdReturn* ret) {
    const std::string room = message.GetParam("ROOM_ID");
    const std::string mediaId = message.GetParam("MEDIA_ID");
    if (room.empty() || mediaId.empty())
        return;
    commands::AddFlags flags(message);
    const std::uint32_t roomId = kv::ToULong(room);
    AudioQueue* queue = nullptr;
    bool created = false;
    if (AudioServer_CreateQueue(roomId, &queue, &created) != 0)
        return;
    if (queue->IsRhapsodyChannel() || queue->IsInternetRadio())
        flags.ForceAll();
    AttachRoom(*queue, roomId);
    if (flags.clear)
        queue->ClearSongs();

    const std::string source = message.GetParam("SOURCE");
    AudioMedia item;
    item.type = source.empty() ? static_cast<std::int32_t>(MEDIA_DIGITAL) : kv::ToLong(source);
    switch (item.type) {
        case MEDIA_DIGITAL:
            item.mediaId = kv::ToULong(mediaId);
            queue->SetIsRhapsodyChannel(false);
            break;
        case MEDIA_RHAPSODY_TRACK:
            item.externalId = mediaId;
            queue->SetIsRhapsodyChannel(false);
            queue->SetIsInternetRadio(false);
            break;
        case MEDIA_RHAPSODY_CHANNEL:
            item.externalId = mediaId;
            queue->SetIsRhapsodyChannel(true);
            flags.playNext = flags.playNow = true;
            break;
        case MEDIA_INTERNET_RADIO:
            kv::AssertWrite(asserts::kDriverPath, asserts::kAddSongRadio, kv::StackTrace());
            break;
        default:
            kv::AssertWrite(asserts::kDriverPath, asserts::kAddSongSource, kv::StackTrace());
            if (created) { // an existing queue takes the item as it is
                if (AudioServer* server = AudioServer_GetServerFromRoom(roomId))
                    RoomClient_DeselectAll(server, roomId);
                return;
            }
    }

    queue->AddSong(item, false, flags.playNext);
    InterruptClearTimer(queue);
    if (flags.playNow && queue->GetQueueState() != PLAY)
        PinAndPlay(*queue, item, created);
    if (flags.playNext)
        PinAndPlay(*queue, item, created);
    UpdateQueueStatusVariable();
    queue->UpdateInfoVariable();
    ReturnQueueId(ret, queue->GetQueueId());
}
