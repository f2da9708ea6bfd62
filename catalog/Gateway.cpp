#include "Gateway.h"

#include <chrono>
#include <utility>

#include "common/Log.h"

namespace korvel::catalog {

Gateway::Gateway(common::asio::io_context& context, const std::string& address, std::uint16_t port,
                 Catalogue catalogue)
    : m_context(context),
      m_service(std::move(catalogue), [] { return std::chrono::steady_clock::now(); }),
      m_acceptor(
          context.get_executor(), address, port, {kMaxConnections, kMaxConnectionsPerAddress},
          [this](common::tcp::socket socket, common::Acceptor::Place place) {
              OnConnection(std::move(socket), std::move(place));
          },
          common::ProgramLog()) {
    m_service.SetStreamListener([this] { LookAgain(); });
}

Gateway::~Gateway() {
    Stop();
}

void Gateway::Stop() {
    m_acceptor.Stop();
    // A closing connection takes itself out of the set.
    const auto connections = m_connections;
    for (const auto& connection : connections)
        connection->Close();
}

void Gateway::OnConnection(common::tcp::socket socket, common::Acceptor::Place place) {
    auto connection = std::make_shared<Connection>(
        std::move(socket), std::move(place), ++m_lastId, m_service,
        [this](const std::shared_ptr<Connection>& ended) { m_connections.erase(ended); });
    m_connections.insert(connection);
    connection->Start();
}

// After the request that led to it: the service is still in the middle of that one.
void Gateway::LookAgain() {
    if (std::exchange(m_lookingAgain, true))
        return;
    common::asio::post(m_context, [this] {
        m_lookingAgain = false;
        const auto connections = m_connections;
        for (const auto& connection : connections)
            connection->LookAgain();
    });
}

} // namespace korvel::catalog
