#include "platform/System.h"

#include <execinfo.h>

#include <cstdlib>

namespace kv {

namespace {
ISystem* g_system = nullptr;
}

void InstallSystem(ISystem* system) {
    g_system = system;
}

void UninstallSystem(ISystem* system) {
    if (g_system == system)
        g_system = nullptr;
}

std::uint32_t Time() {
    return g_system ? g_system->Time() : 0;
}
std::int32_t Random() {
    return g_system ? g_system->Random() : 0;
}

void SeedRandom(std::uint32_t seed) {
    if (g_system)
        g_system->SeedRandom(seed);
}

StackTrace::StackTrace() : m_count(backtrace(m_frames, kMaxFrames)) {}

std::string StackTrace::ToString() const {
    std::string out;
    if (char** names = backtrace_symbols(m_frames, m_count)) {
        for (int i = 0; i < m_count; ++i)
            out.append(names[i]).append("\n");
        std::free(names);
    }
    return out;
}

void AssertWrite(const std::string& sourcePath, int line, const StackTrace& trace) {
    if (g_system)
        g_system->RecordAssert(sourcePath, line, trace.ToString());
}

} // namespace kv

int KernelX::gettime(timespec* now) {
    *now = {};
    if (kv::g_system)
        kv::g_system->MonotonicTime(*now);
    return 0;
}

std::uint32_t KernelX::GetSystemType() {
    return kv::g_system ? kv::g_system->SystemType() : 0;
}

bool NetworkInterfaces::isLocalIPv4(const std::string& address) {
    return kv::g_system && kv::g_system->IsLocalIPv4(address);
}

void LogXMessage(int level, const std::string& text) {
    if (kv::g_system)
        kv::g_system->Log(level, text);
}
