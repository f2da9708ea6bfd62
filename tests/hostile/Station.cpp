#include "Station.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <stdexcept>

#include "Wait.h"

namespace korvel::tests {
namespace {

constexpr std::chrono::milliseconds kLook{50};

bool IsReadable(int socket) {
    return WaitReadable(socket, kLook);
}

} // namespace

bool Visit::Send(std::string_view bytes) const {
    while (!bytes.empty() && !m_stopping) {
        const ssize_t count = ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count > 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if ((errno != EAGAIN && errno != EWOULDBLOCK) || !Dawdle())
            return false;
    }
    return !m_stopping;
}

bool Visit::Dawdle() const {
    char byte = 0;
    return !(IsReadable(m_socket) && ::recv(m_socket, &byte, 1, 0) <= 0) && !m_stopping;
}

Station::Station(Host host) : m_host(std::move(host)) {
    m_socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    auto* raw = reinterpret_cast<sockaddr*>(&address);
    if (::bind(m_socket, raw, length) != 0 || ::listen(m_socket, 32) != 0 ||
        ::getsockname(m_socket, raw, &length) != 0) {
        ::close(m_socket);
        throw std::runtime_error("no station");
    }
    m_port = ntohs(address.sin_port);
    m_thread = std::jthread([this] { Serve(); });
}

Station::~Station() {
    m_stopping = true;
    m_thread.join();
    ::close(m_socket);
}

std::string Station::Url() const {
    return "http://127.0.0.1:" + std::to_string(m_port);
}

void Station::Serve() {
    while (!m_stopping) {
        if (IsReadable(m_socket)) {
            const int connection = ::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC);
            m_visitors.emplace_back([this, connection] { Answer(connection); });
        }
    }
    m_visitors.clear();
}

void Station::Answer(int connection) {
    std::array<char, 4096> request{};
    const ssize_t count = ::recv(connection, request.data(), request.size(), 0);
    if (count > 0) {
        ++m_visits;
        const std::string_view text(request.data(), static_cast<std::size_t>(count));
        const auto start = text.find(' ') + 1;
        m_host(Visit(connection, std::string(text.substr(start, text.find(' ', start) - start)), m_stopping));
    }
    ::close(connection);
}

std::string Head(const std::string& type, const std::string& more) {
    return "HTTP/1.0 200 OK\r\nContent-Type: " + type + "\r\n" + more + "\r\n";
}

} // namespace korvel::tests
