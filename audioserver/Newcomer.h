// A connection that has not said yet what it is.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "common/Acceptor.h"
#include "common/LineConnection.h"

namespace korvel::audioserver {

// Waits for the first line and hands the connection on with it. Until then it gives way to others. Lives on the loop.
class Newcomer : public std::enable_shared_from_this<Newcomer>, private common::LineConnection::Listener {
public:
    struct Introduced {
        std::shared_ptr<common::LineConnection> lines;
        common::Acceptor::Place place;
        const common::Line& first;
    };
    // Takes the connection: it must get another listener, or be closed.
    using Known = std::function<void(Introduced)>;
    using Closed = std::function<void(const std::shared_ptr<Newcomer>&)>;

    // `closed`: called once, before `known` when there is a line.
    Newcomer(common::tcp::socket socket, common::Acceptor::Place place, Known known, Closed closed);
    Newcomer(const Newcomer&) = delete;
    Newcomer& operator=(const Newcomer&) = delete;
    ~Newcomer() = default;

    void Start();

    // A second call does nothing.
    void Close(const std::string& reason);

private:
    void OnLine(const common::Line& line) override;
    void OnEnd(const std::string& why) override;

    std::shared_ptr<common::LineConnection> m_lines;
    common::Acceptor::Place m_place;
    Known m_known;
    Closed m_closed;
    bool m_open = true;
};

} // namespace korvel::audioserver
