#include "WebServer.h"

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

} // namespace

WebServer::WebServer(std::string body, bool tellLength) : m_body(std::move(body)), m_tellLength(tellLength) {
    m_socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    auto* raw = reinterpret_cast<sockaddr*>(&address);
    if (::bind(m_socket, raw, length) != 0 || ::listen(m_socket, 8) != 0 ||
        ::getsockname(m_socket, raw, &length) != 0) {
        ::close(m_socket);
        throw std::runtime_error("no web server");
    }
    m_port = ntohs(address.sin_port);
    m_thread = std::thread([this] { Serve(); });
}

WebServer::~WebServer() {
    m_stopping = true;
    m_thread.join();
    ::close(m_socket);
}

std::string WebServer::Url() const {
    return "http://127.0.0.1:" + std::to_string(m_port) + "/";
}

void WebServer::Serve() {
    while (!m_stopping) {
        if (WaitReadable(m_socket, kLook)) {
            const int connection = ::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC);
            Answer(connection);
            ::close(connection);
        }
    }
}

void WebServer::Answer(int connection) const {
    std::array<char, 4096> request{};
    if (::recv(connection, request.data(), request.size(), 0) <= 0)
        return;
    std::string answer = "HTTP/1.0 200 OK\r\nContent-Type: audio/x-wav\r\n";
    answer += m_tellLength ? "Content-Length: " + std::to_string(m_body.size()) + "\r\n" : "icy-pub: 1\r\n";
    answer += "\r\n" + m_body;
    std::size_t sent = 0;
    while (sent < answer.size() && !m_stopping) {
        const ssize_t count = ::send(connection, answer.data() + sent, answer.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            return;
        sent += static_cast<std::size_t>(count);
    }
}

} // namespace korvel::tests
