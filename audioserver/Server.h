// Accepts controllers.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdint>
#include <memory>
#include <set>
#include <string>

#include "audioserver/Session.h"

namespace korvel::audioserver {

/// Lives on the loop of the given context, which must outlive it.
class Server {
public:
    /// Starts to listen.
    /// @param port 0 picks a free one
    /// @param inputs local inputs by name
    /// @param catalogue asked when a media is one of the streaming service
    /// @throws std::runtime_error with one line of text when the address is unusable or the port is taken
    Server(boost::asio::io_context& context, const std::string& address, std::uint16_t port, Inputs inputs,
           CatalogAddress catalogue);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// "ADDRESS:PORT" with the real port.
    std::string Endpoint() const;
    std::uint16_t Port() const;

    /// Stops listening and ends every session. The context then runs out of work.
    void Stop();

private:
    void Accept();
    void OnConnection(boost::asio::ip::tcp::socket socket);

    boost::asio::ip::tcp::acceptor m_acceptor;
    boost::asio::steady_timer m_retry;
    Inputs m_inputs;
    std::shared_ptr<CatalogClient> m_catalogue;
    StreamNumbers m_numbers;
    std::set<std::shared_ptr<Session>> m_sessions;
};

} // namespace korvel::audioserver
