#include "GatewayClient.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace korvel::tests {

GatewayClient::GatewayClient(std::uint16_t port)
    : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        ::close(m_socket);
        throw std::runtime_error("cannot connect");
    }
}

GatewayClient::~GatewayClient() {
    ::close(m_socket);
}

bool GatewayClient::Send(const std::string& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(m_socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            return false;
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

nlohmann::json GatewayClient::Next(std::chrono::milliseconds patience) {
    for (;;) {
        if (const auto end = m_pending.find('\n'); end != std::string::npos) {
            const std::string line = m_pending.substr(0, end);
            m_pending.erase(0, end + 1);
            return nlohmann::json::parse(line);
        }
        std::array<char, 4096> chunk{};
        if (!WaitReadable(m_socket, patience))
            return nullptr;
        const ssize_t count = ::recv(m_socket, chunk.data(), chunk.size(), 0);
        if (count <= 0)
            return nullptr;
        m_pending.append(chunk.data(), static_cast<std::size_t>(count));
    }
}

nlohmann::json GatewayClient::Ask(nlohmann::json request) {
    request["id"] = ++m_lastId;
    Send(request.dump() + "\n");
    nlohmann::json reply = Next();
    if (!reply.is_object() || reply.value("id", nlohmann::json()) != m_lastId)
        return nullptr;
    reply.erase("id");
    return reply;
}

bool GatewayClient::IsClosed() {
    std::array<char, 4096> chunk{};
    while (WaitReadable(m_socket)) {
        if (::recv(m_socket, chunk.data(), chunk.size(), 0) <= 0)
            return true;
    }
    return false;
}

} // namespace korvel::tests
