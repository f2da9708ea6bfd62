#include <algorithm>

#include "platform/System.h"
#include "queue/AudioQueue.h"

namespace {

// A random position among `count` items; `count` itself for the largest random number.
std::size_t RandomPick(std::size_t count) {
    constexpr double kLargestRandom = 2147483647.0;
    return static_cast<std::size_t>(kv::Random() / kLargestRandom * static_cast<double>(count));
}

} // namespace

void AudioQueue::AddSong(const AudioMedia& item, bool updateInfo, bool toFront) {
    // `item` may be one of the list that grows.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const AudioMedia added = item;
    m_songs.Add(added);
    if (m_songs->size() == 1)
        SetNextSong(added);
    if (m_shuffle) {
        if (toFront)
            ShuffleQueue(added);
        else
            ShuffleQueue();
    }
    m_inputFile.clear();
    if (updateInfo)
        UpdateInfoVariable();
}

void AudioQueue::AddSongList(const std::vector<AudioMedia>& items, bool toFront) {
    if (items.empty() || IsListLocked())
        return;
    const std::size_t count = items.size(); // `items` may be the list that grows
    const std::size_t pick = RandomPick(count);
    m_songs.MakeRoom(count);
    for (std::size_t i = 0; i < count; ++i) {
        m_songs.Add(items[i]);
        UpdatePositionForSongAdded(items[i]);
    }
    if (m_shuffle) {
        if (toFront)
            ShuffleQueue(pick < count ? items[pick] : AudioMedia());
        else
            ShuffleQueue();
    }
    m_inputFile.clear();
    UpdateInfoVariable();
}

// Unlike the list of items, a list of ids looks at what is current: a playing queue keeps a random one of the
// new songs for next.
void AudioQueue::AddSongList(const std::vector<std::uint32_t>& mediaIds) {
    std::vector<AudioMedia> items;
    items.reserve(mediaIds.size());
    for (const std::uint32_t mediaId : mediaIds)
        items.push_back(AudioMedia::CreateTypeDigital(mediaId));
    AddSongList(items, m_currentMedia->type != MEDIA_NONE);
}

void AudioQueue::UpdatePositionForSongAdded(const AudioMedia&) {
    if (m_currentIndex == NO_SONG_INDEX && m_nextIndex == NO_SONG_INDEX)
        m_nextIndex = static_cast<std::uint32_t>(m_songs->size()) - 1;
}

// The current index stays, even where it now points at another item: what plays goes on playing.
void AudioQueue::RemoveSong(const AudioMedia& item) {
    m_songs.Remove(item);
    m_nextIndex = NO_SONG_INDEX;
    if (m_shuffle)
        ShuffleQueue();
    if (m_songs->empty()) {
        RemoveCurrentSong();
        if (IsRhapsodyChannel())
            SetIsRhapsodyChannel(false);
        else if (IsInternetRadio())
            SetIsInternetRadio(false);
    }
    UpdateInfoVariable();
}

bool AudioQueue::ReplaceSongList(const std::vector<AudioMedia>& items) {
    if (IsListLocked())
        return false;
    m_songs.Replace(items);
    m_shuffled.Change().clear();
    const auto current = std::find(m_songs->begin(), m_songs->end(), *m_currentMedia);
    const bool found = current != m_songs->end();
    m_currentIndex = found ? static_cast<std::uint32_t>(current - m_songs->begin()) : NO_SONG_INDEX;
    m_nextIndex = NO_SONG_INDEX;
    if (m_shuffle) { // a number is drawn for an empty list, too
        const std::size_t pick = RandomPick(m_songs->size());
        if (!m_songs->empty())
            ShuffleQueue((*m_songs)[std::min(pick, m_songs->size() - 1)]);
    }
    UpdateInfoVariable();
    return !found || (m_state != PAUSE && m_state != PLAY);
}

void AudioQueue::ClearSongs() {
    if (IsInternetRadio())
        RemoveCurrentSong();
    m_mode = Mode::kSongs;
    m_currentMedia.Change().type = MEDIA_NONE;
    m_songs.Replace({});
    m_shuffled.Change().clear();
    m_currentIndex = NO_SONG_INDEX;
    m_nextIndex = NO_SONG_INDEX;
    UpdateInfoVariable();
}

void AudioQueue::SetNextSong(std::uint32_t index) {
    if (!IsListLocked())
        m_nextIndex = index;
}

void AudioQueue::SetNextSong(const AudioMedia& item) {
    if (IsListLocked())
        return;
    const auto& list = ActiveList();
    const auto found = std::find(list.begin(), list.end(), item);
    if (found != list.end())
        m_nextIndex = static_cast<std::uint32_t>(found - list.begin());
}

void AudioQueue::RemoveCurrentSong() {
    AddPacket(std::make_unique<ASRemoveMediaPacket>());
}

const AudioMedia& AudioQueue::GetCurrentMedia() const {
    return IsSingleStream() && !m_songs->empty() ? m_songs->front() : *m_currentMedia;
}
