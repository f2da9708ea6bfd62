#include "Gateway.h"

#include <boost/asio/post.hpp>
#include <chrono>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace korvel::catalog {
namespace {

using boost::asio::ip::tcp;
using boost::system::error_code;

// Pause after a failed accept (no more descriptors, say), which would otherwise fail again at once.
constexpr std::chrono::milliseconds kAcceptRetry{500};

tcp::endpoint MakeEndpoint(const std::string& address, std::uint16_t port) {
    error_code error;
    const auto ip = boost::asio::ip::make_address(address, error);
    if (error)
        throw std::runtime_error("not an address: " + address);
    return {ip, port};
}

} // namespace

Gateway::Gateway(boost::asio::io_context& context, const std::string& address, std::uint16_t port,
                 Catalogue catalogue)
    : m_context(context),
      m_acceptor(context),
      m_retry(context),
      m_service(std::move(catalogue), [] { return std::chrono::steady_clock::now(); }) {
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
    m_service.SetStreamListener([this] { LookAgain(); });
    Accept();
}

Gateway::~Gateway() {
    Stop();
}

std::string Gateway::GetEndpoint() const {
    std::ostringstream text;
    text << m_acceptor.local_endpoint();
    return text.str();
}

void Gateway::Stop() {
    error_code ignored;
    m_acceptor.close(ignored);
    m_retry.cancel();
    // A closing connection takes itself out of the set.
    const auto connections = m_connections;
    for (const auto& connection : connections)
        connection->Close();
}

void Gateway::Accept() {
    m_acceptor.async_accept([this](error_code error, tcp::socket socket) {
        if (error == boost::asio::error::operation_aborted || !m_acceptor.is_open())
            return;
        if (error) {
            m_retry.expires_after(kAcceptRetry);
            m_retry.async_wait([this](error_code cancelled) {
                if (!cancelled)
                    Accept();
            });
            return;
        }
        OnConnection(std::move(socket));
        Accept();
    });
}

void Gateway::OnConnection(tcp::socket socket) {
    if (m_connections.size() >= kMaxConnections)
        return;
    auto connection = std::make_shared<Connection>(
        std::move(socket), ++m_lastId, m_service,
        [this](const std::shared_ptr<Connection>& ended) { m_connections.erase(ended); });
    m_connections.insert(connection);
    connection->Start();
}

// After the request that led to it: the service is still in the middle of that one.
void Gateway::LookAgain() {
    if (std::exchange(m_lookingAgain, true))
        return;
    boost::asio::post(m_context, [this] {
        m_lookingAgain = false;
        const auto connections = m_connections;
        for (const auto& connection : connections)
            connection->LookAgain();
    });
}

} // namespace korvel::catalog
