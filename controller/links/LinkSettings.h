// How the controller keeps its connections to servers that speak in lines.
#pragma once

#include <chrono>
#include <string>

#include "common/OutgoingLink.h"

namespace korvel::controller {

inline constexpr common::LineLimits kServerLines{64UL * 1024, 1u << 20, std::chrono::seconds(30)};
inline constexpr std::chrono::milliseconds kConnectTime{5000};
inline constexpr common::BackOff kServerBackOff{std::chrono::milliseconds(250),
                                                std::chrono::milliseconds(5000)};

// `kind` is what the log calls the server. IPv4 only: the address of a server tells whether it runs on this machine.
inline common::OutgoingLink::Settings LinkTo(const common::HostPort& server, const std::string& kind,
                                             const common::BackOff& backOff) {
    return {server, kind, kServerLines, kConnectTime, backOff, true};
}

} // namespace korvel::controller
