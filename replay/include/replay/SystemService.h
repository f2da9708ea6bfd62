#pragma once

#include <cstdint>
#include <string>

#include "platform/System.h"
#include "replay/World.h"

namespace korvel::replay {

// The machine, as the virtual clock and the transcript have it.
class SystemService final : public kv::ISystem {
public:
    explicit SystemService(World& world) : m_world(world) {}

    std::uint32_t Time() override { return m_world.clock.GetWall(); }
    void MonotonicTime(timespec& now) override { now = m_world.clock.GetMonotonic(); }
    std::int32_t Random() override { return m_world.random.Take(); }
    // Ignored: a run must not depend on what a driver seeds with.
    void SeedRandom(std::uint32_t) override {}
    std::uint32_t SystemType() override { return m_world.systemType; }
    bool IsLocalIPv4(const std::string& address) override { return m_world.localAddresses.contains(address); }
    void Log(int level, const std::string& text) override {
        m_world.recorder.Output(OutputLine("log").Number(level).Text(MaskAddresses(text)));
    }
    // Without the stack, which differs from build to build.
    void RecordAssert(const std::string& sourcePath, int line, const std::string&) override {
        m_world.recorder.Output(OutputLine("assert").Value(sourcePath).Number(line));
    }

private:
    World& m_world;
};

} // namespace korvel::replay
