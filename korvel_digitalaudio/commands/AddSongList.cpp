#include "commands/Parameters.h"
#include "driver/Asserts.h"
#include "driver/korvel_digitalaudio.h"

namespace {

constexpr unsigned int kMaxPlaylistTracks = 500;
// The SOURCE of a list's element that names a playlist of the streaming service.
constexpr std::int32_t kPlaylistSource = MEDIA_RESERVED;

} // namespace

void korvel_digitalaudio::OnAddSongList(const ICmdMessage& message, ICmdReturn* ret) {
    const std::string room = message.GetParam("ROOM_ID");
    const std::string media = message.GetParam("MEDIA");
    if (room.empty() || media.empty())
        return;
    commands::AddFlags flags(message);
    const std::uint32_t roomId = kv::ToULong(room);
    AudioQueue* queue = nullptr;
    bool created = false;
    if (AudioServer_CreateQueue(roomId, &queue, &created) != 0)
        return;
    if (queue->IsRhapsodyChannel() || queue->IsInternetRadio())
        flags.ForceAll();
    InterruptClearTimer(queue);
    AttachRoom(*queue, roomId);
    if (flags.clear)
        queue->ClearSongs();

    if (const auto document = KVXML::CreateXmlDocument(media)) {
        const auto items = ReadSongList(*document->GetRoot(), *queue, roomId, flags.playNow, flags.playNext);
        queue->AddSongList(items, flags.playNext);
        bool changed = flags.playNext;
        if (flags.playNow && queue->GetQueueState() != PLAY) {
            changed = true;
            const AudioMedia next = queue->GetNextSong();
            if (next.type != MEDIA_NONE) {
                queue->SetNextSong(next);
                if (!created)
                    queue->PlayNextSong(true, false);
            }
        }
        if (flags.playNext) {
            if (!items.empty() && !queue->IsShuffleSet())
                queue->SetNextSong(items.front());
            if (queue->PeekNextSong().type != MEDIA_NONE && !created)
                queue->PlayNextSong(true, false);
        }
        if (changed)
            UpdateQueueStatusVariable();
    }
    ReturnQueueId(ret, queue->GetQueueId());
}

// Reads the elements of a list. Items of the streaming service switch the queue's mode, a channel wants to
// play now.
std::vector<AudioMedia> korvel_digitalaudio::ReadSongList(const KVXML::INode& root, AudioQueue& queue,
                                                          std::uint32_t roomId, bool& playNow,
                                                          bool& playNext) {
    if (root.GetName() != "MEDIA")
        kv::AssertWrite(asserts::kDriverPath, asserts::kSongListRootName, kv::StackTrace());
    std::vector<AudioMedia> items;
    items.reserve(root.GetChildCount());
    for (std::size_t i = 0; i < root.GetChildCount(); ++i) {
        const KVXML::INode& element = root.GetChild(i);
        AudioMedia item; // an element of any other name leaves it empty
        if (element.GetName() == "MEDIA_ID") {
            item = AudioMedia::CreateTypeDigital(kv::ToULong(element.GetText()));
        } else if (element.GetName() == "SONG") {
            const std::string id = element.GetAttribute("ID");
            item.type = kv::ToLong(element.GetAttribute("SOURCE"));
            switch (item.type) {
                case MEDIA_DIGITAL:
                    item.mediaId = kv::ToULong(id);
                    queue.SetIsRhapsodyChannel(false);
                    break;
                case MEDIA_RHAPSODY_TRACK:
                    item.externalId = id;
                    queue.SetIsRhapsodyChannel(false);
                    queue.SetIsInternetRadio(false);
                    break;
                case MEDIA_RHAPSODY_CHANNEL:
                    item.externalId = id;
                    queue.SetIsRhapsodyChannel(true);
                    playNow = playNext = true;
                    break;
                case kPlaylistSource:
                    RequestRhapsodyPlaylist(id, roomId);
                    break;
                default:
                    kv::AssertWrite(asserts::kDriverPath, asserts::kSongListSource, kv::StackTrace());
                    continue;
            }
        }
        items.push_back(item);
    }
    return items;
}

// The tracks arrive later and replace the songs of the room's queue.
void korvel_digitalaudio::RequestRhapsodyPlaylist(const std::string& playlistId, std::uint32_t roomId) {
    if (!m_rhapsody)
        return;
    m_rhapsody->GetTracksForPlaylist(playlistId, 0, kMaxPlaylistTracks, 0, this);
    m_pendingRhapsodyRoom = roomId;
}
