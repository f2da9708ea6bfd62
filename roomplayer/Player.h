// Receives a stream and plays it.
#pragma once

#include <gst/app/gstappsink.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "roomplayer/GstPointers.h"
#include "roomplayer/Options.h"
#include "roomplayer/SenderGate.h"
#include "roomplayer/UdpPorts.h"
#include "roomplayer/WavWriter.h"

namespace korvel::roomplayer {

/// One pipeline from start to end:
///
///     udpsrc (RTP, RTCP) ! rtpbin ! rtpL16depay ! audiomixer ! tee ! device or nothing
///     audiotestsrc (silence)       !              audiomixer   tee ! recording
///
/// The silence is live and never ends, so the mixer gives sound in real time whether somebody sends or not:
/// second t of a recording is second t of the player's life. Each sender that the gate lets in gets a
/// depayloader of its own, which goes when the sender does.
class Player {
public:
    /// Binds the ports, opens the recording and starts. A missing sound device is no error: the sound is
    /// discarded. From here on SIGINT and SIGTERM end Run(), also when they come before it.
    /// @throws std::runtime_error with one line of text
    explicit Player(const Options& options);
    ~Player();
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    /// The real RTP port.
    std::uint16_t Port() const { return m_ports.port; }

    /// Runs the default GLib main loop until the signal SIGINT or SIGTERM, or until playing has failed.
    /// @return whether it ended without a failure
    bool Run();

private:
    struct Branch {
        GstElement* depayloader; // owned by the pipeline
        PadPtr mixerPad;
    };

    void BuildPipeline(const Options& options);
    ElementPtr MakeDevice(const Options& options);
    void AddReceiver(GSocket* socket, const char* rtpbinPad, bool gated);
    void AddMixer(const Options& options);
    void AddRecorder();

    static GstPadProbeReturn OnPacket(GstPad* pad, GstPadProbeInfo* info, gpointer self);
    static GstCaps* OnPayloadType(GstElement* rtpbin, guint session, guint payloadType, gpointer self);
    static void OnPadAdded(GstElement* rtpbin, GstPad* pad, gpointer self);
    static void OnPadRemoved(GstElement* rtpbin, GstPad* pad, gpointer self);
    static GstFlowReturn OnSound(GstAppSink* sink, gpointer self);
    static gboolean OnMessage(GstBus* bus, GstMessage* message, gpointer self);
    static gboolean OnSignal(gpointer self);
    void ForgetSender(std::uint32_t sender);

    UdpPorts m_ports;
    std::unique_ptr<WavWriter> m_recording;
    std::chrono::milliseconds m_drainTime;
    ElementPtr m_pipeline;
    GstElement* m_rtpbin = nullptr; // these three are owned by the pipeline
    GstElement* m_mixer = nullptr;
    GstElement* m_tee = nullptr;
    MainLoopPtr m_loop;
    SourceId m_interrupt;
    SourceId m_terminate;
    SourceId m_messages;
    bool m_failed = false;

    SenderGate m_gate;              // only used by the receiving thread
    bool m_recordingFailed = false; // only used by the recorder's thread

    std::mutex m_mutex; // senders come and go in several threads
    std::map<std::string, Branch> m_branches;
};

} // namespace korvel::roomplayer
