// Peers that connect and keep everybody waiting.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Wait.h"

namespace korvel::tests {

class Crowd {
public:
    Crowd() = default;
    ~Crowd();
    Crowd(const Crowd&) = delete;
    Crowd& operator=(const Crowd&) = delete;

    // Connects so many times to 127.0.0.1, from the given address of this machine, and says `bytes` on each.
    void Come(std::uint16_t port, const std::string& from, const std::string& bytes, int count);

    // Waits until the other side has closed so many of the connections.
    bool WaitUntilClosed(std::size_t count, std::chrono::milliseconds patience = kPatience);

private:
    std::vector<int> m_open;
    std::size_t m_closed = 0;
};

} // namespace korvel::tests
