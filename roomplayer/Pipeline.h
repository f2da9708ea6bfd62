// From the packets to the sound.
#pragma once

#include <gst/app/gstappsink.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "roomplayer/GstPointers.h"
#include "roomplayer/Options.h"
#include "roomplayer/PacketGate.h"
#include "roomplayer/UdpPorts.h"
#include "roomplayer/WavWriter.h"

namespace korvel::roomplayer {

// One pipeline from start to end:
//
//     udpsrc (RTP, RTCP) ! rtpbin ! rtpL16depay ! audiomixer ! tee ! device or nothing
//     audiotestsrc (silence) ! queue !            audiomixer   tee ! recording
//
// The silence is live and never ends, so the mixer gives sound in real time whether somebody sends or not. It
// comes late, and so the mixer, which takes what all its inputs have, is never ahead of a sender that is new.
// Each sender that the gate lets in gets a depayloader of its own, which goes when the sender does.
//
// The threads of the sound come before ordinary work and wait for nothing but sound: what they have to say is
// logged by the main loop, and a file that takes nothing misses a part of the recording.
//
// Made, used and destroyed in the thread of the default GLib main loop.
class Pipeline {
public:
    using ErrorNotify = std::function<void(const std::string& reason)>;

    // Starts to receive and to play. Everything that is handed over must outlive the pipeline; the gate and
    // the recording are its own until it is gone.
    // `recording`: takes all that is heard, silence included; null for none.
    // `onError`: hears why playing has failed; called from the main loop.
    // Throws std::runtime_error with one line of text.
    Pipeline(const Options& options, const UdpPorts& ports, PacketGate& gate, WavWriter* recording,
             ErrorNotify onError);
    // Stops. When that takes too long, as with a device that hangs, the program ends with a failure.
    ~Pipeline();
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    // Buffers that have reached the device so far.
    std::uint64_t Played() const { return m_played; }
    // What takes the sound, see SoundDevice.
    const std::string& Output() const { return m_output; }

private:
    struct Branch {
        GstElement* depayloader; // owned by the pipeline
        PadPtr mixerPad;
    };

    GstElement* Build(const Options& options, const UdpPorts& ports);
    void Stop();
    void AddReceiver(GSocket* socket, const char* rtpbinPad, GstPadProbeCallback gate);
    void AddMixer(const Options& options);
    void AddDevice(const Options& options);
    GstElement* AddRecorder();

    static GstPadProbeReturn OnPacket(GstPad* pad, GstPadProbeInfo* info, gpointer self);
    static GstPadProbeReturn OnReport(GstPad* pad, GstPadProbeInfo* info, gpointer self);
    static GstPadProbeReturn OnPlayed(GstPad* pad, GstPadProbeInfo* info, gpointer self);
    static GstCaps* OnPayloadType(GstElement* rtpbin, guint session, guint payloadType, gpointer self);
    static void OnJitterBuffer(GstElement* rtpbin, GstElement* buffer, guint session, guint sender,
                               gpointer self);
    static void OnPadAdded(GstElement* rtpbin, GstPad* pad, gpointer self);
    static void OnPadRemoved(GstElement* rtpbin, GstPad* pad, gpointer self);
    static GstFlowReturn OnSound(GstAppSink* sink, gpointer self);
    static gboolean OnMessage(GstBus* bus, GstMessage* message, gpointer self);
    void ForgetSender(std::uint32_t sender);
    void TellSender();
    void TellDropped();
    bool Record(GstBuffer* sound);

    PacketGate& m_gate;
    WavWriter* m_recording;
    std::chrono::milliseconds m_recordedBefore{0};
    ErrorNotify m_onError;
    std::chrono::milliseconds m_drainTime;
    ElementPtr m_pipeline;
    GstElement* m_rtpbin = nullptr; // these three are owned by the pipeline
    GstElement* m_mixer = nullptr;
    GstElement* m_tee = nullptr;
    SourceId m_messages;
    bool m_recordingFailed = false;            // only used by the recorder's thread
    std::optional<std::uint32_t> m_toldSender; // only used by the RTP port's thread
    std::atomic<std::uint64_t> m_played = 0;
    std::atomic<std::uint64_t> m_nextDroppedLine = 1; // as many dropped packets are told of next
    std::string m_output;

    std::mutex m_mutex; // senders come and go in several threads
    std::map<std::string, Branch> m_branches;
};

} // namespace korvel::roomplayer
