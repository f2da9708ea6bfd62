#include "audioserver/StreamOutput.h"

#include <algorithm>
#include <span>
#include <stdexcept>
#include <utility>

#include "audioserver/PcmFormat.h"
#include "audioserver/PipelineStart.h"
#include "common/RealTime.h"

namespace korvel::audioserver {
namespace {

constexpr GstClockTime kPacketDuration = kPacketMilliseconds * GST_MSECOND;
// Long enough that a gap between two songs is heard as silence and not as a lost sender.
constexpr std::uint64_t kIdlePackets = 1000 / kPacketMilliseconds;

using ErrorNotify = std::function<void(std::string)>;

void OnStreamStatus(GstMessage* message) {
    GstStreamStatusType type = GST_STREAM_STATUS_TYPE_CREATE;
    gst_message_parse_stream_status(message, &type, nullptr);
    // A thread announces itself when it begins and when it ends, in itself. All pipelines take their threads from
    // one pool: one that has left may serve a decoder next.
    if (type == GST_STREAM_STATUS_TYPE_ENTER)
        common::MakeThreadRealTime();
    else if (type == GST_STREAM_STATUS_TYPE_LEAVE)
        common::MakeThreadOrdinary();
}

GstBusSyncReply OnMessage(GstBus*, GstMessage* message, gpointer notifyPointer) {
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_STREAM_STATUS) {
        OnStreamStatus(message);
    } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        GError* error = nullptr;
        gst_message_parse_error(message, &error, nullptr);
        const GErrorPtr owner(error);
        (*static_cast<const ErrorNotify*>(notifyPointer))(error != nullptr ? error->message
                                                                           : "output failed");
    }
    gst_message_unref(message);
    return GST_BUS_DROP;
}

void DeleteNotify(gpointer notify) {
    delete static_cast<ErrorNotify*>(notify);
}

// Often enough that a room which joins learns the stream's clock within a moment.
constexpr guint64 kReportInterval = GST_SECOND;

void SetReportInterval(GstElement* rtpbin) {
    GObject* session = nullptr;
    g_signal_emit_by_name(rtpbin, "get-internal-session", 0U, &session);
    if (session != nullptr) {
        g_object_set(session, "rtcp-min-interval", kReportInterval, nullptr);
        g_object_unref(session);
    }
}

// A child of the pipeline, which keeps it alive.
GstElement* Part(GstElement* pipeline, const char* name) {
    GstElement* part = gst_bin_get_by_name(GST_BIN(pipeline), name);
    gst_object_unref(part);
    return part;
}

constexpr const char* kPipeline =
    "rtpbin name=rtp "
    "appsrc name=source ! rtpL16pay name=pay ! rtp.send_rtp_sink_0 "
    "rtp.send_rtp_src_0 ! multiudpsink name=rtpsink "
    "rtp.send_rtcp_src_0 ! multiudpsink name=rtcpsink sync=false async=false";

} // namespace

StreamOutput::StreamOutput(ErrorNotify onError) {
    BuildPipeline();
    const BusPtr bus(gst_element_get_bus(m_pipeline.get()));
    gst_bus_set_sync_handler(bus.get(), OnMessage, new ErrorNotify(std::move(onError)), DeleteNotify);
    if (!StartPlaying(m_pipeline.get())) {
        gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
        throw std::runtime_error("the output cannot be started");
    }
}

StreamOutput::~StreamOutput() {
    m_feeds.Stop();
    gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
    const BusPtr bus(gst_element_get_bus(m_pipeline.get()));
    gst_bus_set_sync_handler(bus.get(), nullptr, nullptr, nullptr);
}

void StreamOutput::BuildPipeline() {
    GError* failure = nullptr;
    GstElement* pipeline = gst_parse_launch(kPipeline, &failure);
    const GErrorPtr owner(failure);
    if (pipeline != nullptr)
        m_pipeline.reset(GST_ELEMENT(gst_object_ref_sink(pipeline)));
    if (failure != nullptr || pipeline == nullptr)
        throw std::runtime_error(failure != nullptr ? failure->message : "no output");
    m_source = Part(m_pipeline.get(), "source");
    m_rtpSink = Part(m_pipeline.get(), "rtpsink");
    m_rtcpSink = Part(m_pipeline.get(), "rtcpsink");

    const CapsPtr caps(gst_caps_from_string(kPcmCaps));
    g_object_set(m_source, "caps", caps.get(), "format", GST_FORMAT_TIME, "is-live", TRUE, "do-timestamp",
                 FALSE, nullptr);
    const auto packetDuration = static_cast<gint64>(kPacketDuration);
    // Timestamps follow the clock and not the count of samples: after a rest they must have moved on.
    g_object_set(Part(m_pipeline.get(), "pay"), "min-ptime", packetDuration, "max-ptime", packetDuration,
                 "perfect-rtptime", FALSE, nullptr);
    SetReportInterval(Part(m_pipeline.get(), "rtp"));
    GstAppSrcCallbacks callbacks{};
    callbacks.need_data = OnNeedData;
    gst_app_src_set_callbacks(GST_APP_SRC(m_source), &callbacks, this, nullptr);
}

void StreamOutput::AddClient(const ClientAddress& client) {
    const gint port = client.port;
    g_signal_emit_by_name(m_rtpSink, "add", client.ip.c_str(), port, nullptr);
    g_signal_emit_by_name(m_rtcpSink, "add", client.ip.c_str(), port + kRtcpPortOffset, nullptr);
}

void StreamOutput::RemoveClient(const ClientAddress& client) {
    const gint port = client.port;
    g_signal_emit_by_name(m_rtpSink, "remove", client.ip.c_str(), port, nullptr);
    g_signal_emit_by_name(m_rtcpSink, "remove", client.ip.c_str(), port + kRtcpPortOffset, nullptr);
}

void StreamOutput::OnNeedData(GstAppSrc*, guint, gpointer self) {
    static_cast<StreamOutput*>(self)->SendPacket();
}

void StreamOutput::SendPacket() {
    RestWhileIdle();
    BufferPtr buffer(gst_buffer_new_allocate(nullptr, kPacketBytes, nullptr));
    GstMapInfo map;
    if (!buffer || gst_buffer_map(buffer.get(), &map, GST_MAP_WRITE) == FALSE)
        return;
    // The sink has let go of the packet before.
    const bool audible = m_feeds.Fill(std::span(map.data, kPacketBytes), Due());
    gst_buffer_unmap(buffer.get(), &map);
    m_silentPackets = audible ? 0 : m_silentPackets + 1;
    GST_BUFFER_PTS(buffer.get()) = m_packet * kPacketDuration;
    GST_BUFFER_DURATION(buffer.get()) = kPacketDuration;
    if (std::exchange(m_resumed, false))
        GST_BUFFER_FLAG_SET(buffer.get(), GST_BUFFER_FLAG_DISCONT);
    ++m_packet;
    gst_app_src_push_buffer(GST_APP_SRC(m_source), buffer.release());
}

void StreamOutput::RestWhileIdle() {
    if (m_silentPackets < kIdlePackets || !m_feeds.WaitUntilWanted())
        return;
    m_packet = PacketsUntilNow();
    m_silentPackets = 0;
    m_resumed = true;
}

// When the packet leaves, also when it is filled late: the pipeline's clock is the steady one.
PlayPosition::Time StreamOutput::Due() const {
    return PlayPosition::Time(
        PlayPosition::Span(gst_element_get_base_time(m_pipeline.get()) + m_packet * kPacketDuration));
}

// The first packet that is not late.
std::uint64_t StreamOutput::PacketsUntilNow() const {
    const ClockPtr clock(gst_element_get_clock(m_pipeline.get()));
    if (!clock)
        return m_packet;
    const GstClockTime now = gst_clock_get_time(clock.get()) - gst_element_get_base_time(m_pipeline.get());
    return std::max(m_packet, now / kPacketDuration + 1);
}

} // namespace korvel::audioserver
