#include "basics/Asserts.h"
#include "commands/Adding.h"
#include "commands/Items.h"
#include "driver/korvel_digitalaudio.h"

namespace {

constexpr unsigned int kMaxPlaylistTracks = 500;
// The SOURCE of a list's element that names a playlist of the streaming service.
constexpr std::int32_t kPlaylistSource = MEDIA_RESERVED;

// Moves on to the next song and pins it, whatever the order, so that it is the one that plays.
void StartNextSong(const commands::OpenedQueue& queue) {
    const AudioMedia next = queue->GetNextSong();
    if (next.type == MEDIA_NONE)
        return;
    queue->SetNextSong(next);
    if (!queue.IsNew())
        queue->PlayNextSong(true, false);
}

} // namespace

void korvel_digitalaudio::OnAddSongList(const ICmdMessage& message, ICmdReturn* ret) {
    const std::uint32_t roomId = message.GetNumber("ROOM_ID");
    auto flags = commands::AddFlags::Read(message);
    const auto queue =
        OpenQueueForMedia(roomId, flags, [this](AudioQueue& opened) { InterruptClearTimer(&opened); });
    if (!queue)
        return;
    if (const auto document = KVXML::CreateXmlDocument(message.GetParam("MEDIA"))) {
        const auto items = TakeSongList(*document->GetRoot(), *queue, roomId, flags);
        queue->AddSongList(items, flags.playNext);
        const bool startsNow = flags.playNow && queue->GetQueueState() != PLAY;
        if (startsNow)
            StartNextSong(queue);
        if (flags.playNext)
            commands::GoToFirst(queue, items);
        if (startsNow || flags.playNext)
            UpdateQueueStatusVariable();
    }
    ReturnQueueId(ret, queue->GetQueueId());
}

// In the list's order: what an element does to the queue is done before the next one is looked at.
std::vector<AudioMedia> korvel_digitalaudio::TakeSongList(const KVXML::INode& root, AudioQueue& queue,
                                                          std::uint32_t roomId, commands::AddFlags& flags) {
    if (root.GetName() != "MEDIA")
        kv::AssertWrite(asserts::kDriverPath, asserts::kSongListRootName, kv::StackTrace());
    std::vector<AudioMedia> items;
    items.reserve(root.GetChildCount());
    for (std::size_t i = 0; i < root.GetChildCount(); ++i) {
        const KVXML::INode& element = root.GetChild(i);
        auto item = commands::ReadItem(element, commands::Sources::kSongsAndChannels);
        if (item.media.type == kPlaylistSource) {
            RequestRhapsodyPlaylist(std::string(element.GetAttribute("ID")), roomId);
        } else if (!item.known) {
            kv::AssertWrite(asserts::kDriverPath, asserts::kSongListSource, kv::StackTrace());
            continue;
        } else if (commands::IsSong(element)) { // a bare id leaves the queue's mode alone
            commands::EnterModeOf(item.media, queue, flags);
        }
        items.push_back(std::move(item.media));
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
