#include "audioserver/Feeds.h"

#include <algorithm>
#include <utility>

namespace korvel::audioserver {

void Feeds::Set(std::shared_ptr<PcmFeed> feed, bool paused) {
    std::shared_ptr<PcmFeed> before; // both end after the lock
    const std::lock_guard lock(m_mutex);
    if (!feed)
        before.swap(m_before);
    m_feed.swap(feed);
    m_paused = paused;
    m_changed.notify_all();
}

void Feeds::Leave() {
    std::shared_ptr<PcmFeed> feed;
    const std::lock_guard lock(m_mutex);
    feed.swap(m_feed);
    // One that has had no sound yet does not cut off the one that is still heard for it.
    if (!m_before && !m_paused) {
        m_before.swap(feed);
        m_overlap = kOverlapPackets;
    }
    m_paused = false;
}

void Feeds::SetPaused(bool paused) {
    std::shared_ptr<PcmFeed> before;
    const std::lock_guard lock(m_mutex);
    m_paused = paused;
    if (paused)
        before.swap(m_before);
    m_changed.notify_all();
}

bool Feeds::Fill(std::span<std::uint8_t> packet, PlayPosition::Time due) {
    std::shared_ptr<PcmFeed> feed;
    std::shared_ptr<PcmFeed> before;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_paused) {
            feed = m_feed;
            before = m_before;
        }
    }
    const PcmFeed::Result result = feed ? feed->Read(packet, due) : PcmFeed::Result::kStarved;
    if (result == PcmFeed::Result::kAudio) {
        if (before)
            DropBefore(before);
        return true;
    }
    if (before && FillFromBefore(before, packet, due))
        return true;
    std::fill(packet.begin(), packet.end(), std::uint8_t{0});
    if (result == PcmFeed::Result::kDrained)
        feed->ReportEnd();
    return false;
}

bool Feeds::FillFromBefore(const std::shared_ptr<PcmFeed>& before, std::span<std::uint8_t> packet,
                           PlayPosition::Time due) {
    const bool heard = before->Read(packet, due) == PcmFeed::Result::kAudio;
    const std::lock_guard lock(m_mutex);
    if (m_before == before && (!heard || --m_overlap == 0))
        m_before.reset();
    return heard;
}

void Feeds::DropBefore(const std::shared_ptr<PcmFeed>& before) {
    const std::lock_guard lock(m_mutex);
    if (m_before == before)
        m_before.reset();
}

bool Feeds::WaitUntilWanted() {
    std::unique_lock lock(m_mutex);
    if (IsWanted())
        return false;
    m_changed.wait(lock, [this] { return IsWanted(); });
    return true;
}

void Feeds::Stop() {
    const std::lock_guard lock(m_mutex);
    m_stopping = true;
    m_changed.notify_all();
}

} // namespace korvel::audioserver
