#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdint>
#include <memory>
#include <set>
#include <string>

#include "Connection.h"

namespace korvel::catalog {

// Serves a catalogue by TCP, on the loop of the given context, which must outlive it.
class Gateway {
public:
    // Starts to listen; port 0 picks a free one. Throws std::runtime_error with one line of text when the
    // address is unusable or the port is taken.
    Gateway(boost::asio::io_context& context, const std::string& address, std::uint16_t port,
            Catalogue catalogue);
    ~Gateway();
    Gateway(const Gateway&) = delete;
    Gateway& operator=(const Gateway&) = delete;

    // "ADDRESS:PORT" with the real port.
    std::string GetEndpoint() const;

    // Stops listening and closes every connection. The context then runs out of work.
    void Stop();

private:
    void Accept();
    void OnConnection(boost::asio::ip::tcp::socket socket);
    void LookAgain();

    boost::asio::io_context& m_context;
    boost::asio::ip::tcp::acceptor m_acceptor;
    boost::asio::steady_timer m_retry;
    Service m_service;
    std::set<std::shared_ptr<Connection>> m_connections;
    ConnectionId m_lastId = 0;
    bool m_lookingAgain = false;
};

} // namespace korvel::catalog
