// Accepts controllers and those who watch.
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>

#include "audioserver/Newcomer.h"
#include "audioserver/Session.h"
#include "audioserver/watch/Watch.h"
#include "common/Acceptor.h"

namespace korvel::audioserver {

// Lives on the loop of the given context, which must outlive it.
class Server {
public:
    // Starts to listen.
    // `port`: 0 picks a free one.
    // `settings`: of all streams.
    // `catalogue`: asked when a media is one of the streaming service.
    // `firstStream`: number of the first stream.
    // Throws std::runtime_error with one line of text when the address is unusable or the port is taken.
    Server(common::asio::io_context& context, const std::string& address, std::uint16_t port,
           StreamSettings settings, common::HostPort catalogue, StreamNumber firstStream);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    // "ADDRESS:PORT" with the real port.
    std::string Endpoint() const { return m_acceptor.GetEndpoint(); }

    // Stops listening and ends every session. The context then runs out of work.
    void Stop();

private:
    void OnConnection(common::tcp::socket socket, common::Acceptor::Place place);
    void OnKnown(Newcomer::Introduced newcomer);

    StreamSettings m_settings;
    std::shared_ptr<CatalogClient> m_catalogue;
    StreamNumbers m_numbers;
    Watch m_watch;
    common::Acceptor m_acceptor;
    std::set<std::shared_ptr<Newcomer>> m_newcomers;
    std::set<std::shared_ptr<Session>> m_sessions;
};

} // namespace korvel::audioserver
