#include "audioserver/PcmFeed.h"

#include <algorithm>
#include <string>
#include <utility>

#include "audioserver/PcmFormat.h"

namespace korvel::audioserver {
namespace {

// A status line per this much of the reserve: enough to watch, too few to flood a connection.
constexpr std::size_t kFillStepPercent = 25;

std::size_t BytesOf(std::size_t milliseconds) {
    return milliseconds * kSampleRate / 1000 * kFrameBytes;
}

PlayPosition::Span TimeOf(std::uint64_t bytes) {
    return PlayPosition::Span(gst_util_uint64_scale(bytes / kFrameBytes, GST_SECOND, kSampleRate));
}

// The sample's sound, with its place in the media in place of its time; none where it has no place.
GstBuffer* TakeWithPlace(GstSample* sample) {
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    if (buffer == nullptr)
        return nullptr;
    const GstSegment* segment = gst_sample_get_segment(sample);
    buffer = gst_buffer_make_writable(gst_buffer_ref(buffer));
    GST_BUFFER_PTS(buffer) = gst_segment_to_stream_time(segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
    return buffer;
}

} // namespace

PcmFeed::PcmFeed(GstAppSink* sink, const Reserve& reserve, MediaNotify notify)
    : m_sink(GST_ELEMENT(gst_object_ref(sink))),
      m_adapter(gst_adapter_new()),
      m_fillBytes(BytesOf(reserve.milliseconds)),
      m_aheadBytes(BytesOf(reserve.aheadMilliseconds)),
      m_told(reserve.told),
      m_notify(std::move(notify)),
      m_filling(m_fillBytes > 0) {
    StartAt(m_start);
}

PcmFeed::~PcmFeed() {
    g_object_unref(m_adapter);
}

void PcmFeed::StartAt(std::chrono::milliseconds place) {
    m_start = place;
    m_position.Set(std::chrono::steady_clock::now(), place);
}

PcmFeed::Result PcmFeed::Read(std::span<std::uint8_t> packet, PlayPosition::Time due) {
    if (!m_open || (m_filling && !IsFilled()))
        return Result::kStarved;
    Draw(std::max(packet.size(), m_aheadBytes));
    std::size_t available = gst_adapter_available(m_adapter);
    if (available < packet.size()) {
        if (!gst_app_sink_is_eos(GST_APP_SINK(m_sink.get()))) {
            Starve(due);
            return Result::kStarved;
        }
        // The end may have come together with a last buffer after the first look.
        Draw(packet.size());
        available = std::min<std::size_t>(gst_adapter_available(m_adapter), packet.size());
        if (available == 0)
            return Result::kDrained;
        std::fill(packet.begin(), packet.end(), std::uint8_t{0});
    }
    const std::size_t taken = std::min(available, packet.size());
    const bool runs = m_position.Advance(due, Place());
    gst_adapter_copy(m_adapter, packet.data(), 0, taken);
    gst_adapter_flush(m_adapter, taken);
    m_givenBytes += taken;
    m_hadAudio = true;
    if (!std::exchange(m_playing, true)) {
        ReportStatus("playing", 100);
        m_notify({MediaEvent::Kind::kPlaying, {}});
    } else if (runs) {
        m_notify({MediaEvent::Kind::kRuns, {}});
    }
    return Result::kAudio;
}

// Of the next sound.
PlayPosition::Span PcmFeed::Place() const {
    guint64 since = 0;
    const GstClockTime place = gst_adapter_prev_pts(m_adapter, &since);
    if (place == GST_CLOCK_TIME_NONE)
        return m_start + TimeOf(m_givenBytes);
    return PlayPosition::Span(place) + TimeOf(since);
}

// Without a reserve there is nothing to fill: what comes late is as good as what came in time.
void PcmFeed::Starve(PlayPosition::Time due) {
    m_filling = m_fillBytes > 0;
    if (m_filling && std::exchange(m_playing, false)) {
        m_position.Rest(due);
        ReportStatus("buffering 0%", 0);
        m_notify({MediaEvent::Kind::kStarved, {}});
    }
}

void PcmFeed::ReportEnd() {
    if (std::exchange(m_endReported, true))
        return;
    // Behind the place that it was moved to there may be nothing more.
    m_notify(m_hadAudio || m_start.count() > 0 ? MediaEvent{MediaEvent::Kind::kDrained, {}}
                                               : MediaEvent{MediaEvent::Kind::kFailed, "no audio in it"});
}

bool PcmFeed::IsFilled() {
    Draw(m_fillBytes);
    const std::size_t percent = gst_adapter_available(m_adapter) * 100 / m_fillBytes;
    if (percent < 100 && !gst_app_sink_is_eos(GST_APP_SINK(m_sink.get()))) {
        ReportFill(percent);
        return false;
    }
    m_filling = false;
    m_reportedFill = 0;
    return true;
}

void PcmFeed::Draw(std::size_t wanted) {
    while (gst_adapter_available(m_adapter) < wanted) {
        const SamplePtr sample(gst_app_sink_try_pull_sample(GST_APP_SINK(m_sink.get()), 0));
        if (!sample)
            return;
        if (GstBuffer* buffer = TakeWithPlace(sample.get()))
            gst_adapter_push(m_adapter, buffer);
    }
}

void PcmFeed::ReportFill(std::size_t percent) {
    const std::size_t step = percent / kFillStepPercent * kFillStepPercent;
    if (step > m_reportedFill) {
        m_reportedFill = step;
        ReportStatus("buffering " + std::to_string(step) + "%", static_cast<unsigned>(step));
    }
}

void PcmFeed::ReportStatus(std::string status, unsigned percent) {
    if (m_told)
        m_notify({MediaEvent::Kind::kStatus, std::move(status), percent});
}

} // namespace korvel::audioserver
