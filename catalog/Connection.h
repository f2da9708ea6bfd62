#pragma once

#include <array>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Service.h"

namespace korvel::catalog {

// One peer: its requests in, the replies out. Keeps itself alive while the connection is open.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    using Closed = std::function<void(const std::shared_ptr<Connection>&)>;

    // `service` must outlive the connection; `closed` is called once, when the connection has ended.
    Connection(boost::asio::ip::tcp::socket socket, ConnectionId id, Service& service, Closed closed);

    void Start();
    void Close();

    // Answers those of the waiting questions that can be answered by now.
    void LookAgain();

private:
    struct Waiting {
        std::string line;
        std::chrono::steady_clock::time_point deadline;
    };

    void Read();
    void OnBytes(std::string_view bytes);
    void OnLine(std::string line);
    void WaitForDeadline();
    void Send(const nlohmann::json& reply);
    void Write();

    boost::asio::ip::tcp::socket m_socket;
    boost::asio::steady_timer m_timer;
    const ConnectionId m_id;
    Service& m_service;
    Closed m_closed;
    bool m_open = true;
    std::array<char, 4096> m_chunk{};
    std::string m_line;
    bool m_skipping = false;       // the rest of a line that is too long
    std::deque<Waiting> m_waiting; // in the order of their deadlines
    std::string m_outgoing;
    std::string m_inFlight;
};

} // namespace korvel::catalog
