// The end of the decoding half from which the sending half draws.
#pragma once

#include <gst/app/gstappsink.h>
#include <gst/base/gstadapter.h>

#include <atomic>
#include <cstdint>
#include <span>
#include <string>

#include "audioserver/GstPointers.h"
#include "audioserver/MediaEvent.h"
#include "audioserver/PlayPosition.h"

namespace korvel::audioserver {

// Cuts what a decoder delivers into packets. Built on the loop; from then on used by the sender's thread
// only, but for Open(). The decoder waits while nobody draws, which is how a pause keeps its position.
class PcmFeed {
public:
    enum class Result {
        kAudio,   // the packet is filled (the last one of a media padded with silence)
        kStarved, // nothing to send at the moment
        kDrained  // the media has ended and everything was given out before
    };

    struct Reserve {
        // Sound that must be there before any is given out, again after each time that it ran dry; 0 for a source
        // that needs none.
        std::size_t milliseconds;
        // Sound that is taken over from the decoder ahead of time, as far as there is, so that one that is late on a
        // busy machine is not missed.
        std::size_t aheadMilliseconds;
        // Whether filling the reserve takes so long that listeners want to know.
        bool told;
    };

    // `sink`: where decoded sound arrives, started before Open().
    // `notify`: hears kPlaying at the first sound, kStarved and kPlaying each time that the reserve is
    // empty and full again, kStatus while a reserve that is told of fills, kRuns when the position is another than
    // was to be expected, and kFailed or kDrained once at the end.
    PcmFeed(GstAppSink* sink, const Reserve& reserve, MediaNotify notify);
    ~PcmFeed();
    PcmFeed(const PcmFeed&) = delete;
    PcmFeed& operator=(const PcmFeed&) = delete;

    // From now on there is something to read. Callable from any thread.
    void Open() { m_open = true; }

    // The source is moved to this place, or is not after all (0). To be called before anything is read.
    void StartAt(std::chrono::milliseconds place);

    // Fills one packet, to be sent then, or leaves it untouched.
    Result Read(std::span<std::uint8_t> packet, PlayPosition::Time due);

    // Of what was read last. Any thread may ask and let it rest.
    PlayPosition& GetPosition() { return m_position; }

    // To be called when Read() said kDrained and the packet before it is on the wire. Notifies once.
    void ReportEnd();

private:
    bool IsFilled();
    void Starve(PlayPosition::Time due);
    void Draw(std::size_t wanted);
    PlayPosition::Span Place() const;
    void ReportFill(std::size_t percent);
    void ReportStatus(std::string status, unsigned percent);

    ElementPtr m_sink;
    GstAdapter* m_adapter;
    std::size_t m_fillBytes;
    std::size_t m_aheadBytes;
    bool m_told;
    MediaNotify m_notify;
    std::atomic<bool> m_open = false; // a sink that was not started looks like one at its end
    bool m_filling;
    bool m_hadAudio = false;
    bool m_playing = false;
    bool m_endReported = false;
    std::size_t m_reportedFill = 0;
    std::chrono::milliseconds m_start{0}; // the place that the source was moved to
    std::uint64_t m_givenBytes = 0;
    PlayPosition m_position;
};

} // namespace korvel::audioserver
