#include "roomplayer/UdpPorts.h"

#include <stdexcept>

namespace korvel::roomplayer {
namespace {

// A free port whose neighbour is taken is tried again; more often than this means that something else is
// wrong.
constexpr int kPairAttempts = 50;
constexpr std::uint16_t kLastRtpPort = 65534;

// Null with the reason in error.
SocketPtr BindSocket(GInetAddress* address, std::uint16_t port, std::string& error) {
    GError* failure = nullptr;
    SocketPtr socket(g_socket_new(g_inet_address_get_family(address), G_SOCKET_TYPE_DATAGRAM,
                                  G_SOCKET_PROTOCOL_UDP, &failure));
    const SocketAddressPtr endpoint(g_inet_socket_address_new(address, port));
    if (socket && g_socket_bind(socket.get(), endpoint.get(), FALSE, &failure) != FALSE)
        return socket;
    const GErrorPtr owner(failure);
    error =
        "port " + std::to_string(port) + ": " + (failure != nullptr ? failure->message : "cannot be bound");
    return nullptr;
}

std::uint16_t LocalPort(GSocket* socket) {
    const SocketAddressPtr endpoint(g_socket_get_local_address(socket, nullptr));
    return endpoint ? g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(endpoint.get()))
                    : std::uint16_t{0};
}

} // namespace

UdpPorts BindUdpPorts(const std::string& address, std::uint16_t port) {
    const InetAddressPtr ip(g_inet_address_new_from_string(address.c_str()));
    if (!ip)
        throw std::runtime_error("not an address: " + address);
    std::string error;
    for (int attempt = 0; attempt < (port == 0 ? kPairAttempts : 1); ++attempt) {
        UdpPorts ports;
        ports.rtp = BindSocket(ip.get(), port, error);
        if (!ports.rtp)
            break;
        ports.port = LocalPort(ports.rtp.get());
        if (ports.port == 0 || ports.port > kLastRtpPort)
            continue;
        ports.rtcp = BindSocket(ip.get(), static_cast<std::uint16_t>(ports.port + 1), error);
        if (ports.rtcp)
            return ports;
    }
    throw std::runtime_error("cannot receive on " + address + " " + error);
}

} // namespace korvel::roomplayer
