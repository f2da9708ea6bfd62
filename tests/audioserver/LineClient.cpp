#include "LineClient.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace korvel::tests {

LineClient::LineClient(std::uint16_t port, int receiveBytes)
    : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    if (receiveBytes > 0)
        ::setsockopt(m_socket, SOL_SOCKET, SO_RCVBUF, &receiveBytes, sizeof(receiveBytes));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        ::close(m_socket);
        throw std::runtime_error("cannot connect");
    }
}

LineClient::~LineClient() {
    ::close(m_socket);
}

bool LineClient::SendRaw(const std::string& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(m_socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            return false;
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

std::string LineClient::Ask(const std::string& command) {
    const std::string number = std::to_string(m_sequence++) + " ";
    SendRaw(number + command + "\r\n");
    while (const auto line = ReadLine()) {
        if (line->starts_with(number))
            return line->substr(number.size());
        m_events.push_back(*line);
    }
    return "";
}

std::uint32_t LineClient::AddStream(const std::string& command) {
    const std::string answer = Ask(command);
    const std::string start = command + " stream=";
    return answer.starts_with(start) ? static_cast<std::uint32_t>(std::stoul(answer.substr(start.size())))
                                     : 0;
}

std::string LineClient::NextEvent(std::chrono::milliseconds patience) {
    if (m_events.empty())
        return ReadLine(patience).value_or("");
    std::string event = m_events.front();
    m_events.pop_front();
    return event;
}

std::optional<std::string> LineClient::ReadLine(std::chrono::milliseconds patience) {
    for (;;) {
        if (const auto end = m_pending.find('\n'); end != std::string::npos) {
            std::string line = m_pending.substr(0, end);
            m_pending.erase(0, end + 1);
            if (line.empty() || line.back() != '\r')
                return line + "<bad end>";
            line.pop_back();
            return line;
        }
        std::array<char, 4096> chunk{};
        if (!WaitReadable(m_socket, patience))
            return std::nullopt;
        const ssize_t count = ::recv(m_socket, chunk.data(), chunk.size(), 0);
        if (count <= 0)
            return std::nullopt;
        m_pending.append(chunk.data(), static_cast<std::size_t>(count));
    }
}

std::string LineClient::ReadRest(std::chrono::milliseconds patience) {
    std::array<char, 4096> chunk{};
    while (WaitReadable(m_socket, patience)) {
        const ssize_t count = ::recv(m_socket, chunk.data(), chunk.size(), 0);
        if (count <= 0)
            return std::exchange(m_pending, {});
        m_pending.append(chunk.data(), static_cast<std::size_t>(count));
    }
    return "";
}

bool LineClient::IsClosedByServer() {
    std::array<char, 4096> chunk{};
    while (WaitReadable(m_socket))
        if (::recv(m_socket, chunk.data(), chunk.size(), 0) <= 0)
            return true;
    return false;
}

} // namespace korvel::tests
