#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "common/Acceptor.h"
#include "front/http/Api.h"

namespace korvel::controller {

// Something that a connection is at present: a session of requests or of events.
class Connection {
public:
    // Ends it now.
    virtual void Close() = 0;

protected:
    virtual ~Connection() = default;
};

// Listens on one loopback address and serves the interface there.
class HttpServer {
public:
    // Connections at one time. A further one takes the place of the one that has waited for its next request for
    // longest; when all are being answered or listen, it is closed at once.
    static constexpr std::size_t kMaxSessions = 128;
    // Of them so many may listen to the events.
    static constexpr std::size_t kMaxListeners = 64;

    // Throws std::runtime_error with one clear line when the address is taken or not one of this machine.
    HttpServer(asio::io_context& loop, Api& api, const std::string& address, std::uint16_t port,
               const common::Log& log);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    std::uint16_t GetPort() const { return m_acceptor.GetPort(); }
    // Closes the listener and all sessions.
    void Stop();

    // For sessions: each is known here from its start to its end.
    void Add(Connection& session) { m_sessions.insert(&session); }
    void Remove(Connection& session) { m_sessions.erase(&session); }

    // For those that listen to the events. False when there are too many already.
    bool AddListener();
    void RemoveListener() { --m_listeners; }

    Api& GetApi() { return m_api; }
    const std::string& GetAddress() const { return m_address; }
    const common::Log& GetLog() const { return m_log; }

private:
    Api& m_api;
    const common::Log& m_log;
    std::string m_address;
    std::set<Connection*> m_sessions;
    std::size_t m_listeners = 0;
    common::Acceptor m_acceptor;
};

} // namespace korvel::controller
