#include "commands/Adding.h"

#include "driver/korvel_digitalaudio.h"

using commands::AddFlags;
using commands::OpenedQueue;

OpenedQueue korvel_digitalaudio::OpenQueueForMedia(std::uint32_t roomId, const PrepareQueue& prepare) {
    AudioQueue* queue = nullptr;
    bool created = false;
    if (AudioServer_CreateQueue(roomId, &queue, &created) != 0)
        return {};
    if (prepare)
        prepare(*queue);
    // The room hears it once it selects the source.
    queue->AddRoomClient(roomId);
    FireEvent(1);
    UpdateRoomMapInfoVar();
    return {queue, created};
}

// New media takes the place of a single stream.
OpenedQueue korvel_digitalaudio::OpenQueueForMedia(std::uint32_t roomId, AddFlags& flags,
                                                   const PrepareQueue& prepare) {
    const OpenedQueue opened = OpenQueueForMedia(roomId, [&](AudioQueue& queue) {
        if (commands::PlaysOneStream(queue))
            flags.SetAll();
        if (prepare)
            prepare(queue);
    });
    if (opened && flags.clear)
        opened->ClearSongs();
    return opened;
}

namespace commands {

void EnterModeOf(const AudioMedia& item, AudioQueue& queue, AddFlags& flags) {
    if (item.type == MEDIA_DIGITAL) {
        queue.SetIsRhapsodyChannel(false);
    } else if (item.type == MEDIA_RHAPSODY_TRACK) {
        queue.SetIsRhapsodyChannel(false);
        queue.SetIsInternetRadio(false);
    } else if (item.type == MEDIA_RHAPSODY_CHANNEL) {
        queue.SetIsRhapsodyChannel(true);
        flags.playNext = flags.playNow = true;
    }
}

void GoToItem(const OpenedQueue& queue, const AudioMedia& item) {
    if (!queue->IsShuffleSet())
        queue->SetNextSong(item);
    if (!queue.IsNew())
        queue->PlayNextSong(true, false);
}

void GoToFirst(const OpenedQueue& queue, const std::vector<AudioMedia>& items) {
    if (!items.empty() && !queue->IsShuffleSet())
        queue->SetNextSong(items.front());
    if (queue->PeekNextSong().type != MEDIA_NONE && !queue.IsNew())
        queue->PlayNextSong(true, false);
}

} // namespace commands
