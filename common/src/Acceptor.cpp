#include "common/Acceptor.h"

#include <algorithm>
#include <chrono>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace korvel::common {
namespace {

// Pause after a failed accept (no more descriptors, say), which would otherwise fail again at once.
constexpr std::chrono::milliseconds kRetry{500};

std::string TextOf(const tcp::endpoint& endpoint) {
    std::ostringstream text;
    text << endpoint;
    return text.str();
}

tcp::endpoint MakeEndpoint(const std::string& address, std::uint16_t port) {
    error_code error;
    const auto ip = asio::ip::make_address(address, error);
    if (error)
        throw std::runtime_error("not an address: " + address);
    return {ip, port};
}

} // namespace

Acceptor::Place::~Place() {
    if (const auto guests = m_guests.lock())
        guests->erase(m_guest);
}

void Acceptor::Place::SetIdle(std::function<void()> leave) {
    const auto guests = m_guests.lock();
    if (!guests || m_guest->left)
        return;
    m_guest->leave = std::move(leave);
    guests->splice(guests->end(), *guests, m_guest);
}

void Acceptor::Place::SetBusy() {
    if (const auto guests = m_guests.lock())
        m_guest->leave = nullptr;
}

Acceptor::Acceptor(const asio::any_io_executor& executor, const std::string& address, std::uint16_t port,
                   Limits limits, Accepted accepted, const Log& log)
    : m_acceptor(executor),
      m_retry(executor),
      m_endpoint(MakeEndpoint(address, port)),
      m_limits(limits),
      m_accepted(std::move(accepted)),
      m_log(log) {
    try {
        m_acceptor.open(m_endpoint.protocol());
        m_acceptor.set_option(tcp::acceptor::reuse_address(true));
        m_acceptor.bind(m_endpoint);
        m_acceptor.listen();
        m_endpoint = m_acceptor.local_endpoint();
    } catch (const boost::system::system_error& error) {
        throw std::runtime_error("cannot listen on " + TextOf(m_endpoint) + ": " + error.code().message());
    }
    Accept();
}

Acceptor::~Acceptor() {
    Stop();
}

std::string Acceptor::GetEndpoint() const {
    return TextOf(m_endpoint);
}

void Acceptor::Stop() {
    error_code ignored;
    m_acceptor.close(ignored);
    m_retry.cancel();
}

void Acceptor::Accept() {
    m_acceptor.async_accept([this, alive = std::weak_ptr(m_guests)](error_code error, tcp::socket socket) {
        if (alive.expired() || !m_acceptor.is_open())
            return;
        if (error) {
            m_log.Warning("cannot accept a connection: " + error.message());
            AcceptLater();
            return;
        }
        Accept(); // first: should the owner throw, the next ones come in all the same
        OnConnection(std::move(socket));
    });
}

void Acceptor::AcceptLater() {
    m_retry.expires_after(kRetry);
    m_retry.async_wait([this, alive = std::weak_ptr(m_guests)](error_code) {
        if (!alive.expired() && m_acceptor.is_open())
            Accept();
    });
}

void Acceptor::OnConnection(tcp::socket socket) {
    error_code error;
    const auto peer = socket.remote_endpoint(error);
    if (error || !HasRoom(peer.address()))
        return;
    const auto guest = m_guests->insert(m_guests->end(), {peer.address(), nullptr, false});
    m_accepted(std::move(socket), Place(m_guests, guest));
}

bool Acceptor::HasRoom(const asio::ip::address& address) {
    const std::string who = "a connection of " + address.to_string();
    if (Count(&address) >= m_limits.perAddress && !MakeRoom(&address)) {
        m_log.WriteFor(address.to_string(), LogLevel::Warning,
                       "refused " + who + ", which has " + std::to_string(m_limits.perAddress));
        return false;
    }
    if (Count(nullptr) >= m_limits.total && !MakeRoom(nullptr)) {
        m_log.Warning("refused " + who + ": there are " + std::to_string(m_limits.total));
        return false;
    }
    return true;
}

// Of this address, of any without one.
std::size_t Acceptor::Count(const asio::ip::address* address) const {
    return static_cast<std::size_t>(std::ranges::count_if(*m_guests, [address](const Guest& guest) {
        return !guest.left && (!address || guest.address == *address);
    }));
}

bool Acceptor::MakeRoom(const asio::ip::address* address) {
    const auto oldest = std::ranges::find_if(*m_guests, [address](const Guest& guest) {
        return guest.leave && (!address || guest.address == *address);
    });
    if (oldest == m_guests->end())
        return false;
    m_log.Info("an idle connection of " + oldest->address.to_string() + " gives way to a new one");
    oldest->left = true;
    std::exchange(oldest->leave, nullptr)();
    return true;
}

} // namespace korvel::common
