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
    m_songs.Change().push_back(added);
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
    // `items` may be the list that grows.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const std::vector<AudioMedia> added = items;
    const std::size_t pick = RandomPick(added.size());
    for (const AudioMedia& item : added) {
        m_songs.Change().push_back(item);
        UpdatePositionForSongAdded(item);
    }
    if (m_shuffle) {
        if (toFront)
            ShuffleQueue(pick < added.size() ? added[pick] : AudioMedia());
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
    AddSongList(items, m_currentMedia.type != MEDIA_NONE);
}

void AudioQueue::UpdatePositionForSongAdded(const AudioMedia&) {
    if (m_currentIndex == NO_SONG_INDEX && m_nextIndex == NO_SONG_INDEX)
        m_nextIndex = static_cast<std::uint32_t>(m_songs->size()) - 1;
}

// The current index stays, even where it now points at another item: what plays goes on playing.
void AudioQueue::RemoveSong(const AudioMedia& item) {
    // `item` may be one of those that go.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const AudioMedia removed = item;
    std::erase(m_songs.Change(), removed);
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
    // `items` may be the list that is replaced.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const std::vector<AudioMedia> replacement = items;
    const auto current = std::find(replacement.begin(), replacement.end(), m_currentMedia);
    const bool found = current != replacement.end();
    m_currentIndex = found ? static_cast<std::uint32_t>(current - replacement.begin()) : NO_SONG_INDEX;
    m_nextIndex = NO_SONG_INDEX;
    m_shuffled.clear();
    m_songs.Change() = replacement;
    if (m_shuffle) { // a number is drawn for an empty list, too
        const std::size_t pick = RandomPick(replacement.size());
        if (!replacement.empty())
            ShuffleQueue(replacement[std::min(pick, replacement.size() - 1)]);
    }
    UpdateInfoVariable();
    return !found || (m_state != PAUSE && m_state != PLAY);
}

void AudioQueue::ClearSongs() {
    if (IsInternetRadio())
        RemoveCurrentSong();
    m_mode = Mode::kSongs;
    m_currentMedia.type = MEDIA_NONE;
    m_songs.Change().clear();
    m_shuffled.clear();
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

AudioMedia& AudioQueue::GetCurrentMedia() {
    return IsSingleStream() && !m_songs->empty() ? m_songs.Change().front() : m_currentMedia;
}
