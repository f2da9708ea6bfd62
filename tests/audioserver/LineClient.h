// A controller's end of the line protocol.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "Wait.h"

namespace korvel::tests {

class LineClient {
public:
    // Connects to 127.0.0.1. Throws std::runtime_error.
    // `receiveBytes`: size of the socket's receive buffer; 0 for the system's.
    explicit LineClient(std::uint16_t port, int receiveBytes = 0);
    ~LineClient();
    LineClient(const LineClient&) = delete;
    LineClient& operator=(const LineClient&) = delete;

    // Sends bytes as they are. False when the server has closed.
    bool SendRaw(const std::string& bytes);

    // Sends a command with the next sequence number and returns its answer without the number: "OK addcli
    // 1". Events that come in between are kept for NextEvent(). "" when no answer comes.
    std::string Ask(const std::string& command);

    // Creates a stream and returns its number; 0 when it is refused.
    std::uint32_t AddStream(const std::string& command = "addstr");

    // The next event, without its end; "" when none comes within the patience.
    std::string NextEvent(std::chrono::milliseconds patience = kPatience);

    // The next line of any kind; empty at the end of the connection or when none comes. A line that does not
    // end with "\r\n" comes with "<bad end>" attached.
    std::optional<std::string> ReadLine(std::chrono::milliseconds patience = kPatience);

    // All that still comes until the server closes the connection; "" when it does not.
    std::string ReadRest(std::chrono::milliseconds patience = kPatience);

    // Whether the server closes the connection, whatever it still sends before.
    bool IsClosedByServer();

private:
    int m_socket;
    std::uint32_t m_sequence = 0;
    std::string m_pending;
    std::deque<std::string> m_events;
};

} // namespace korvel::tests
