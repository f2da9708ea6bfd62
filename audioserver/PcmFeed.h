// The end of the decoding half from which the sending half draws.
#pragma once

#include <gst/app/gstappsink.h>
#include <gst/base/gstadapter.h>

#include <cstdint>
#include <span>

#include "audioserver/GstPointers.h"
#include "audioserver/MediaEvent.h"

namespace korvel::audioserver {

/// Cuts what a decoder delivers into packets. Built on the loop; from then on used by the sender's thread
/// only. The decoder waits while nobody draws, which is how a pause keeps its position.
class PcmFeed {
public:
    enum class Result {
        kAudio,   ///< the packet is filled (the last one of a media padded with silence)
        kStarved, ///< nothing to send at the moment
        kDrained  ///< the media has ended and everything was given out before
    };

    /// @param sink where decoded sound arrives, started before the first Read()
    /// @param fillMilliseconds sound that must be there before any is given out, again after each
    ///        time that it ran dry; 0 for a source that needs no reserve
    /// @param notify hears kStatus while filling, and kFailed or kDrained once at the end
    PcmFeed(GstAppSink* sink, std::size_t fillMilliseconds, MediaNotify notify);
    ~PcmFeed();
    PcmFeed(const PcmFeed&) = delete;
    PcmFeed& operator=(const PcmFeed&) = delete;

    /// Fills one packet or leaves it untouched.
    Result Read(std::span<std::uint8_t> packet);

    /// To be called when Read() said kDrained and the packet before it is on the wire. Notifies once.
    void ReportEnd();

private:
    bool IsFilled();
    void Draw(std::size_t wanted);
    void ReportFill(std::size_t percent);

    ElementPtr m_sink;
    GstAdapter* m_adapter;
    std::size_t m_fillBytes;
    MediaNotify m_notify;
    bool m_filling;
    bool m_hadAudio = false;
    bool m_endReported = false;
    std::size_t m_reportedFill = 0;
};

} // namespace korvel::audioserver
