#include "audioserver/Server.h"

#include <utility>

#include "common/Log.h"

namespace korvel::audioserver {

Server::Server(common::asio::io_context& context, const std::string& address, std::uint16_t port,
               StreamSettings settings, common::HostPort catalogue, StreamNumber firstStream)
    : m_settings(std::move(settings)),
      m_catalogue(std::make_shared<CatalogClient>(context.get_executor(), std::move(catalogue))),
      m_numbers(firstStream),
      m_watch(context.get_executor()),
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
    // What closes takes itself out of its set.
    for (const auto& newcomer : std::set(m_newcomers))
        newcomer->Close("server stops");
    m_watch.Close();
    const auto sessions = m_sessions;
    for (const auto& session : sessions)
        session->Close("server stops");
    m_catalogue->Close();
}

void Server::OnConnection(common::tcp::socket socket, common::Acceptor::Place place) {
    auto newcomer = std::make_shared<Newcomer>(
        std::move(socket), std::move(place),
        [this](Newcomer::Introduced introduced) { OnKnown(std::move(introduced)); },
        [this](const std::shared_ptr<Newcomer>& known) { m_newcomers.erase(known); });
    m_newcomers.insert(newcomer);
    newcomer->Start();
}

void Server::OnKnown(Newcomer::Introduced newcomer) {
    if (IsWatchLine(newcomer.first.GetText())) {
        m_watch.Let(std::move(newcomer.lines), std::move(newcomer.place), newcomer.first);
        return;
    }
    auto session =
        std::make_shared<Session>(std::move(newcomer.lines), std::move(newcomer.place),
                                  SessionContext{m_numbers, m_settings, *m_catalogue, m_watch},
                                  [this](const std::shared_ptr<Session>& ended) { m_sessions.erase(ended); });
    m_sessions.insert(session);
    session->Start(newcomer.first);
}

} // namespace korvel::audioserver
