// A web server that does what it likes.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace korvel::tests {

// A request to a station, and the way to answer it.
class Visit {
public:
    Visit(int socket, std::string path, const std::atomic<bool>& stopping)
        : m_socket(socket), m_path(std::move(path)), m_stopping(stopping) {}

    const std::string& Path() const { return m_path; }
    // False when the visitor is gone or the station is to stop.
    bool Send(std::string_view bytes) const;
    // Waits for a moment that the station chooses; false as for Send().
    bool Dawdle() const;

private:
    int m_socket;
    std::string m_path;
    const std::atomic<bool>& m_stopping;
};

// Listens on 127.0.0.1 and gives every request to the host, each in a thread of its own. The connection is
// closed when the host returns.
class Station {
public:
    using Host = std::function<void(const Visit& visit)>;

    explicit Station(Host host);
    ~Station();
    Station(const Station&) = delete;
    Station& operator=(const Station&) = delete;

    // "http://127.0.0.1:PORT", without a path.
    std::string Url() const;
    unsigned Visits() const { return m_visits; }

private:
    void Serve();
    void Answer(int connection);

    Host m_host;
    int m_socket = -1;
    std::uint16_t m_port = 0;
    std::atomic<bool> m_stopping{false};
    std::atomic<unsigned> m_visits{0};
    std::vector<std::jthread> m_visitors; // only used by the thread
    std::jthread m_thread;
};

// The head of an answer of this type, without a length.
std::string Head(const std::string& type, const std::string& more = "");

} // namespace korvel::tests
