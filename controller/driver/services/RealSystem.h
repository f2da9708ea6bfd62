#pragma once

#include "common/Log.h"
#include "platform/System.h"

namespace korvel::controller {

// The machine as drivers see it.
class RealSystem final : public kv::ISystem {
public:
    explicit RealSystem(const common::Log& log) : m_log(log) {}

    std::uint32_t Time() override;
    void MonotonicTime(timespec& now) override;
    std::int32_t Random() override;
    void SeedRandom(std::uint32_t seed) override;
    std::uint32_t SystemType() override { return 0; }
    bool IsLocalIPv4(const std::string& address) override;
    // Drivers log on levels of their own; all of them are notes to the controller. Each text is a source of its
    // own in the log: a room that goes on and on hides no other.
    void Log(int level, const std::string& text) override;
    void RecordAssert(const std::string& sourcePath, int line, const std::string& stackTrace) override;

private:
    const common::Log& m_log;
};

} // namespace korvel::controller
