#include "LyingCatalogue.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "Wait.h"

namespace korvel::tests {
namespace {

constexpr std::chrono::milliseconds kLook{50};

} // namespace

LyingCatalogue::LyingCatalogue(std::vector<std::string> tracks)
    : m_tracks(std::move(tracks)), m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    auto* raw = reinterpret_cast<sockaddr*>(&address);
    if (::bind(m_socket, raw, length) != 0 || ::listen(m_socket, 8) != 0 ||
        ::getsockname(m_socket, raw, &length) != 0) {
        ::close(m_socket);
        throw std::runtime_error("no catalogue");
    }
    m_port = ntohs(address.sin_port);
    m_thread = std::jthread([this](const std::stop_token& stop) { Serve(stop); });
}

LyingCatalogue::~LyingCatalogue() {
    m_thread.request_stop();
    m_thread.join();
    ::close(m_socket);
}

void LyingCatalogue::Serve(const std::stop_token& stop) const {
    while (!stop.stop_requested()) {
        if (!WaitReadable(m_socket, kLook))
            continue;
        const int connection = ::accept(m_socket, nullptr, nullptr);
        Answer(connection, stop);
        ::close(connection);
    }
}

void LyingCatalogue::Answer(int connection, const std::stop_token& stop) const {
    std::string pending;
    std::array<char, 4096> chunk{};
    while (!stop.stop_requested()) {
        if (!WaitReadable(connection, kLook))
            continue;
        const ssize_t count = ::recv(connection, chunk.data(), chunk.size(), 0);
        if (count <= 0)
            return;
        pending.append(chunk.data(), static_cast<std::size_t>(count));
        for (std::size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
            const std::string answer = AnswerTo(pending.substr(0, end)) + "\n";
            pending.erase(0, end + 1);
            ::send(connection, answer.data(), answer.size(), MSG_NOSIGNAL);
        }
    }
}

std::string LyingCatalogue::AnswerTo(const std::string& question) const {
    constexpr int kNotThere = 2;
    const auto asked = nlohmann::json::parse(question);
    nlohmann::json answer = {{"id", asked.at("id")}};
    if (asked.at("op") == "playlist-tracks") {
        answer["total"] = m_tracks.size();
        answer["tracks"] = m_tracks;
    } else {
        answer["error"] = {{"code", kNotThere}};
    }
    return answer.dump();
}

} // namespace korvel::tests
