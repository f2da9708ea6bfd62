#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "Wait.h"

namespace korvel::tests {

// A peer of the gateway, by plain sockets.
class GatewayClient {
public:
    // Throws std::runtime_error when there is no connection.
    explicit GatewayClient(std::uint16_t port);
    ~GatewayClient();
    GatewayClient(const GatewayClient&) = delete;
    GatewayClient& operator=(const GatewayClient&) = delete;

    // Sends bytes as they are. False when the gateway has closed.
    bool Send(const std::string& bytes);
    // The next reply; null when none comes.
    nlohmann::json Next(std::chrono::milliseconds patience = kPatience);
    // Sends a request with the next id and returns its reply without the id; null for another reply.
    nlohmann::json Ask(nlohmann::json request);
    // Whether the gateway closes the connection, whatever it still sends before.
    bool IsClosed();

private:
    int m_socket;
    std::uint32_t m_lastId = 0;
    std::string m_pending;
};

} // namespace korvel::tests
