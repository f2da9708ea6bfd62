// Listens, and decides who is let in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>

#include "common/Asio.h"
#include "common/Log.h"

namespace korvel::common {

// Lets in so many connections at a time, and so many of one address. Beyond that the one that has been idle for
// longest, of that address if it is the address that has its share, gives way to the new one; when none is idle,
// the new one is closed. Lives on one loop.
class Acceptor {
    struct Guest {
        asio::ip::address address;
        std::function<void()> leave; // empty while it is busy
        bool left = false;           // it gave way
    };
    // Those that became idle last at the end.
    using Guests = std::list<Guest>;

public:
    struct Limits {
        std::size_t total;
        std::size_t perAddress;
    };

    // A connection's place among those that are let in; its end makes room for another. Busy at first. May
    // outlive the acceptor.
    class Place {
    public:
        Place(Place&& other) noexcept = default;
        Place& operator=(Place&&) = delete;
        ~Place();

        // From now on the connection is idle: `leave` closes it for good, is called once at most, on the loop,
        // and may destroy the place. A second call begins a new idle time.
        void SetIdle(std::function<void()> leave);
        // From now on it gives way to nobody.
        void SetBusy();

    private:
        friend class Acceptor;
        Place(const std::shared_ptr<Guests>& guests, Guests::iterator guest)
            : m_guests(guests), m_guest(guest) {}

        std::weak_ptr<Guests> m_guests; // empty when it was moved from
        Guests::iterator m_guest;
    };

    using Accepted = std::function<void(tcp::socket socket, Place place)>;

    // Starts to listen. `address` is numeric; port 0 picks a free one. `log` must outlive the acceptor.
    // Throws std::runtime_error with one line of text when the address is unusable or the port is taken.
    Acceptor(const asio::any_io_executor& executor, const std::string& address, std::uint16_t port,
             Limits limits, Accepted accepted, const Log& log);
    ~Acceptor();
    Acceptor(const Acceptor&) = delete;
    Acceptor& operator=(const Acceptor&) = delete;

    // "ADDRESS:PORT" with the real port.
    std::string GetEndpoint() const;
    std::uint16_t GetPort() const { return m_endpoint.port(); }

    // Stops listening. The connections that were let in are their owners'.
    void Stop();

private:
    void Accept();
    void AcceptLater();
    void OnConnection(tcp::socket socket);
    bool HasRoom(const asio::ip::address& address);
    bool MakeRoom(const asio::ip::address* address);
    std::size_t Count(const asio::ip::address* address) const;

    tcp::acceptor m_acceptor;
    asio::steady_timer m_retry;
    tcp::endpoint m_endpoint;
    const Limits m_limits;
    const Accepted m_accepted;
    const Log& m_log;
    // Handlers that are under way when the acceptor goes find it gone by this.
    const std::shared_ptr<Guests> m_guests = std::make_shared<Guests>();
};

} // namespace korvel::common
