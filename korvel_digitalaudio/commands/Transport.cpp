// Commands that move a room's queue through its songs and states.
#include "basics/Flags.h"
#include "commands/Items.h"
#include "commands/RhapsodyMessages.h"
#include "driver/korvel_digitalaudio.h"

// The queue that a transport command is for, wherever the room goes meanwhile; null when there is none, or the
// device that registered for the queue's notifications has dealt with the command itself or ended the queue.
AudioQueue* korvel_digitalaudio::QueueForTransport(const ICmdMessage& message) {
    AudioQueue* queue = AudioServer_GetQueueFromRoom(message.GetNumber("ROOM_ID"));
    if (!queue || queue->HandleRoomCommand(message.GetName(), message.GetParam("ROOM_ID")))
        return nullptr;
    return queue->IsClosed() ? nullptr : queue;
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

// The place in the list wins over the item when both are given.
void korvel_digitalaudio::OnGoToSong(const ICmdMessage& message, ICmdReturn*) {
    if (message.GetParam("MEDIA_ID") == rhapsody::kTrackMediaId)
        return;
    AudioQueue* queue = AudioServer_GetQueueFromRoom(message.GetNumber("ROOM_ID"));
    if (!queue)
        return;
    InterruptClearTimer(queue);
    if (message.GetParam("MEDIA_INDEX").empty())
        queue->SetNextSong(commands::ReadItem(message, commands::Sources::kSongs).media);
    else
        queue->SetNextSong(message.GetNumber("MEDIA_INDEX"));
    queue->PlayNextSong(true, false);
    UpdateQueueStatusVariable();
}

// The room remembers the mode also when it has no queue now.
void korvel_digitalaudio::OnRepeat(const ICmdMessage& message, ICmdReturn*) {
    const std::uint32_t roomId = message.GetNumber("ROOM_ID");
    AudioQueue* queue = AudioServer_GetQueueFromRoom(roomId);
    const bool on = flags::ReadFilled(message, "REPEAT", queue && !queue->IsRepeatSet());
    if (queue)
        queue->SetRepeat(on);
    AddRoomsRepeatState(roomId, on);
}

void korvel_digitalaudio::OnShuffle(const ICmdMessage& message, ICmdReturn*) {
    const std::uint32_t roomId = message.GetNumber("ROOM_ID");
    AudioQueue* queue = AudioServer_GetQueueFromRoom(roomId);
    const bool on = flags::ReadFilled(message, "SHUFFLE", queue && !queue->IsShuffleSet());
    if (queue)
        queue->SetShuffle(on);
    AddRoomsShuffleState(roomId, on);
}
