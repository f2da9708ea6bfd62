#include "Crowd.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace korvel::tests {
namespace {

sockaddr_in AddressOf(const std::string& ip, std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    ::inet_pton(AF_INET, ip.c_str(), &address.sin_addr);
    return address;
}

// Whatever was said before.
bool IsClosed(int socket) {
    std::array<char, 4096> bytes{};
    for (;;) {
        const ssize_t count = ::recv(socket, bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (count <= 0)
            return count == 0 || (errno != EAGAIN && errno != EWOULDBLOCK);
    }
}

} // namespace

Crowd::~Crowd() {
    for (const int socket : m_open)
        ::close(socket);
}

void Crowd::Come(std::uint16_t port, const std::string& from, const std::string& bytes, int count) {
    const sockaddr_in source = AddressOf(from, 0);
    const sockaddr_in target = AddressOf("127.0.0.1", port);
    for (int i = 0; i < count; ++i) {
        const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        m_open.push_back(socket);
        ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&source), sizeof(source)), 0);
        ASSERT_EQ(::connect(socket, reinterpret_cast<const sockaddr*>(&target), sizeof(target)), 0);
        // One that was closed at once says nothing any more.
        ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }
}

bool Crowd::WaitUntilClosed(std::size_t count, std::chrono::milliseconds patience) {
    return WaitUntil(
        [&] {
            m_closed += std::erase_if(m_open, [](int socket) {
                const bool closed = IsClosed(socket);
                if (closed)
                    ::close(socket);
                return closed;
            });
            return m_closed >= count;
        },
        patience);
}

} // namespace korvel::tests
