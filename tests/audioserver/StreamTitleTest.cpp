// What a stream tells of a station's titles when the station is lost at the wrong moment.
#include <arpa/inet.h>
#include <gst/gst.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <chrono>

#include "Sound.h"
#include "Station.h"
#include "Wait.h"
#include "audioserver/CatalogClient.h"
#include "audioserver/Stream.h"

namespace korvel::audioserver {
namespace {

using tests::Station;
using tests::Visit;

// A client of the stream.
class Ear {
public:
    Ear() : m_socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof(address);
        auto* raw = reinterpret_cast<sockaddr*>(&address);
        ::bind(m_socket, raw, length);
        ::getsockname(m_socket, raw, &length);
        m_client = {"127.0.0.1", ntohs(address.sin_port)};
    }
    ~Ear() { ::close(m_socket); }
    Ear(const Ear&) = delete;
    Ear& operator=(const Ear&) = delete;

    const ClientAddress& Client() const { return m_client; }
    // Waits until something is heard that is no silence.
    bool Hears() {
        return tests::WaitUntil([this] {
            bool hears = false;
            for (ssize_t size = Take(); size >= 0 && !hears; size = Take())
                hears = std::any_of(m_packet.begin() + kHeaderBytes,
                                    m_packet.begin() + std::max<ssize_t>(size, kHeaderBytes),
                                    [](char byte) { return byte != 0; });
            return hears;
        });
    }

private:
    static constexpr ssize_t kHeaderBytes = 12;

    ssize_t Take() { return ::recv(m_socket, m_packet.data(), m_packet.size(), MSG_DONTWAIT); }

    int m_socket;
    ClientAddress m_client;
    std::array<char, 2048> m_packet{};
};

constexpr std::size_t kBetweenTitles = 8192;
constexpr std::size_t kTwoSeconds = 47; // in pieces of so many bytes
constexpr std::size_t kTitlePiece = 2 * kTwoSeconds;

// What has no length and breaks before its end.
std::string BrokenHead() {
    return "HTTP/1.1 200 OK\r\nContent-Type: audio/x-wav\r\nicy-metaint: " + std::to_string(kBetweenTitles) +
           "\r\nTransfer-Encoding: chunked\r\n\r\nFFFFFFF\r\n";
}

// Pieces of a WAV that is silent until its title.
void SendPieces(const Visit& visit, std::size_t first, std::size_t count, const std::string& title) {
    const std::string wav = tests::WavOf({{0, 4.1}, {500, 4}});
    for (std::size_t piece = first; piece < first + count; ++piece) {
        std::string text = piece == kTitlePiece ? "StreamTitle='" + title + "';" : "";
        text.resize((text.size() + 15) / 16 * 16, '\0');
        visit.Send(wav.substr(piece * kBetweenTitles, kBetweenTitles) + static_cast<char>(text.size() / 16) +
                   text);
    }
}

class StreamTitleTest : public testing::Test {
protected:
    StreamTitleTest() {
        gst_init(nullptr, nullptr);
        m_settings.times.firstRetry = std::chrono::milliseconds(1);
        m_settings.times.betweenTitles = std::chrono::milliseconds(1);
        m_stream = Stream::Create(m_loop.get_executor(), 1, m_settings, *m_catalogue,
                                  [this](std::string_view line) { m_told += line; });
    }
    ~StreamTitleTest() override {
        m_stream.reset();
        m_catalogue->Close();
        m_work.reset();
        m_loop.run();
    }

    bool RunUntil(const std::string& told) {
        const auto end = std::chrono::steady_clock::now() + tests::kPatience;
        while (m_told.find(told) == std::string::npos && std::chrono::steady_clock::now() < end)
            m_loop.run_one_for(std::chrono::milliseconds(50));
        return m_told.find(told) != std::string::npos;
    }

    boost::asio::io_context m_loop;
    // Events come from other threads, also while the loop has nothing to do.
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> m_work{m_loop.get_executor()};
    StreamSettings m_settings;
    std::shared_ptr<CatalogClient> m_catalogue =
        std::make_shared<CatalogClient>(m_loop.get_executor(), common::HostPort{"127.0.0.1", 1});
    std::shared_ptr<Stream> m_stream;
    std::string m_told;
};

TEST_F(StreamTitleTest, ATitleThatComesAsTheStationIsLostKeepsNoLaterOneBack) {
    std::atomic<unsigned> visits{0};
    std::atomic<bool> goesOn{false};
    std::atomic<bool> works{false};
    const Station station([&](const Visit& visit) {
        if (++visits == 1) {
            visit.Send(BrokenHead());
            SendPieces(visit, 0, kTwoSeconds, "");
            while (!goesOn && visit.Dawdle()) {
            }
            SendPieces(visit, kTwoSeconds, kTwoSeconds + kTwoSeconds / 2, "Early");
        } else if (works) {
            visit.Send(BrokenHead());
            SendPieces(visit, 0, 2 * kTwoSeconds, "");
            SendPieces(visit, kTitlePiece, kTwoSeconds, "Later");
            while (visit.Dawdle()) {
            }
        } else {
            visit.Send("HTTP/1.0 404 Not Found\r\n\r\n");
        }
    });
    Ear ear;
    ASSERT_TRUE(m_stream->AddClient(ear.Client()));
    m_stream->AddMedia({MediaReference::Kind::kWeb, station.Url() + "/"});
    ASSERT_TRUE(RunUntil("streamStatus:playing"));
    ASSERT_TRUE(RunUntil("NO-PAUSE"));
    // While the loop does something else, the source first fails, two seconds ahead of what it gives out, and
    // then says its title.
    goesOn = true;
    ASSERT_TRUE(ear.Hears()) << "what comes after the title";
    ASSERT_TRUE(RunUntil("reconnecting"));
    works = true;
    EXPECT_TRUE(RunUntil("streamInfo:Later"));
}

} // namespace
} // namespace korvel::audioserver
