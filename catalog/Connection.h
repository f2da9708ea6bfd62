#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "Service.h"
#include "common/Acceptor.h"
#include "common/LineConnection.h"

namespace korvel::catalog {

// One peer: its requests in, the replies out. Gives way to others while nothing of it waits or plays.
class Connection : public std::enable_shared_from_this<Connection>, private common::LineConnection::Listener {
public:
    using Closed = std::function<void(const std::shared_ptr<Connection>&)>;

    // `service` must outlive the connection; `closed` is called once, when the connection has ended.
    Connection(common::tcp::socket socket, common::Acceptor::Place place, ConnectionId id, Service& service,
               Closed closed);
    ~Connection() { m_lines->Close(); }

    void Start();
    void Close();

    // Answers those of the waiting questions that can be answered by now.
    void LookAgain();

private:
    struct Waiting {
        std::string line;
        std::chrono::steady_clock::time_point deadline;
    };

    void OnLine(const common::Line& line) override;
    void OnEnd(const std::string& why) override;

    void Answer(std::string line);
    void WaitForDeadline();
    void Send(const nlohmann::json& reply);
    void Settle(bool heard);

    const std::shared_ptr<common::LineConnection> m_lines;
    common::Acceptor::Place m_place;
    common::asio::steady_timer m_timer;
    const ConnectionId m_id;
    Service& m_service;
    Closed m_closed;
    bool m_open = true;
    bool m_idle = false;
    std::deque<Waiting> m_waiting; // in the order of their deadlines
};

} // namespace korvel::catalog
