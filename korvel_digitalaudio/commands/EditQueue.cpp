// Commands that change the song list of a queue after it was filled.
#include "basics/Asserts.h"
#include "commands/Items.h"
#include "driver/korvel_digitalaudio.h"

namespace {

// The new list of an edit document; elements that name no known media keep their place as empty items.
std::vector<AudioMedia> ReadEditedList(const KVXML::INode& root) {
    std::vector<AudioMedia> items;
    items.reserve(root.GetChildCount());
    for (std::size_t i = 0; i < root.GetChildCount(); ++i) {
        auto item = commands::ReadItem(root.GetChild(i), commands::Sources::kSongs);
        if (!item.known)
            kv::AssertWrite(asserts::kDriverPath, asserts::kEditSource, kv::StackTrace());
        items.push_back(std::move(item.media));
    }
    return items;
}

// What played is gone: the queue stands at the top of its new list, and plays on if it was playing.
void RestartFromTop(AudioQueue& queue) {
    queue.RemoveCurrentSong();
    const QueueState state = queue.GetQueueState();
    queue.SetQueueState(STOP);
    queue.SetNextSong(queue.GetFirstSong());
    if (state == PLAY && !queue.IsSongListEmpty())
        queue.PlayFirstSong();
}

} // namespace

void korvel_digitalaudio::OnEditQueue(const ICmdMessage& message, ICmdReturn*) {
    AudioQueue* queue = AudioServer_GetQueueFromRoom(message.GetNumber("ROOM_ID"));
    const auto document = queue ? KVXML::CreateXmlDocument(message.GetParam("MEDIA")) : nullptr;
    if (!document)
        return;
    const auto root = document->GetRoot();
    if (root->GetName() != "MEDIA")
        kv::AssertWrite(asserts::kDriverPath, asserts::kEditRootName, kv::StackTrace());
    if (queue->ReplaceSongList(ReadEditedList(*root)))
        RestartFromTop(*queue);
    UpdateQueueStatusVariable();
}

void korvel_digitalaudio::OnRemoveSong(const ICmdMessage& message, ICmdReturn*) {
    AudioQueue* queue = AudioServer_GetQueueFromRoom(message.GetNumber("ROOM_ID"));
    if (!queue)
        return;
    const AudioMedia current = queue->GetCurrentMedia();
    const AudioMedia next = queue->PeekNextSong();
    const auto item = commands::ReadItem(message, commands::Sources::kSongs);
    if (!item.known) {
        kv::AssertWrite(asserts::kDriverPath, asserts::kRemoveSongSource, kv::StackTrace());
        return;
    }
    queue->RemoveSong(item.media);
    if (item.media == current) {
        queue->SetNextSong(next);
        queue->PlayNextSong(true, next.type == MEDIA_NONE);
    }
    UpdateQueueStatusVariable();
}
