#include "audioserver/Server.h"

#include <utility>

#include "common/Log.h"

namespace korvel::audioserver {

Server::Server(common::asio::io_context& context, const std::string& address, std::uint16_t port,
               StreamSettings settings, common::HostPort catalogue, StreamNumber firstStream)
    : m_settings(std::move(settings)),
      m_catalogue(std::make_shared<CatalogClient>(context.get_executor(), std::move(catalogue))),
      m_numbers(firstStream),
      m_acceptor(
          context.get_executor(), address, port, {kMaxConnections, kMaxConnectionsPerAddress},
          [this](common::tcp::socket socket, common::Acceptor::Place place) {
              OnConnection(std::move(socket), std::move(place));
          },
          common::ProgramLog()) {}

Server::~Server() {
    Stop();
}

void Server::Stop() {
    m_acceptor.Stop();
    // A closing session takes itself out of the set.
    const auto sessions = m_sessions;
    for (const auto& session : sessions)
        session->Close("server stops");
    m_catalogue->Close();
}

void Server::OnConnection(common::tcp::socket socket, common::Acceptor::Place place) {
    auto session = std::make_shared<Session>(
        std::move(socket), std::move(place), SessionContext{m_numbers, m_settings, *m_catalogue},
        [this](const std::shared_ptr<Session>& ended) { m_sessions.erase(ended); });
    m_sessions.insert(session);
    session->Start();
}

} // namespace korvel::audioserver
