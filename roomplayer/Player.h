// Receives a stream and plays it.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "roomplayer/GstPointers.h"
#include "roomplayer/Options.h"
#include "roomplayer/OutputWatch.h"
#include "roomplayer/PacketGate.h"
#include "roomplayer/Pipeline.h"
#include "roomplayer/UdpPorts.h"
#include "roomplayer/WavWriter.h"

namespace korvel::roomplayer {

// A room's player: its ports, its recording and the pipeline between them, which is built anew when no sound
// comes out of it for two seconds. Second t of a recording is second t of the player's life, also then.
class Player {
public:
    // Takes "stalled" when no sound comes out any more and "playing" when it does again, alternately, and
    // "output " with Output() when that has changed.
    using Report = std::function<void(std::string_view event)>;

    // Binds the ports, opens the recording and starts. A missing sound device is no error: the sound is
    // discarded. From here on SIGINT and SIGTERM end Run(), also when they come before it.
    // `report`: called in Run() only.
    // Throws std::runtime_error with one line of text.
    Player(const Options& options, Report report);
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    // The real RTP port.
    std::uint16_t Port() const { return m_ports.port; }
    // What takes the sound, see SoundDevice.
    const std::string& Output() const { return m_pipeline->Output(); }

    // Runs the default GLib main loop until the signal SIGINT or SIGTERM, or until playing has failed.
    // Returns whether it ended without a failure.
    bool Run();

private:
    using Clock = std::chrono::steady_clock;

    static gboolean OnSignal(gpointer self);
    static gboolean OnLook(gpointer self);
    void StartPipeline();
    void StartAnew();
    void Fail(const std::string& reason);

    Options m_options;
    Report m_report;
    UdpPorts m_ports;
    std::unique_ptr<WavWriter> m_recording;
    PacketGate m_gate;
    OutputWatch m_watch;
    MainLoopPtr m_loop;
    SourceId m_interrupt;
    SourceId m_terminate;
    SourceId m_look;
    bool m_stalled = false;
    bool m_failed = false;
    Clock::time_point m_started;
    std::unique_ptr<Pipeline> m_pipeline; // uses what is above
};

} // namespace korvel::roomplayer
