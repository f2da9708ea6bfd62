#include "driver/services/RealSystem.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>

#include <cstdlib>
#include <memory>

namespace korvel::controller {

std::uint32_t RealSystem::Time() {
    return static_cast<std::uint32_t>(std::time(nullptr));
}

void RealSystem::MonotonicTime(timespec& now) {
    clock_gettime(CLOCK_MONOTONIC, &now);
}

std::int32_t RealSystem::Random() {
    return static_cast<std::int32_t>(std::rand());
}

void RealSystem::SeedRandom(std::uint32_t seed) {
    std::srand(seed);
}

bool RealSystem::IsLocalIPv4(const std::string& address) {
    in_addr wanted{};
    if (inet_pton(AF_INET, address.c_str(), &wanted) != 1)
        return false;
    if (ntohl(wanted.s_addr) >> 24 == 127)
        return true;
    // Asked anew each time: addresses come and go with the network.
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0)
        return false;
    const std::unique_ptr<ifaddrs, void (*)(ifaddrs*)> list(first, freeifaddrs);
    for (const ifaddrs* entry = first; entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET)
            continue;
        if (reinterpret_cast<const sockaddr_in*>(entry->ifa_addr)->sin_addr.s_addr == wanted.s_addr)
            return true;
    }
    return false;
}

void RealSystem::Log(int level, const std::string& text) {
    m_log.WriteFor(text, common::LogLevel::Info, "driver [" + std::to_string(level) + "] " + text);
}

void RealSystem::RecordAssert(const std::string& sourcePath, int line, const std::string& stackTrace) {
    const std::string place = sourcePath + ":" + std::to_string(line);
    m_log.WriteFor(place, common::LogLevel::Warning, "assertion failed at " + place);
    m_log.Debug(stackTrace);
}

} // namespace korvel::controller
