#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platform/System.h"
#include "queue/AudioQueue.h"

void AudioQueue::_ShuffleQueue() {
    std::vector<AudioMedia>& shuffled = m_shuffled.Change();
    shuffled = *m_songs;
    for (std::size_t i = 1; i < shuffled.size(); ++i) {
        const std::size_t j = static_cast<std::uint32_t>(kv::Random()) % (i + 1);
        std::swap(shuffled[i], shuffled[j]);
    }
    m_reshuffled = true;
}

void AudioQueue::ShuffleQueue(const AudioMedia& first) {
    // `first` may be an item of the list that is shuffled.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const AudioMedia wanted = first;
    _ShuffleQueue();
    const auto found = std::find(m_shuffled->begin(), m_shuffled->end(), wanted);
    MoveToFront(static_cast<std::size_t>(found - m_shuffled->begin()));
}

void AudioQueue::ShuffleQueue(std::uint32_t firstMediaId) {
    _ShuffleQueue();
    const auto found = std::find_if(m_shuffled->begin(), m_shuffled->end(),
                                    [&](const AudioMedia& media) { return media.mediaId == firstMediaId; });
    MoveToFront(static_cast<std::size_t>(found - m_shuffled->begin()));
}

// Puts the item at `position` of the shuffled list first and pins it; nothing happens past the end.
void AudioQueue::MoveToFront(std::size_t position) {
    if (position >= m_shuffled->size())
        return;
    std::vector<AudioMedia>& shuffled = m_shuffled.Change();
    std::swap(shuffled[position], shuffled.front());
    SetNextSong(std::uint32_t{0});
}

// The current song heads the new order and stays current.
void AudioQueue::ShuffleQueue() {
    ShuffleQueue(*m_currentMedia);
    if (m_currentMedia->type != MEDIA_NONE)
        GetNextSong();
}

void AudioQueue::SetShuffle(bool on) {
    if (on && !m_shuffle) {
        try {
            ShuffleQueue();
        } catch (const std::out_of_range&) {
            // A pin left over from a longer list is used up and finds no song.
        }
        // The index of a song that is gone may point past the list.
        if (m_currentIndex != NO_SONG_INDEX && m_currentIndex < m_shuffled->size())
            m_currentMedia.Change() = (*m_shuffled)[m_currentIndex];
    } else if (!on && m_shuffle && m_currentIndex != NO_SONG_INDEX && m_currentIndex < m_shuffled->size()) {
        // The next index is not translated: a pin keeps its number.
        const auto found = std::find(m_songs->begin(), m_songs->end(), (*m_shuffled)[m_currentIndex]);
        if (found != m_songs->end())
            m_currentIndex = static_cast<std::uint32_t>(found - m_songs->begin());
    }
    m_shuffle = on;
}
