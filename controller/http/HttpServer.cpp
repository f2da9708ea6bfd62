#include "http/HttpServer.h"

#include <stdexcept>

#include "http/HttpSession.h"

namespace korvel::controller {
namespace {

// After a failed accept (no descriptors left, say), so that the loop does not spin.
constexpr std::chrono::milliseconds kAcceptPause{200};

} // namespace

HttpServer::HttpServer(asio::io_context& loop, Api& api, const std::string& address, std::uint16_t port,
                       const Log& log)
    : m_api(api), m_log(log), m_address(address), m_acceptor(loop), m_pause(loop) {
    try {
        const tcp::endpoint endpoint(asio::ip::make_address_v4(address), port);
        m_acceptor.open(endpoint.protocol());
        m_acceptor.set_option(tcp::acceptor::reuse_address(true));
        m_acceptor.bind(endpoint);
        m_acceptor.listen();
        m_port = m_acceptor.local_endpoint().port();
    } catch (const boost::system::system_error& error) {
        throw std::runtime_error("cannot serve HTTP on " + address + ":" + std::to_string(port) + ": " +
                                 error.code().message());
    }
    Accept();
}

HttpServer::~HttpServer() {
    Stop();
}

void HttpServer::Stop() {
    *m_alive = false;
    boost::system::error_code ignored;
    m_acceptor.close(ignored);
    m_pause.cancel();
    const std::set<Session*> sessions = m_sessions; // they remove themselves
    for (Session* session : sessions)
        session->Close();
}

bool HttpServer::Add(Session& session) {
    return m_sessions.size() < kMaxSessions && m_sessions.insert(&session).second;
}

void HttpServer::Accept() {
    m_acceptor.async_accept([this, alive = m_alive](boost::system::error_code error, tcp::socket socket) {
        if (!*alive)
            return;
        if (!error) {
            std::make_shared<HttpSession>(std::move(socket), *this)->Start();
            Accept();
            return;
        }
        m_pause.expires_after(kAcceptPause);
        m_pause.async_wait([this, alive](boost::system::error_code) {
            if (*alive)
                Accept();
        });
    });
}

} // namespace korvel::controller
