// A TCP connection that speaks in lines, whichever side made it.
#pragma once

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include "common/Asio.h"
#include "common/Lines.h"

namespace korvel::common {

struct LineLimits {
    // Bytes of the longest line, its end not counted. The owner hears of a longer one and may answer it.
    std::size_t line;
    // Bytes that may wait to go out. A peer that leaves more unread loses the connection.
    std::size_t waiting;
    // From a line's first byte to its end. A peer that takes longer loses the connection.
    std::chrono::milliseconds lineTime;
    // The same from the connection's start to the end of its first line; 0 for a peer that may keep silent.
    std::chrono::milliseconds firstLineTime{0};
};

// A peer whose machine or network is gone loses the connection after so long, also when nothing is said.
inline constexpr std::chrono::seconds kPeerPatience{10};

// Reads lines and writes what it is given. Lives on one loop and keeps itself alive while it is open.
class LineConnection : public std::enable_shared_from_this<LineConnection> {
public:
    // Told of what happens, on the loop, never from within a call of the connection. May be destroyed in any of
    // its functions, provided that the connection is closed then.
    class Listener {
    public:
        virtual void OnLine(const Line& line) = 0;
        // The connection has ended by itself. Nothing is called afterwards.
        virtual void OnEnd(const std::string& why) = 0;

    protected:
        ~Listener() = default;
    };

    // Takes an open socket. `listener` is used until Close() or its OnEnd().
    LineConnection(tcp::socket socket, const LineLimits& limits, Listener& listener);

    void Start();

    // From now on another one is told, also of the lines that have come already. Only while it is open.
    void SetListener(Listener& listener) { m_listener = &listener; }

    // Closes it; the listener hears no more, and what waited to go out is lost. A second call does nothing.
    void Close();

    bool IsOpen() const { return m_listener != nullptr; }

    // Puts bytes, which are whole lines, on their way, in the order of the calls. Dropped once it is closed.
    void Send(std::string_view lines);

    tcp::socket::executor_type GetExecutor() { return m_socket.get_executor(); }

    // "ADDRESS:PORT" of the other side as it was at the start.
    const std::string& GetPeer() const { return m_peer; }

private:
    void Read();
    void OnBytes(std::size_t count);
    void Write();
    void WatchTime(std::chrono::milliseconds patience, const char* why);
    void End(const std::string& why);

    tcp::socket m_socket;
    asio::steady_timer m_timer;
    const LineLimits m_limits;
    Listener* m_listener; // null once closed
    const std::string m_peer;
    LineSplitter m_splitter;
    bool m_timed = false; // m_timer runs
    std::array<char, 4096> m_chunk{};
    bool m_full = false;
    std::string m_waiting; // to be written after m_writing
    std::string m_writing;
};

} // namespace korvel::common
