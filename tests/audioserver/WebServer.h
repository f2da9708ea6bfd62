// A web server for one file.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

namespace korvel::tests {

// Serves the same bytes for every path on 127.0.0.1: as a file that tells its length or as a radio station.
class WebServer {
public:
    WebServer(std::string body, bool tellLength);
    ~WebServer();
    WebServer(const WebServer&) = delete;
    WebServer& operator=(const WebServer&) = delete;

    // "http://127.0.0.1:PORT/"
    std::string Url() const;

private:
    void Serve();
    void Answer(int connection) const;

    std::string m_body;
    bool m_tellLength;
    int m_socket = -1;
    std::uint16_t m_port = 0;
    std::atomic<bool> m_stopping{false};
    std::thread m_thread;
};

} // namespace korvel::tests
