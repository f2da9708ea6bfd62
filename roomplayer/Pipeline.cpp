#include "roomplayer/Pipeline.h"

#include <gst/net/gstnetaddressmeta.h>

#include <condition_variable>
#include <cstdlib>
#include <span>
#include <stdexcept>
#include <stop_token>
#include <thread>
#include <utility>

#include "common/Log.h"
#include "roomplayer/Elements.h"
#include "roomplayer/RealTime.h"
#include "roomplayer/SoundDevice.h"

namespace korvel::roomplayer {
namespace {

constexpr const char* kSoundCaps = "audio/x-raw,format=S16LE,layout=interleaved,rate=48000,channels=2";
constexpr const char* kDepayloader = "rtpL16depay";
constexpr gint kReceiveBufferBytes = 256 * 1024;
// What the mixer takes and gives at a time.
constexpr unsigned kBlockMilliseconds = 10;
// More than this is not kept for a file that takes nothing.
constexpr std::uint64_t kRecorderSeconds = 10;
// A sender that was left is forgotten this long after its last sound has been played.
constexpr std::chrono::milliseconds kForgetMargin{200};
constexpr std::chrono::seconds kStopPatience{5};

GstCaps* RtpCaps(guint payloadType) {
    return gst_caps_new_simple("application/x-rtp", "media", G_TYPE_STRING, "audio", "clock-rate", G_TYPE_INT,
                               48000, "encoding-name", G_TYPE_STRING, "L16", "channels", G_TYPE_INT, 2,
                               "payload", G_TYPE_INT, static_cast<gint>(payloadType), nullptr);
}

// The two waits that a latency is made of, each as long as the other: for a packet that is missing or a sender that
// is new, which pass before a sound is due at the mixer, and for threads that are late, which pass there. The rest
// is a block of the silence, which must be complete before it comes, and one of the mixer's own.
GstClockTime Wait(const Options& options) {
    return static_cast<GstClockTime>((options.latencyMilliseconds - 2 * kBlockMilliseconds) * GST_MSECOND /
                                     2);
}

// Has the main loop log it: a log waits for whoever reads it, and no sound may wait with it.
void Tell(common::LogLevel level, std::string text) {
    using Line = std::pair<common::LogLevel, std::string>;
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer data) -> gboolean {
            const auto* line = static_cast<Line*>(data);
            common::ProgramLog().Write(line->first, line->second);
            return G_SOURCE_REMOVE;
        },
        new Line(level, std::move(text)), [](gpointer data) { delete static_cast<Line*>(data); });
}

// What a datagram says and where it comes from.
class Packet {
public:
    explicit Packet(GstBuffer* buffer) : m_buffer(buffer) {
        gst_buffer_map(buffer, &m_map, GST_MAP_READ);
        const GstNetAddressMeta* meta = gst_buffer_get_net_address_meta(buffer);
        if (meta == nullptr || !G_IS_INET_SOCKET_ADDRESS(meta->addr))
            return;
        GInetAddress* address = g_inet_socket_address_get_address(G_INET_SOCKET_ADDRESS(meta->addr));
        m_from =
            MakeSenderAddress({g_inet_address_to_bytes(address), g_inet_address_get_native_size(address)});
    }
    ~Packet() { gst_buffer_unmap(m_buffer, &m_map); }
    Packet(const Packet&) = delete;
    Packet& operator=(const Packet&) = delete;

    const SenderAddress& From() const { return m_from; }
    std::span<const std::uint8_t> Bytes() const { return {m_map.data, m_map.size}; }

private:
    GstBuffer* m_buffer;
    GstMapInfo m_map = GST_MAP_INFO_INIT;
    SenderAddress m_from{};
};

bool StartsWith(const char* text, const char* prefix) {
    return g_str_has_prefix(text, prefix) != FALSE;
}

// Runs beside a step that cannot be interrupted, such as closing a device that hangs. A player that waits
// for it for ever would be silent and look alive; whoever started it starts it anew.
void EndUnlessStopped(const std::stop_token& stop) {
    std::mutex mutex;
    std::unique_lock lock(mutex);
    std::condition_variable_any().wait_for(lock, stop, kStopPatience, [] { return false; });
    if (!stop.stop_requested()) {
        common::ProgramLog().Error("the pipeline does not stop: giving up");
        std::_Exit(EXIT_FAILURE);
    }
}

} // namespace

Pipeline::Pipeline(const Options& options, const UdpPorts& ports, PacketGate& gate, WavWriter* recording,
                   ErrorNotify onError)
    : m_gate(gate),
      m_recording(recording),
      m_onError(std::move(onError)),
      m_drainTime(std::chrono::milliseconds(options.latencyMilliseconds) + kForgetMargin),
      m_pipeline(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr)))) {
    GstElement* recorder = Build(options, ports);
    const BusPtr bus(gst_element_get_bus(m_pipeline.get()));
    m_messages.Reset(gst_bus_add_watch(bus.get(), OnMessage, this));
    MakeRealTime(m_pipeline.get(), recorder);
    if (!StartPlaying(m_pipeline.get())) {
        Stop();
        throw std::runtime_error("cannot start to play");
    }
}

Pipeline::~Pipeline() {
    Stop();
}

void Pipeline::Stop() {
    const std::jthread guard(EndUnlessStopped);
    gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
}

// Returns the element in whose thread is recorded; null for none.
GstElement* Pipeline::Build(const Options& options, const UdpPorts& ports) {
    LoadElement(kDepayloader); // before a sender has to wait for it
    m_rtpbin = AddElement(m_pipeline.get(), "rtpbin");
    g_object_set(m_rtpbin, "latency", static_cast<guint>(Wait(options) / GST_MSECOND), "autoremove", TRUE,
                 nullptr);
    g_signal_connect(m_rtpbin, "request-pt-map", G_CALLBACK(OnPayloadType), this);
    g_signal_connect(m_rtpbin, "new-jitterbuffer", G_CALLBACK(OnJitterBuffer), this);
    g_signal_connect(m_rtpbin, "pad-added", G_CALLBACK(OnPadAdded), this);
    g_signal_connect(m_rtpbin, "pad-removed", G_CALLBACK(OnPadRemoved), this);
    AddMixer(options);
    AddReceiver(ports.rtp.get(), "recv_rtp_sink_0", OnPacket);
    AddReceiver(ports.rtcp.get(), "recv_rtcp_sink_0", OnReport);
    AddDevice(options);
    return m_recording != nullptr ? AddRecorder() : nullptr;
}

void Pipeline::AddDevice(const Options& options) {
    GstElement* queue = AddElement(m_pipeline.get(), "queue");
    GstElement* converter = AddElement(m_pipeline.get(), "audioconvert");
    GstElement* resampler = AddElement(m_pipeline.get(), "audioresample");
    const auto [device, output] = OpenSoundDevice(options.useDevice);
    m_output = output;
    gst_bin_add(GST_BIN(m_pipeline.get()), device.get());
    gst_element_link_many(m_tee, queue, converter, resampler, device.get(), nullptr);
    const PadPtr pad(gst_element_get_static_pad(device.get(), "sink"));
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, OnPlayed, this, nullptr);
}

void Pipeline::AddReceiver(GSocket* socket, const char* rtpbinPad, GstPadProbeCallback gate) {
    GstElement* source = AddElement(m_pipeline.get(), "udpsrc");
    const CapsPtr caps(
        gst_caps_new_empty_simple(gate == OnPacket ? "application/x-rtp" : "application/x-rtcp"));
    g_object_set(source, "socket", socket, "close-socket", FALSE, "buffer-size", kReceiveBufferBytes, "caps",
                 caps.get(), nullptr);
    const PadPtr pad(gst_element_get_static_pad(source, "src"));
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, gate, this, nullptr);
    gst_element_link_pads(source, "src", m_rtpbin, rtpbinPad);
}

void Pipeline::AddMixer(const Options& options) {
    GstElement* silence = AddElement(m_pipeline.get(), "audiotestsrc");
    // Live whatever its inputs do: one that takes time for its first buffer must not end the sound for good.
    m_mixer =
        AddElement(m_pipeline.get(), gst_element_factory_make_full("audiomixer", "force-live", TRUE, nullptr),
                   "audiomixer");
    GstElement* delay = AddElement(m_pipeline.get(), "queue");
    GstElement* filter = AddElement(m_pipeline.get(), "capsfilter");
    m_tee = AddElement(m_pipeline.get(), "tee");
    const CapsPtr caps(gst_caps_from_string(kSoundCaps));
    const guint64 wait = Wait(options);
    const auto block = static_cast<guint64>(kBlockMilliseconds * GST_MSECOND);
    g_object_set(silence, "is-live", TRUE, "samplesperbuffer", 480, nullptr);
    gst_util_set_object_arg(G_OBJECT(silence), "wave", "silence");
    g_object_set(delay, "min-threshold-time", wait, "max-size-time", wait + GST_SECOND, "max-size-buffers",
                 0U, "max-size-bytes", 0U, nullptr);
    // Known from the start, so that the first sender does not shift the time of everything.
    g_object_set(m_mixer, "latency", wait, "min-upstream-latency", wait + block, "output-buffer-duration",
                 block, "ignore-inactive-pads", TRUE, nullptr);
    g_object_set(filter, "caps", caps.get(), nullptr);
    gst_element_link_filtered(silence, delay, caps.get());
    gst_element_link(delay, m_mixer);
    gst_element_link_many(m_mixer, filter, m_tee, nullptr);
}

// What the file does not take in time is left out at the old end, so that it never holds up the room.
GstElement* Pipeline::AddRecorder() {
    GstElement* queue = AddElement(m_pipeline.get(), "queue");
    g_object_set(queue, "max-size-time", static_cast<guint64>(kRecorderSeconds * GST_SECOND),
                 "max-size-buffers", 0U, "max-size-bytes", 0U, nullptr);
    gst_util_set_object_arg(G_OBJECT(queue), "leaky", "downstream");
    m_recordedBefore = m_recording->Length();
    GstElement* sink = AddElement(m_pipeline.get(), "appsink");
    g_object_set(sink, "sync", FALSE, "async", FALSE, "enable-last-sample", FALSE, nullptr);
    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = OnSound;
    gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, this, nullptr);
    gst_element_link_many(m_tee, queue, sink, nullptr);
    return queue;
}

// Runs in the main loop.
gboolean Pipeline::OnMessage(GstBus*, GstMessage* message, gpointer selfPointer) {
    auto* self = static_cast<Pipeline*>(selfPointer);
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_LATENCY) {
        gst_bin_recalculate_latency(GST_BIN(self->m_pipeline.get()));
    } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        GError* error = nullptr;
        gst_message_parse_error(message, &error, nullptr);
        const GErrorPtr owner(error);
        self->m_onError(error != nullptr ? error->message : "unknown reason");
    }
    return G_SOURCE_CONTINUE;
}

// Runs in the device's thread.
GstPadProbeReturn Pipeline::OnPlayed(GstPad*, GstPadProbeInfo*, gpointer self) {
    ++static_cast<Pipeline*>(self)->m_played;
    return GST_PAD_PROBE_OK;
}

// Runs in the thread of the RTP port, before a packet reaches rtpbin.
GstPadProbeReturn Pipeline::OnPacket(GstPad*, GstPadProbeInfo* info, gpointer selfPointer) {
    auto* self = static_cast<Pipeline*>(selfPointer);
    const auto now = PacketGate::Clock::now();
    const Packet packet(GST_PAD_PROBE_INFO_BUFFER(info));
    const bool admitted = self->m_gate.AdmitRtp(packet.From(), packet.Bytes(), now);
    // With each packet: a new stream may wait for the place of one that the room has left.
    if (const auto left = self->m_gate.TakeLeft(now, self->m_drainTime))
        self->ForgetSender(*left);
    if (!admitted) {
        self->TellDropped();
        return GST_PAD_PROBE_DROP;
    }
    self->TellSender();
    return GST_PAD_PROBE_OK;
}

// Runs in the thread of the RTCP port.
GstPadProbeReturn Pipeline::OnReport(GstPad*, GstPadProbeInfo* info, gpointer selfPointer) {
    auto* self = static_cast<Pipeline*>(selfPointer);
    const Packet packet(GST_PAD_PROBE_INFO_BUFFER(info));
    if (!self->m_gate.AdmitRtcp(packet.From(), packet.Bytes())) {
        self->TellDropped();
        return GST_PAD_PROBE_DROP;
    }
    return GST_PAD_PROBE_OK;
}

void Pipeline::TellSender() {
    if (const auto sender = m_gate.Current(); std::exchange(m_toldSender, sender) != sender)
        Tell(common::LogLevel::Info, "sender " + std::to_string(*sender));
}

// Ever more rarely: whoever sends a million packets does not write a million lines. Packets of a stream that
// the room has just left are nothing to tell.
void Pipeline::TellDropped() {
    const PacketGate::Dropped dropped = m_gate.Count();
    std::uint64_t next = m_nextDroppedLine;
    if (dropped.foreign + dropped.malformed < next ||
        !m_nextDroppedLine.compare_exchange_strong(next, next * 10))
        return;
    Tell(common::LogLevel::Warning, "dropped packets: " + std::to_string(dropped.foreign) +
                                        " of other senders, " + std::to_string(dropped.malformed) +
                                        " that are no stream's");
}

// Removes what rtpbin keeps for a sender; should it come back, it is new. Only in the receiving thread,
// through which every packet passes, so none of this sender is under way.
void Pipeline::ForgetSender(std::uint32_t sender) {
    if (const ElementPtr demuxer = FindChild(m_rtpbin, "rtpssrcdemux"))
        g_signal_emit_by_name(demuxer.get(), "clear-ssrc", sender, nullptr);
}

// The format of the one payload type that the gate lets in; nothing was signalled.
GstCaps* Pipeline::OnPayloadType(GstElement*, guint, guint payloadType, gpointer) {
    return RtpCaps(payloadType);
}

// A sender's first packet goes on at once: it waits at the mixer with the others, and what the sender needs is made
// meanwhile.
void Pipeline::OnJitterBuffer(GstElement*, GstElement* buffer, guint, guint, gpointer) {
    g_object_set(buffer, "faststart-min-packets", 1U, nullptr);
}

void Pipeline::OnPadAdded(GstElement*, GstPad* pad, gpointer selfPointer) {
    auto* self = static_cast<Pipeline*>(selfPointer);
    const GStringPtr name(gst_pad_get_name(pad));
    if (!StartsWith(name.get(), "recv_rtp_src_"))
        return;
    GstElement* depayloader = gst_element_factory_make(kDepayloader, nullptr);
    PadPtr mixerPad(gst_element_request_pad_simple(self->m_mixer, "sink_%u"));
    if (depayloader == nullptr || !mixerPad)
        return;
    gst_bin_add(GST_BIN(self->m_pipeline.get()), depayloader);
    const PadPtr out(gst_element_get_static_pad(depayloader, "src"));
    const PadPtr in(gst_element_get_static_pad(depayloader, "sink"));
    gst_pad_link(out.get(), mixerPad.get());
    gst_element_sync_state_with_parent(depayloader);
    gst_pad_link(pad, in.get());
    const std::lock_guard lock(self->m_mutex);
    self->m_branches.insert_or_assign(name.get(), Branch{depayloader, std::move(mixerPad)});
}

void Pipeline::OnPadRemoved(GstElement*, GstPad* pad, gpointer selfPointer) {
    auto* self = static_cast<Pipeline*>(selfPointer);
    const GStringPtr name(gst_pad_get_name(pad));
    std::map<std::string, Branch>::node_type branch;
    {
        const std::lock_guard lock(self->m_mutex);
        branch = self->m_branches.extract(name.get());
    }
    if (branch.empty())
        return;
    GstElement* depayloader = branch.mapped().depayloader;
    gst_element_set_locked_state(depayloader, TRUE);
    gst_element_set_state(depayloader, GST_STATE_NULL);
    gst_bin_remove(GST_BIN(self->m_pipeline.get()), depayloader);
    gst_element_release_request_pad(self->m_mixer, branch.mapped().mixerPad.get());
}

// Runs in the recorder's thread.
GstFlowReturn Pipeline::OnSound(GstAppSink* sink, gpointer selfPointer) {
    auto* self = static_cast<Pipeline*>(selfPointer);
    const SamplePtr sample(gst_app_sink_pull_sample(sink));
    GstBuffer* sound = sample ? gst_sample_get_buffer(sample.get()) : nullptr;
    if (sound == nullptr)
        return GST_FLOW_OK;
    const bool wasWhole = !self->m_recordingFailed;
    self->m_recordingFailed = !self->Record(sound);
    if (wasWhole && self->m_recordingFailed)
        common::ProgramLog().Error("recording ends: the file takes no more");
    // A full disk must not silence the room.
    return GST_FLOW_OK;
}

// At its time, also when something before it was left out.
bool Pipeline::Record(GstBuffer* sound) {
    GstMapInfo map;
    if (gst_buffer_map(sound, &map, GST_MAP_READ) == FALSE)
        return true;
    const std::chrono::milliseconds time(GST_BUFFER_PTS(sound) / GST_MSECOND);
    const bool recorded =
        m_recording->FillUpTo(m_recordedBefore + time) && m_recording->Append(std::span(map.data, map.size));
    gst_buffer_unmap(sound, &map);
    return recorded;
}

} // namespace korvel::roomplayer
