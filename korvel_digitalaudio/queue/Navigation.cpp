#include <stdexcept>

#include "basics/Asserts.h"
#include "queue/AudioQueue.h"
#include "queue/Clock.h"

namespace {

// "Previous" this long after the last move starts the current song again.
constexpr std::uint32_t kRestartAfterMs = 5000;
constexpr std::uint32_t kIndexLimit = 4096;

} // namespace

// Logs carry the same words whichever standard library the driver was built with.
const AudioMedia& AudioQueue::ItemAt(const std::vector<AudioMedia>& list, std::uint32_t index) {
    if (index >= list.size())
        throw std::out_of_range("vector::_M_range_check");
    return list[index];
}

std::uint32_t AudioQueue::GetNextSongIndex() {
    if (m_songs->empty())
        return NO_SONG_INDEX;
    m_lastNavigation = MonotonicMilliseconds();
    if (m_nextIndex != NO_SONG_INDEX)
        return m_nextIndex;
    if (m_songs->size() == 1)
        return m_repeat ? 0 : NO_SONG_INDEX;

    const std::uint32_t next = m_currentIndex + 1;
    if (next < m_songs->size()) {
        m_reshuffled = false;
        return next == NO_SONG_INDEX && m_repeat ? 0 : next;
    }
    if (!m_repeat)
        return NO_SONG_INDEX;
    if (m_shuffle && !m_reshuffled)
        ShuffleQueue();
    return 0;
}

const AudioMedia* AudioQueue::FindNextSong() {
    if (m_songs->empty())
        return nullptr;
    if (IsSingleStream())
        return &m_songs->front();
    const std::uint32_t index = GetNextSongIndex();
    return index == NO_SONG_INDEX ? nullptr : &ItemAt(ActiveList(), index);
}

AudioMedia AudioQueue::PeekNextSong() {
    const AudioMedia* next = FindNextSong();
    return next ? *next : AudioMedia();
}

AudioMedia AudioQueue::GetNextSong() {
    if (m_songs->empty())
        return {};
    return IsSingleStream() ? m_songs->front() : MoveTo(GetNextSongIndex());
}

// Makes `index` current and uses up the pin. Moving to none keeps the current media: it goes on being what
// played last.
AudioMedia AudioQueue::MoveTo(std::uint32_t index) {
    m_currentIndex = index;
    m_nextIndex = NO_SONG_INDEX;
    if (index == NO_SONG_INDEX)
        return {};
    m_currentMedia.Change() = ItemAt(ActiveList(), index);
    return *m_currentMedia;
}

AudioMedia AudioQueue::GetFirstSong() {
    if (m_songs->empty())
        return {};
    if (IsSingleStream()) {
        m_currentMedia.Change() = m_songs->front();
        return *m_currentMedia;
    }
    m_lastNavigation = MonotonicMilliseconds();
    return MoveTo(0);
}

std::uint32_t AudioQueue::GetPreviousSongIndex() {
    const std::uint32_t now = MonotonicMilliseconds();
    const bool restart = !m_alwaysSkipPrevious && m_currentIndex != NO_SONG_INDEX &&
                         m_lastNavigation != kNeverNavigated && now - m_lastNavigation > kRestartAfterMs;
    m_lastNavigation = now;
    if (restart)
        return m_currentIndex;
    if (m_songs->size() == 1)
        return m_repeat ? 0 : NO_SONG_INDEX;

    const auto last = static_cast<std::uint32_t>(m_songs->size()) - 1;
    std::uint32_t previous = m_currentIndex - 1;
    if (m_currentIndex == NO_SONG_INDEX)
        previous = last;
    else if (m_currentIndex == 0)
        previous = m_repeat ? last : 0;
    if (previous < kIndexLimit)
        return previous;
    kv::AssertWrite(asserts::kQueuePath, asserts::kPreviousIndex, kv::StackTrace());
    return NO_SONG_INDEX;
}

AudioMedia AudioQueue::GetPreviousSong() {
    if (m_songs->empty())
        return {};
    return IsSingleStream() ? m_songs->front() : MoveTo(GetPreviousSongIndex());
}
