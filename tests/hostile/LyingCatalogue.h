// A catalogue that names what it likes.
#pragma once

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace korvel::tests {

// Listens on 127.0.0.1 and answers one connection at a time. Every playlist has the same tracks; whatever else it is
// asked for is not there.
class LyingCatalogue {
public:
    explicit LyingCatalogue(std::vector<std::string> tracks);
    ~LyingCatalogue();
    LyingCatalogue(const LyingCatalogue&) = delete;
    LyingCatalogue& operator=(const LyingCatalogue&) = delete;

    std::uint16_t Port() const { return m_port; }

private:
    void Serve(const std::stop_token& stop) const;
    void Answer(int connection, const std::stop_token& stop) const;
    std::string AnswerTo(const std::string& question) const;

    const std::vector<std::string> m_tracks;
    int m_socket;
    std::uint16_t m_port = 0;
    std::jthread m_thread;
};

} // namespace korvel::tests
