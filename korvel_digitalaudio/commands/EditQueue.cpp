// Commands that change the song list of a queue after it was filled.
#include "commands/Parameters.h"
#include "driver/Asserts.h"
#include "driver/korvel_digitalaudio.h"

namespace {

// The new list of an edit document; elements that name no known media keep their place as empty items.
std::vector<AudioMedia> ReadEditedList(const KVXML::INode& root) {
    std::vector<AudioMedia> items;
    items.reserve(root.GetChildCount());
    for (std::size_t i = 0; i < root.GetChildCount(); ++i) {
        const KVXML::INode& element = root.GetChild(i);
        AudioMedia item;
        if (element.GetName() == "MEDIA_ID") {
            item = AudioMedia::CreateTypeDigital(kv::ToULong(element.GetText()));
        } else if (element.GetName() == "SONG") {
            item.type = kv::ToLong(element.GetAttribute("SOURCE"));
            if (item.type == MEDIA_DIGITAL)
                item.mediaId = kv::ToULong(element.GetAttribute("ID"));
            else if (item.type == MEDIA_RHAPSODY_TRACK)
                item.externalId = element.GetAttribute("ID");
            else
                kv::AssertWrite(asserts::kDriverPath, asserts::kEditSource, kv::StackTrace());
        }
        items.push_back(item);
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
    const std::string room = message.GetParam("ROOM_ID");
    const std::string media = message.GetParam("MEDIA");
    if (room.empty() || media.empty())
        return;
    AudioQueue* queue = AudioServer_GetQueueFromRoom(kv::ToULong(room));
    const auto document = queue ? KVXML::CreateXmlDocument(media) : nullptr;
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
    const std::string room = message.GetParam("ROOM_ID");
    const std::string mediaId = message.GetParam("MEDIA_ID");
    AudioQueue* queue = room.empty() ? nullptr : AudioServer_GetQueueFromRoom(kv::ToULong(room));
    if (!queue || mediaId.empty())
        return;
    const AudioMedia current = queue->GetCurrentMedia();
    const AudioMedia next = queue->PeekNextSong();

    const std::string source = message.GetParam("SOURCE");
    const std::int32_t type = source.empty() ? static_cast<std::int32_t>(MEDIA_DIGITAL) : kv::ToLong(source);
    AudioMedia item;
    if (type == MEDIA_DIGITAL) {
        item = AudioMedia::CreateTypeDigital(kv::ToULong(mediaId));
    } else if (type == MEDIA_RHAPSODY_TRACK) {
        item = AudioMedia::CreateExternal(type, mediaId);
    } else {
        kv::AssertWrite(asserts::kDriverPath, asserts::kRemoveSongSource, kv::StackTrace());
        return;
    }
    queue->RemoveSong(item);
    if (item == current) {
        queue->SetNextSong(next);
        queue->PlayNextSong(true, next.type == MEDIA_NONE);
    }
    UpdateQueueStatusVariable();
}
