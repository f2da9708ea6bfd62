// A port that nobody else gets while a test has no server on it.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>

namespace korvel::tests {

// A free TCP port of 127.0.0.1, held for as long as the object lives: a socket is bound to it that never
// listens. A server that asks for just this port with SO_REUSEADDR, as all of ours do, can listen on it,
// stop, and listen again; meanwhile connections are refused, and the system gives the port to nobody who
// asks for a free one.
class HeldPort {
public:
    HeldPort() : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        const int yes = 1;
        ::setsockopt(m_socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof(address);
        auto* raw = reinterpret_cast<sockaddr*>(&address);
        if (::bind(m_socket, raw, length) != 0 || ::getsockname(m_socket, raw, &length) != 0) {
            ::close(m_socket);
            throw std::runtime_error("no free port");
        }
        m_number = ntohs(address.sin_port);
    }
    ~HeldPort() { ::close(m_socket); }
    HeldPort(const HeldPort&) = delete;
    HeldPort& operator=(const HeldPort&) = delete;

    std::uint16_t Number() const { return m_number; }

private:
    int m_socket;
    std::uint16_t m_number = 0;
};

} // namespace korvel::tests
