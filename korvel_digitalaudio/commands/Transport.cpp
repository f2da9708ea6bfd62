// Commands that move a room's queue through its songs and states.
#include "commands/RhapsodyMessages.h"
#include "driver/korvel_digitalaudio.h"
#include "platform/Text.h"

// The queue that a transport command is for; null when there is none or the device that registered for the
// queue's notifications has dealt with the command itself.
AudioQueue* korvel_digitalaudio::QueueForTransport(const ICmdMessage& message) {
    const std::string room = message.GetParam("ROOM_ID");
    if (room.empty())
        return nullptr;
    const std::uint32_t roomId = kv::ToULong(room);
    AudioQueue* queue = AudioServer_GetQueueFromRoom(roomId);
    if (!queue || queue->HandleRoomCommand(message.GetName(), room))
        return nullptr;
    return AudioServer_GetQueueFromRoom(roomId); // the device may have ended the queue
}

void korvel_digitalaudio::OnPlay(const ICmdMessage& message, ICmdReturn*) {
    AudioQueue* queue = QueueForTransport(message);
    if (!queue)
        return;
    InterruptClearTimer(queue);
    queue->SetQueueState(PLAY);
    UpdateQueueStatusVariable();
}

void korvel_digitalaudio::OnPause(const ICmdMessage& message, ICmdReturn*) {
    AudioQueue* queue = QueueForTransport(message);
    if (!queue)
        return;
    queue->SetQueueState(queue->IsRhapsodyChannel() ? STOP : PAUSE);
    UpdateQueueStatusVariable();
}

void korvel_digitalaudio::OnStop(const ICmdMessage& message, ICmdReturn*) {
    AudioQueue* queue = QueueForTransport(message);
    if (!queue)
        return;
    queue->SetQueueState(STOP);
    UpdateQueueStatusVariable();
}

// A user's skip always starts play again, also after an error stop.
void korvel_digitalaudio::OnSkipFwd(const ICmdMessage& message, ICmdReturn*) {
    AudioQueue* queue = QueueForTransport(message);
    if (!queue)
        return;
    queue->ClearStoppedByErrors();
    queue->ResetErrorCount();
    queue->PlayNextSong(true, false);
    UpdateQueueStatusVariable();
}

void korvel_digitalaudio::OnSkipRev(const ICmdMessage& message, ICmdReturn*) {
    AudioQueue* queue = QueueForTransport(message);
    if (!queue || queue->IsRhapsodyChannel())
        return;
    queue->PlayNextSong(false, false);
    UpdateQueueStatusVariable();
}

void korvel_digitalaudio::OnGoToSong(const ICmdMessage& message, ICmdReturn*) {
    const std::string room = message.GetParam("ROOM_ID");
    const std::string mediaId = message.GetParam("MEDIA_ID");
    if (room.empty() || mediaId.empty() || mediaId == rhapsody::kTrackMediaId)
        return;
    const std::string source = message.GetParam("SOURCE");
    AudioMedia item;
    item.type = source.empty() ? static_cast<std::int32_t>(MEDIA_DIGITAL) : kv::ToLong(source);
    if (item.type == MEDIA_DIGITAL)
        item.mediaId = kv::ToULong(mediaId);
    else if (item.type == MEDIA_RHAPSODY_TRACK)
        item.externalId = mediaId;

    AudioQueue* queue = AudioServer_GetQueueFromRoom(kv::ToULong(room));
    if (!queue)
        return;
    InterruptClearTimer(queue);
    const std::string index = message.GetParam("MEDIA_INDEX");
    if (index.empty())
        queue->SetNextSong(item);
    else
        queue->SetNextSong(kv::ToULong(index));
    queue->PlayNextSong(true, false);
    UpdateQueueStatusVariable();
}

// Without a value the mode is toggled. The room remembers the value also when it has no queue now.
void korvel_digitalaudio::OnRepeat(const ICmdMessage& message, ICmdReturn*) {
    const std::string room = message.GetParam("ROOM_ID");
    if (room.empty())
        return;
    const std::uint32_t roomId = kv::ToULong(room);
    const std::string wanted = message.GetParam("REPEAT");
    bool on = kv::ToULong(wanted) != 0;
    if (AudioQueue* queue = AudioServer_GetQueueFromRoom(roomId)) {
        if (wanted.empty())
            on = !queue->IsRepeatSet();
        queue->SetRepeat(on);
    }
    AddRoomsRepeatState(roomId, on);
}

void korvel_digitalaudio::OnShuffle(const ICmdMessage& message, ICmdReturn*) {
    const std::string room = message.GetParam("ROOM_ID");
    if (room.empty())
        return;
    const std::uint32_t roomId = kv::ToULong(room);
    const std::string wanted = message.GetParam("SHUFFLE");
    bool on = kv::ToULong(wanted) != 0;
    if (AudioQueue* queue = AudioServer_GetQueueFromRoom(roomId)) {
        if (wanted.empty())
            on = !queue->IsShuffleSet();
        queue->SetShuffle(on);
    }
    AddRoomsShuffleState(roomId, on);
}
