#pragma once

#include <memory>
#include <set>
#include <string>

#include "Connection.h"
#include "common/Acceptor.h"

namespace korvel::catalog {

// Serves a catalogue by TCP, on the loop of the given context, which must outlive it.
class Gateway {
public:
    // Starts to listen; port 0 picks a free one. Throws std::runtime_error with one line of text when the
    // address is unusable or the port is taken.
    Gateway(common::asio::io_context& context, const std::string& address, std::uint16_t port,
            Catalogue catalogue);
    ~Gateway();
    Gateway(const Gateway&) = delete;
    Gateway& operator=(const Gateway&) = delete;

    // "ADDRESS:PORT" with the real port.
    std::string GetEndpoint() const { return m_acceptor.GetEndpoint(); }

    // Stops listening and closes every connection. The context then runs out of work.
    void Stop();

private:
    void OnConnection(common::tcp::socket socket, common::Acceptor::Place place);
    void LookAgain();

    common::asio::io_context& m_context;
    Service m_service;
    common::Acceptor m_acceptor;
    std::set<std::shared_ptr<Connection>> m_connections;
    ConnectionId m_lastId = 0;
    bool m_lookingAgain = false;
};

} // namespace korvel::catalog
