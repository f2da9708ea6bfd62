#include "front/http/HttpServer.h"

#include <utility>

#include "front/http/HttpSession.h"

namespace korvel::controller {

// All connections are of this machine: an address has no share of its own.
HttpServer::HttpServer(asio::io_context& loop, Api& api, const std::string& address, std::uint16_t port,
                       const common::Log& log)
    : m_api(api),
      m_log(log),
      m_address(address),
      m_acceptor(
          loop.get_executor(), address, port, {kMaxSessions, kMaxSessions},
          [this](tcp::socket socket, common::Acceptor::Place place) {
              std::make_shared<HttpSession>(std::move(socket), std::move(place), *this)->Start();
          },
          log) {}

HttpServer::~HttpServer() {
    Stop();
}

void HttpServer::Stop() {
    m_acceptor.Stop();
    const std::set<Connection*> sessions = m_sessions; // they remove themselves
    for (Connection* session : sessions)
        session->Close();
}

bool HttpServer::AddListener() {
    if (m_listeners >= kMaxListeners)
        return false;
    ++m_listeners;
    return true;
}

} // namespace korvel::controller
