// Plays a session to a driver whose core disturbs it, and watches what may never happen.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "SessionText.h"
#include "TestCore.h"
#include "platform/Services.h"

namespace fuzz {

// May this line of output never come? True for a fault, as when an exception leaves an entry or a timer outlives
// the driver, and for a document that cannot be read.
bool BreaksARule(const std::string& line);

// A broken rule ends the process, with the line on the standard error; so does a driver that is gone and still
// registered.
class SessionRun {
public:
    SessionRun();
    SessionRun(const SessionRun&) = delete;
    SessionRun& operator=(const SessionRun&) = delete;

    // Runs one line with its disturbances and returns what came out. A line that cannot be run does nothing.
    std::vector<std::string> Play(const Step& step);
    // Destroys the driver if one runs.
    void End();

private:
    // A room that can take its audio from the analog output of another device.
    class AnalogRoom final : public IAnalogSource {
    public:
        explicit AnalogRoom(TestCore& core) : m_core(core) {}
        void TakeSourceDevice(std::uint32_t deviceId) override;
        std::vector<std::uint32_t> GetDevicesInAnalogSource() override;
        void SelectDevice(std::uint32_t deviceId) override;

    private:
        TestCore& m_core;
    };

    // Marks a call of the timer manager.
    class InTimers {
    public:
        InTimers(SessionRun& run, bool inside) : m_run(run), m_before(run.m_inTimers) {
            m_run.m_inTimers = m_before || inside;
        }
        ~InTimers() { m_run.m_inTimers = m_before; }

    private:
        SessionRun& m_run;
        const bool m_before;
    };

    void Execute(const std::string& line);
    void OnCall(const ServiceCall& call);
    void Disturb(const std::string& what);

    AnalogRoom m_analogRoom{m_core}; // outlives the core that offers it
    TestCore m_core;
    const Step* m_step = nullptr;
    std::uint32_t m_calls = 0;
    bool m_inTimers = false; // within a call of the timer manager
};

} // namespace fuzz
