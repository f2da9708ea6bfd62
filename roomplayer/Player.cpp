#include "roomplayer/Player.h"

#include <glib-unix.h>

#include <csignal>
#include <stdexcept>
#include <utility>

#include "common/Log.h"

namespace korvel::roomplayer {
namespace {

// A device holds back its first sound for as long as the latency.
unsigned QuietLooks(const Options& options) {
    return static_cast<unsigned>(std::chrono::milliseconds(options.latencyMilliseconds) /
                                 OutputWatch::kInterval);
}

std::vector<SenderAddress> Senders(const Options& options) {
    std::vector<SenderAddress> senders;
    for (const std::string& text : options.senders)
        if (const auto address = ParseSenderAddress(text))
            senders.push_back(*address);
    return senders;
}

} // namespace

Player::Player(const Options& options, Report report)
    : m_options(options),
      m_report(std::move(report)),
      m_ports(BindUdpPorts(options.address, options.port)),
      m_gate(Senders(options)),
      m_watch(QuietLooks(options)),
      m_loop(g_main_loop_new(nullptr, FALSE)),
      m_interrupt(g_unix_signal_add(SIGINT, OnSignal, this)),
      m_terminate(g_unix_signal_add(SIGTERM, OnSignal, this)),
      m_look(g_timeout_add(static_cast<guint>(OutputWatch::kInterval.count()), OnLook, this)) {
    if (!options.recordPath.empty())
        m_recording = std::make_unique<WavWriter>(options.recordPath);
    StartPipeline();
    m_started = Clock::now();
}

bool Player::Run() {
    g_main_loop_run(m_loop.get());
    return !m_failed;
}

void Player::StartPipeline() {
    m_pipeline =
        std::make_unique<Pipeline>(m_options, m_ports, m_gate, m_recording.get(),
                                   [this](const std::string& reason) { Fail("playing failed: " + reason); });
}

void Player::StartAnew() {
    const std::string output = Output();
    m_pipeline.reset();
    if (m_recording) {
        m_recording->FillUpTo(
            std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_started));
    }
    try {
        StartPipeline();
        if (Output() != output)
            m_report("output " + Output());
    } catch (const std::runtime_error& error) {
        Fail(error.what());
    }
}

void Player::Fail(const std::string& reason) {
    common::ProgramLog().Error(reason);
    m_failed = true;
    g_main_loop_quit(m_loop.get());
}

gboolean Player::OnSignal(gpointer self) {
    g_main_loop_quit(static_cast<Player*>(self)->m_loop.get());
    return G_SOURCE_CONTINUE;
}

gboolean Player::OnLook(gpointer selfPointer) {
    auto* self = static_cast<Player*>(selfPointer);
    switch (self->m_watch.Look(self->m_pipeline->Played())) {
        case OutputWatch::Finding::kStalled:
            common::ProgramLog().Warning("no sound comes out: starting anew");
            if (!std::exchange(self->m_stalled, true))
                self->m_report("stalled");
            self->StartAnew();
            break;
        case OutputWatch::Finding::kRecovered:
            common::ProgramLog().Info("sound comes out again");
            self->m_stalled = false;
            self->m_report("playing");
            break;
        case OutputWatch::Finding::kNothingNew:
            break;
    }
    return G_SOURCE_CONTINUE;
}

} // namespace korvel::roomplayer
