#include "audioserver/Server.h"

#include <chrono>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "audioserver/Log.h"

namespace korvel::audioserver {
namespace {

using boost::asio::ip::tcp;

/// Pause after a failed accept (no more descriptors, say), which would otherwise fail again at once.
constexpr std::chrono::milliseconds kAcceptRetry{500};

tcp::endpoint MakeEndpoint(const std::string& address, std::uint16_t port) {
    boost::system::error_code error;
    const auto ip = boost::asio::ip::make_address(address, error);
    if (error) {
        throw std::runtime_error("not an address: " + address);
    }
    return {ip, port};
}

} // namespace

Server::Server(boost::asio::io_context& context, const std::string& address, std::uint16_t port,
               Inputs inputs, CatalogAddress catalogue)
    : m_acceptor(context),
      m_retry(context),
      m_inputs(std::move(inputs)),
      m_catalogue(std::make_shared<CatalogClient>(context.get_executor(), std::move(catalogue))) {
    const tcp::endpoint endpoint = MakeEndpoint(address, port);
    try {
        m_acceptor.open(endpoint.protocol());
        m_acceptor.set_option(tcp::acceptor::reuse_address(true));
        m_acceptor.bind(endpoint);
        m_acceptor.listen();
    } catch (const boost::system::system_error& error) {
        std::ostringstream text;
        text << "cannot listen on " << endpoint << ": " << error.code().message();
        throw std::runtime_error(text.str());
    }
    Accept();
}

Server::~Server() {
    Stop();
}

std::string Server::Endpoint() const {
    std::ostringstream text;
    text << m_acceptor.local_endpoint();
    return text.str();
}

std::uint16_t Server::Port() const {
    return m_acceptor.local_endpoint().port();
}

void Server::Stop() {
    boost::system::error_code ignored;
    m_acceptor.close(ignored);
    m_retry.cancel();
    // A closing session takes itself out of the set.
    const auto sessions = m_sessions;
    for (const auto& session : sessions) {
        session->Close("server stops");
    }
    m_catalogue->Close();
}

void Server::Accept() {
    m_acceptor.async_accept([this](const boost::system::error_code& error, tcp::socket socket) {
        if (error == boost::asio::error::operation_aborted || !m_acceptor.is_open()) {
            return;
        }
        if (error) {
            Log("cannot accept: " + error.message());
            m_retry.expires_after(kAcceptRetry);
            m_retry.async_wait([this](const boost::system::error_code& cancelled) {
                if (!cancelled) {
                    Accept();
                }
            });
            return;
        }
        OnConnection(std::move(socket));
        Accept();
    });
}

void Server::OnConnection(tcp::socket socket) {
    if (m_sessions.size() >= kMaxConnections) {
        Log("too many connections: one refused");
        return;
    }
    auto session =
        std::make_shared<Session>(std::move(socket), SessionContext{m_numbers, m_inputs, *m_catalogue},
                                  [this](const std::shared_ptr<Session>& ended) { m_sessions.erase(ended); });
    m_sessions.insert(session);
    session->Start();
}

} // namespace korvel::audioserver
