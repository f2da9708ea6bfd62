// The connection to one audio server.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "base/Asio.h"
#include "links/LinkSettings.h"

namespace korvel::controller {

// How often an audio server is asked for a sign of life, and how many may be missing one after the other.
struct Heartbeat {
    std::chrono::milliseconds interval;
    unsigned missing;
};
// A server that stands still is lost 7.5 to 9 seconds after its last line.
inline constexpr Heartbeat kServerHeartbeat{std::chrono::milliseconds(1500), 5};

// What the core itself asks has this number: the driver's end at 65535.
inline constexpr std::uint32_t kOwnNumber = 65536;

// Carries the driver's lines to an audio server and the server's lines to the driver, and makes sure that somebody
// is there: the system makes connections to a program that stands still. So the first thing on each is a ping, and
// the connection counts once the server has said something. One that has answered pings is lost when it falls
// silent. The pings and their answers concern nobody else. A server that ignores them is told of after one beat,
// and may keep silent. Lives on one loop.
class ServerLink final : public std::enable_shared_from_this<ServerLink>,
                         private common::OutgoingLink::Listener {
public:
    // Told of what happens, on the loop, never from within a call of the link.
    class Listener {
    public:
        // There is a connection that counts. `address` is the server's numeric one.
        virtual void OnConnected(ServerLink& link, const std::string& address) = 0;
        // A line for the driver, with its end.
        virtual void OnLine(ServerLink& link, const std::string& line) = 0;
        // The connection that OnConnected() told of has ended.
        virtual void OnLost(ServerLink& link) = 0;
        // What IsAnswering() or GetProblem() say has changed, but for a loss.
        virtual void OnChanged(ServerLink& link) = 0;

    protected:
        ~Listener() = default;
    };

    // `listener` is used until Stop(); `log` must outlive the link.
    ServerLink(asio::io_context& loop, const common::HostPort& server, const common::BackOff& backOff,
               Heartbeat heartbeat, Listener& listener, const common::Log& log);

    // Connects, and again after each loss.
    void Start() { m_link->Start(); }
    // Closes the connection for good; the listener hears no more.
    void Stop();

    const common::HostPort& GetServer() const { return m_link->GetServer(); }
    bool IsConnected() const { return m_link->IsConnected(); }
    // Whether there is a connection and the server has said something on it.
    bool IsAnswering() const { return m_answering; }
    // Whether a server that is reached says nothing.
    bool IsSilent() const;
    // Why it does not answer, in a few words; "" while it does and before the first attempt has ended.
    const std::string& GetProblem() const { return m_problem; }

    // Sends a line of the driver's, with its end; without a connection it is dropped. What is not one line, or too
    // long for the server, is not sent: the driver hears the server's refusal soon, and goes on.
    void Send(const std::string& line);

private:
    void OnConnected(common::OutgoingLink& link, const std::string& address) override;
    void OnLine(common::OutgoingLink& link, const common::Line& line) override;
    void OnLost(common::OutgoingLink& link, bool wasConnected, const std::string& why) override;

    void TellConnected();
    void SetState(bool answering, const std::string& problem);
    void RefuseSoon(std::string_view line);
    void Ping();
    void WaitForBeat();
    void OnBeat();

    asio::io_context& m_loop;
    const Heartbeat m_heartbeat;
    Listener& m_listener;
    const common::Log& m_log;
    asio::steady_timer m_timer;
    std::shared_ptr<common::OutgoingLink> m_link;
    std::string m_address;
    bool m_told = false; // the listener knows of the connection
    bool m_answering = false;
    bool m_knowsPings =
        false; // one was answered, if not on this connection then on the one that it fell silent on
    bool m_heard = false;   // something since the last beat
    unsigned m_missing = 0; // beats without a sign of life
    std::string m_problem;
};

} // namespace korvel::controller
