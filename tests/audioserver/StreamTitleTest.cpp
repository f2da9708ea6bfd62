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
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

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
    void Forget() {
        while (Take() >= 0) {
        }
    }
    // Waits until something is heard that is no silence.
    bool Hears() {
        return tests::WaitUntil([this] {
            const ssize_t size = Take();
            return std::any_of(m_packet.begin() + kHeaderBytes,
                               m_packet.begin() + std::max<ssize_t>(size, kHeaderBytes),
                               [](char byte) { return byte != 0; });
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

// Sends more than two seconds of sound, the title after its first piece.
void SendPieces(const Visit& visit, std::size_t first, const std::string& title) {
    const std::string wav = tests::WavOf({{500, 10}});
    std::string text = title.empty() ? "" : "StreamTitle='" + title + "';";
    text.resize((text.size() + 15) / 16 * 16, '\0');
    for (std::size_t piece = first; piece < first + kTwoSeconds; ++piece) {
        visit.Send(wav.substr(piece * kBetweenTitles, kBetweenTitles) + static_cast<char>(text.size() / 16) +
                   text);
        text.clear();
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
        m_loop.restart();
        m_loop.run();
    }

    bool RunUntil(const std::string& told) {
        const auto end = std::chrono::steady_clock::now() + tests::kPatience;
        while (m_told.find(told) == std::string::npos && std::chrono::steady_clock::now() < end)
            m_loop.run_one_for(std::chrono::milliseconds(50));
        return m_told.find(told) != std::string::npos;
    }
    // The patience with the source is over, and the loop has this next to do whatever comes now.
    void LetPatienceEnd() {
        boost::asio::io_context clock;
        boost::asio::steady_timer(clock, m_settings.times.toSound).wait();
        boost::asio::post(m_loop, [] {});
        m_loop.poll_one();
    }

    boost::asio::io_context m_loop;
    StreamSettings m_settings;
    std::shared_ptr<CatalogClient> m_catalogue =
        std::make_shared<CatalogClient>(m_loop.get_executor(), common::HostPort{"127.0.0.1", 1});
    std::shared_ptr<Stream> m_stream;
    std::string m_told;
};

TEST_F(StreamTitleTest, ATitleThatComesAsTheStationIsLostKeepsNoLaterOneBack) {
    std::atomic<unsigned> visits{0};
    std::atomic<bool> late{false};
    const Station station([&](const Visit& visit) {
        const bool first = ++visits == 1;
        visit.Send(tests::Head("audio/x-wav", "icy-metaint: " + std::to_string(kBetweenTitles) + "\r\n"));
        SendPieces(visit, 0, "");
        while (first && !late && visit.Dawdle()) {
        }
        SendPieces(visit, kTwoSeconds, first ? "Early" : "Later");
        while (visit.Dawdle()) {
        }
    });
    Ear ear;
    ASSERT_TRUE(m_stream->AddClient(ear.Client()));
    m_stream->AddMedia({MediaReference::Kind::kWeb, station.Url() + "/"});
    ASSERT_TRUE(RunUntil("playing"));
    ASSERT_TRUE(RunUntil("NO-PAUSE"));
    m_settings.times.toSound = std::chrono::milliseconds(1000);
    ASSERT_TRUE(RunUntil("buffering 0%"));
    m_loop.run_for(std::chrono::milliseconds(200)); // the source has run dry: its patience runs
    LetPatienceEnd();
    ear.Forget();
    late = true;
    ASSERT_TRUE(ear.Hears()) << "what comes after the title";
    m_settings.times.toSound = tests::kPatience;
    ASSERT_TRUE(RunUntil("reconnecting"));
    EXPECT_TRUE(RunUntil("streamInfo:Later"));
}

} // namespace
} // namespace korvel::audioserver
