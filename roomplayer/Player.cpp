#include "roomplayer/Player.h"

#include <glib-unix.h>

#include <array>
#include <csignal>
#include <span>
#include <stdexcept>
#include <utility>

#include "roomplayer/Log.h"

namespace korvel::roomplayer {
namespace {

constexpr const char* kSoundCaps = "audio/x-raw,format=S16LE,layout=interleaved,rate=48000,channels=2";
constexpr std::size_t kRtpHeaderBytes = 12;
constexpr std::size_t kRtpSenderOffset = 8;
constexpr unsigned kRtpVersion = 2;
constexpr gint kReceiveBufferBytes = 256 * 1024;
/// The mixer's own allowance for a busy machine, on top of the latency asked for.
constexpr std::uint64_t kMixerMilliseconds = 30;
constexpr std::uint64_t kMixerBlockMilliseconds = 10;
/// A sender that was left is forgotten this long after its last sound has been played.
constexpr std::chrono::milliseconds kForgetMargin{200};

GstElement* AddElement(GstElement* pipeline, const char* factory) {
    GstElement* element = gst_element_factory_make(factory, nullptr);
    if (element == nullptr) {
        throw std::runtime_error(std::string("GStreamer has no element ") + factory);
    }
    gst_bin_add(GST_BIN(pipeline), element);
    return element;
}

bool IsOf(GstElement* element, const char* factory) {
    GstElementFactory* made = gst_element_get_factory(element);
    return made != nullptr && g_strcmp0(GST_OBJECT_NAME(made), factory) == 0;
}

/// A new reference to the first child made by the factory; null when there is none.
ElementPtr FindChild(GstElement* bin, const char* factory) {
    GstIterator* children = gst_bin_iterate_elements(GST_BIN(bin));
    GValue item = G_VALUE_INIT;
    ElementPtr found;
    while (!found && gst_iterator_next(children, &item) == GST_ITERATOR_OK) {
        auto* element = GST_ELEMENT(g_value_get_object(&item));
        if (IsOf(element, factory)) {
            found.reset(GST_ELEMENT(gst_object_ref(element)));
        }
        g_value_reset(&item);
    }
    g_value_unset(&item);
    gst_iterator_free(children);
    return found;
}

/// Asked before a device is opened: on a machine without one, opening takes long and fills the log.
bool HasSoundDevice() {
    GstDeviceMonitor* monitor = gst_device_monitor_new();
    gst_device_monitor_add_filter(monitor, "Audio/Sink", nullptr);
    GList* devices =
        gst_device_monitor_start(monitor) != FALSE ? gst_device_monitor_get_devices(monitor) : nullptr;
    const bool found = devices != nullptr;
    g_list_free_full(devices, gst_object_unref);
    gst_device_monitor_stop(monitor);
    gst_object_unref(monitor);
    return found;
}

GstCaps* RtpCaps(guint payloadType) {
    return gst_caps_new_simple("application/x-rtp", "media", G_TYPE_STRING, "audio", "clock-rate", G_TYPE_INT,
                               48000, "encoding-name", G_TYPE_STRING, "L16", "channels", G_TYPE_INT, 2,
                               "payload", G_TYPE_INT, static_cast<gint>(payloadType), nullptr);
}

bool StartsWith(const char* text, const char* prefix) {
    return g_str_has_prefix(text, prefix) != FALSE;
}

} // namespace

Player::Player(const Options& options)
    : m_ports(BindUdpPorts(options.address, options.port)),
      m_drainTime(std::chrono::milliseconds(options.latencyMilliseconds) + kForgetMargin),
      m_pipeline(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr)))),
      m_loop(g_main_loop_new(nullptr, FALSE)),
      m_interrupt(g_unix_signal_add(SIGINT, OnSignal, this)),
      m_terminate(g_unix_signal_add(SIGTERM, OnSignal, this)) {
    if (!options.recordPath.empty()) {
        m_recording = std::make_unique<WavWriter>(options.recordPath);
    }
    BuildPipeline(options);
    const BusPtr bus(gst_element_get_bus(m_pipeline.get()));
    m_messages.Reset(gst_bus_add_watch(bus.get(), OnMessage, this));
    if (gst_element_set_state(m_pipeline.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE) {
        gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
        throw std::runtime_error("cannot start to play");
    }
}

Player::~Player() {
    gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
}

void Player::BuildPipeline(const Options& options) {
    m_rtpbin = AddElement(m_pipeline.get(), "rtpbin");
    g_object_set(m_rtpbin, "latency", options.latencyMilliseconds, "autoremove", TRUE, nullptr);
    g_signal_connect(m_rtpbin, "request-pt-map", G_CALLBACK(OnPayloadType), this);
    g_signal_connect(m_rtpbin, "pad-added", G_CALLBACK(OnPadAdded), this);
    g_signal_connect(m_rtpbin, "pad-removed", G_CALLBACK(OnPadRemoved), this);
    AddMixer(options);
    AddReceiver(m_ports.rtp.get(), "recv_rtp_sink_0", true);
    AddReceiver(m_ports.rtcp.get(), "recv_rtcp_sink_0", false);

    GstElement* queue = AddElement(m_pipeline.get(), "queue");
    GstElement* converter = AddElement(m_pipeline.get(), "audioconvert");
    GstElement* resampler = AddElement(m_pipeline.get(), "audioresample");
    ElementPtr device = MakeDevice(options);
    gst_bin_add(GST_BIN(m_pipeline.get()), device.get());
    gst_element_link_many(m_tee, queue, converter, resampler, device.get(), nullptr);
    if (m_recording) {
        AddRecorder();
    }
}

/// The sound device, or a sink that discards at the pace of the clock.
ElementPtr Player::MakeDevice(const Options& options) {
    GstElement* device =
        options.useDevice && HasSoundDevice() ? gst_element_factory_make("autoaudiosink", nullptr) : nullptr;
    if (device != nullptr) {
        ElementPtr found(GST_ELEMENT(gst_object_ref_sink(device)));
        const bool ready = gst_element_set_state(device, GST_STATE_READY) != GST_STATE_CHANGE_FAILURE;
        // For lack of a device the detection itself puts in a sink that discards.
        if (ready && !FindChild(device, "fakesink")) {
            Log("playing to the sound device");
            return found;
        }
        gst_element_set_state(device, GST_STATE_NULL);
    }
    Log("playing without a sound device");
    GstElement* nothing = gst_element_factory_make("fakesink", nullptr);
    if (nothing == nullptr) {
        throw std::runtime_error("GStreamer has no element fakesink");
    }
    g_object_set(nothing, "sync", TRUE, nullptr);
    return ElementPtr(GST_ELEMENT(gst_object_ref_sink(nothing)));
}

void Player::AddReceiver(GSocket* socket, const char* rtpbinPad, bool gated) {
    GstElement* source = AddElement(m_pipeline.get(), "udpsrc");
    g_object_set(source, "socket", socket, "close-socket", FALSE, "buffer-size", kReceiveBufferBytes,
                 nullptr);
    if (gated) {
        const CapsPtr caps(gst_caps_new_empty_simple("application/x-rtp"));
        g_object_set(source, "caps", caps.get(), nullptr);
        const PadPtr pad(gst_element_get_static_pad(source, "src"));
        gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, OnPacket, this, nullptr);
    }
    gst_element_link_pads(source, "src", m_rtpbin, rtpbinPad);
}

void Player::AddMixer(const Options& options) {
    GstElement* silence = AddElement(m_pipeline.get(), "audiotestsrc");
    m_mixer = AddElement(m_pipeline.get(), "audiomixer");
    GstElement* filter = AddElement(m_pipeline.get(), "capsfilter");
    m_tee = AddElement(m_pipeline.get(), "tee");
    const CapsPtr caps(gst_caps_from_string(kSoundCaps));
    g_object_set(silence, "is-live", TRUE, "samplesperbuffer", 480, nullptr);
    gst_util_set_object_arg(G_OBJECT(silence), "wave", "silence");
    // Known from the start, so that the first sender does not shift the time of everything.
    const auto upstream = static_cast<guint64>(options.latencyMilliseconds * GST_MSECOND);
    g_object_set(m_mixer, "latency", static_cast<guint64>(kMixerMilliseconds * GST_MSECOND),
                 "min-upstream-latency", upstream, "output-buffer-duration",
                 static_cast<guint64>(kMixerBlockMilliseconds * GST_MSECOND), "ignore-inactive-pads", TRUE,
                 nullptr);
    g_object_set(filter, "caps", caps.get(), nullptr);
    gst_element_link_filtered(silence, m_mixer, caps.get());
    gst_element_link_many(m_mixer, filter, m_tee, nullptr);
}

void Player::AddRecorder() {
    GstElement* queue = AddElement(m_pipeline.get(), "queue");
    GstElement* sink = AddElement(m_pipeline.get(), "appsink");
    g_object_set(sink, "sync", FALSE, "async", FALSE, "enable-last-sample", FALSE, nullptr);
    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = OnSound;
    gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, this, nullptr);
    gst_element_link_many(m_tee, queue, sink, nullptr);
}

bool Player::Run() {
    g_main_loop_run(m_loop.get());
    return !m_failed;
}

gboolean Player::OnSignal(gpointer self) {
    g_main_loop_quit(static_cast<Player*>(self)->m_loop.get());
    return G_SOURCE_CONTINUE;
}

gboolean Player::OnMessage(GstBus*, GstMessage* message, gpointer selfPointer) {
    auto* self = static_cast<Player*>(selfPointer);
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_LATENCY) {
        gst_bin_recalculate_latency(GST_BIN(self->m_pipeline.get()));
    } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        GError* error = nullptr;
        gst_message_parse_error(message, &error, nullptr);
        const GErrorPtr owner(error);
        Log(std::string("playing failed: ") + (error != nullptr ? error->message : "unknown reason"));
        self->m_failed = true;
        g_main_loop_quit(self->m_loop.get());
    }
    return G_SOURCE_CONTINUE;
}

/// Runs in the receiving thread, before a packet reaches rtpbin.
GstPadProbeReturn Player::OnPacket(GstPad*, GstPadProbeInfo* info, gpointer selfPointer) {
    auto* self = static_cast<Player*>(selfPointer);
    std::array<std::uint8_t, kRtpHeaderBytes> header{};
    GstBuffer* buffer = GST_PAD_PROBE_INFO_BUFFER(info);
    if (gst_buffer_extract(buffer, 0, header.data(), header.size()) != header.size() ||
        header[0] >> 6 != kRtpVersion) {
        return GST_PAD_PROBE_DROP;
    }
    const std::uint32_t sender = GST_READ_UINT32_BE(header.data() + kRtpSenderOffset);
    const auto now = SenderGate::Clock::now();
    const auto before = self->m_gate.Current();
    if (!self->m_gate.Admit(sender, now)) {
        return GST_PAD_PROBE_DROP;
    }
    if (before != sender) {
        Log("sender " + std::to_string(sender));
    }
    if (const auto left = self->m_gate.TakeLeft(now, self->m_drainTime)) {
        self->ForgetSender(*left);
    }
    return GST_PAD_PROBE_OK;
}

/// Removes what rtpbin keeps for a sender; should it come back, it is new. Only in the receiving thread,
/// through which every packet passes, so none of this sender is under way.
void Player::ForgetSender(std::uint32_t sender) {
    if (const ElementPtr demuxer = FindChild(m_rtpbin, "rtpssrcdemux")) {
        g_signal_emit_by_name(demuxer.get(), "clear-ssrc", sender, nullptr);
    }
}

/// Every payload type is taken for the one format, since nothing was signalled.
GstCaps* Player::OnPayloadType(GstElement*, guint, guint payloadType, gpointer) {
    return RtpCaps(payloadType);
}

void Player::OnPadAdded(GstElement*, GstPad* pad, gpointer selfPointer) {
    auto* self = static_cast<Player*>(selfPointer);
    const GStringPtr name(gst_pad_get_name(pad));
    if (!StartsWith(name.get(), "recv_rtp_src_")) {
        return;
    }
    GstElement* depayloader = gst_element_factory_make("rtpL16depay", nullptr);
    PadPtr mixerPad(gst_element_request_pad_simple(self->m_mixer, "sink_%u"));
    if (depayloader == nullptr || !mixerPad) {
        return;
    }
    gst_bin_add(GST_BIN(self->m_pipeline.get()), depayloader);
    const PadPtr out(gst_element_get_static_pad(depayloader, "src"));
    const PadPtr in(gst_element_get_static_pad(depayloader, "sink"));
    gst_pad_link(out.get(), mixerPad.get());
    gst_element_sync_state_with_parent(depayloader);
    gst_pad_link(pad, in.get());
    const std::lock_guard lock(self->m_mutex);
    self->m_branches.insert_or_assign(name.get(), Branch{depayloader, std::move(mixerPad)});
}

void Player::OnPadRemoved(GstElement*, GstPad* pad, gpointer selfPointer) {
    auto* self = static_cast<Player*>(selfPointer);
    const GStringPtr name(gst_pad_get_name(pad));
    std::map<std::string, Branch>::node_type branch;
    {
        const std::lock_guard lock(self->m_mutex);
        branch = self->m_branches.extract(name.get());
    }
    if (branch.empty()) {
        return;
    }
    GstElement* depayloader = branch.mapped().depayloader;
    gst_element_set_locked_state(depayloader, TRUE);
    gst_element_set_state(depayloader, GST_STATE_NULL);
    gst_bin_remove(GST_BIN(self->m_pipeline.get()), depayloader);
    gst_element_release_request_pad(self->m_mixer, branch.mapped().mixerPad.get());
}

/// Runs in the recorder's thread.
GstFlowReturn Player::OnSound(GstAppSink* sink, gpointer selfPointer) {
    auto* self = static_cast<Player*>(selfPointer);
    const SamplePtr sample(gst_app_sink_pull_sample(sink));
    GstBuffer* buffer = sample ? gst_sample_get_buffer(sample.get()) : nullptr;
    GstMapInfo map;
    if (buffer == nullptr || gst_buffer_map(buffer, &map, GST_MAP_READ) == FALSE) {
        return GST_FLOW_OK;
    }
    const bool wasWhole = !self->m_recordingFailed;
    self->m_recordingFailed = !self->m_recording->Append(std::span(map.data, map.size));
    gst_buffer_unmap(buffer, &map);
    if (wasWhole && self->m_recordingFailed) {
        Log("recording ends: the file takes no more");
    }
    // A full disk must not silence the room.
    return GST_FLOW_OK;
}

} // namespace korvel::roomplayer
