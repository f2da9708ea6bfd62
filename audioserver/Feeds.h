// What a stream draws its sound from.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>

#include "audioserver/PcmFeed.h"
#include "audioserver/PcmFormat.h"

namespace korvel::audioserver {

// The feed of the media that is loaded and, until that has sound, the one before: so a media that replaces another
// follows it without a gap. What the one before has ready is heard at most for so long; its source may be gone.
//
// Used by the loop, but for Fill() and WaitUntilWanted(), which the pipeline's thread calls.
class Feeds {
public:
    static constexpr unsigned kOverlapPackets = 400 / kPacketMilliseconds;

    // From the next packet on; null for silence, also in place of the feed before.
    void Set(std::shared_ptr<PcmFeed> feed, bool paused = false);

    // The feed that is heard at the moment becomes the one before.
    void Leave();

    // Stops and resumes drawing; silence meanwhile. A feed before is not resumed.
    void SetPaused(bool paused);

    // Fills one packet, to be sent then, with sound or silence; returns whether it is sound. What was in the packet
    // before must be on the wire: an end that is found is reported as an end that was sent.
    bool Fill(std::span<std::uint8_t> packet, PlayPosition::Time due);

    // Returns at once while there is something to draw from; else when there is. Returns whether it had to wait.
    bool WaitUntilWanted();

    // Ends all waiting for good.
    void Stop();

private:
    bool IsWanted() const { return m_stopping || (m_feed && !m_paused); }
    bool FillFromBefore(const std::shared_ptr<PcmFeed>& before, std::span<std::uint8_t> packet,
                        PlayPosition::Time due);
    void DropBefore(const std::shared_ptr<PcmFeed>& before);

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::shared_ptr<PcmFeed> m_feed;
    std::shared_ptr<PcmFeed> m_before;
    unsigned m_overlap = 0; // packets that may still be drawn from the feed before
    bool m_paused = false;
    bool m_stopping = false;
};

} // namespace korvel::audioserver
