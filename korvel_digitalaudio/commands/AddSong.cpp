#include "basics/Asserts.h"
#include "commands/Adding.h"
#include "commands/Items.h"
#include "driver/korvel_digitalaudio.h"

void korvel_digitalaudio::OnAddSong(const ICmdMessage& message, ICmdReturn* ret) {
    const std::uint32_t roomId = message.GetNumber("ROOM_ID");
    auto flags = commands::AddFlags::Read(message);
    const auto queue = OpenQueueForMedia(roomId, flags, nullptr);
    if (!queue)
        return;
    const auto item = commands::ReadItem(message, commands::Sources::kSongsAndChannels);
    if (!item.known && RefusesItem(item.media, roomId, queue.IsNew()))
        return;
    commands::EnterModeOf(item.media, *queue, flags);

    queue->AddSong(item.media, false, flags.playNext);
    // Only now: no other command lets the timer run until the media is there.
    InterruptClearTimer(queue.Get());
    if (flags.playNow && queue->GetQueueState() != PLAY)
        commands::GoToItem(queue, item.media);
    if (flags.playNext)
        commands::GoToItem(queue, item.media);
    UpdateQueueStatusVariable();
    queue->UpdateInfoVariable();
    ReturnQueueId(ret, queue->GetQueueId());
}

// An existing queue takes an item of an unknown source as it is; a new one would have nothing else, and its
// rooms let go. A radio station has a command of its own, yet is taken.
bool korvel_digitalaudio::RefusesItem(const AudioMedia& item, std::uint32_t roomId, bool isNewQueue) {
    const bool radio = item.type == MEDIA_INTERNET_RADIO;
    kv::AssertWrite(asserts::kDriverPath, radio ? asserts::kAddSongRadio : asserts::kAddSongSource,
                    kv::StackTrace());
    if (radio || !isNewQueue)
        return false;
    if (AudioServer* server = AudioServer_GetServerFromRoom(roomId))
        RoomClient_DeselectAll(server, roomId);
    return true;
}
