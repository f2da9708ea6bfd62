// The pair of UDP ports that a player receives on.
#pragma once

#include <cstdint>
#include <string>

#include "roomplayer/GstPointers.h"

namespace korvel::roomplayer {

struct UdpPorts {
    std::uint16_t port = 0; // of the RTP socket; RTCP has the next one
    SocketPtr rtp;
    SocketPtr rtcp;
};

// Binds both sockets, without sharing: a second player on the same port is an error and not a silent thief.
// `port`: 0 to 65534; 0 picks a free pair.
// Throws std::runtime_error with one line of text when the address is unusable or a port is taken.
UdpPorts BindUdpPorts(const std::string& address, std::uint16_t port);

} // namespace korvel::roomplayer
