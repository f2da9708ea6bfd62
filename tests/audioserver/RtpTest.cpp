// What goes over the wire to a client.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>

#include "Bed.h"

namespace korvel::tests {
namespace {

// A client's pair of UDP sockets.
class Receiver {
public:
    Receiver() {
        while (m_rtp < 0) {
            const int rtp = Bind(0);
            const auto port = PortOfSocket(rtp);
            const int rtcp = port < 65535 ? Bind(static_cast<std::uint16_t>(port + 1)) : -1;
            if (rtcp < 0) {
                ::close(rtp);
                continue;
            }
            m_rtp = rtp;
            m_rtcp = rtcp;
        }
    }
    ~Receiver() {
        ::close(m_rtp);
        ::close(m_rtcp);
    }
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    std::string Client() const { return "127.0.0.1 " + std::to_string(PortOfSocket(m_rtp)); }
    std::string NextRtp(std::chrono::milliseconds patience = kPatience) const {
        return Next(m_rtp, patience);
    }
    std::string NextRtcp() const { return Next(m_rtcp, kPatience); }

private:
    static int Bind(std::uint16_t port) {
        const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        // Room for all that comes while a busy machine does not let the test read.
        const int bytes = 1 << 20;
        ::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof(bytes));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
            ::close(socket);
            return -1;
        }
        return socket;
    }
    static std::uint16_t PortOfSocket(int socket) {
        sockaddr_in address{};
        socklen_t length = sizeof(address);
        ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
        return ntohs(address.sin_port);
    }
    static std::string Next(int socket, std::chrono::milliseconds patience) {
        std::array<char, 2048> packet{};
        if (!WaitReadable(socket, patience))
            return "";
        const ssize_t count = ::recv(socket, packet.data(), packet.size(), 0);
        return count > 0 ? std::string(packet.data(), static_cast<std::size_t>(count)) : "";
    }

    int m_rtp = -1;
    int m_rtcp = -1;
};

// A station that takes connections and never says anything.
class SilentStation {
public:
    SilentStation() : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof(address);
        if (::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), length) != 0 ||
            ::listen(m_socket, 1) != 0)
            ADD_FAILURE() << "no station";
        ::getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &length);
        m_port = ntohs(address.sin_port);
    }
    ~SilentStation() { ::close(m_socket); }
    SilentStation(const SilentStation&) = delete;
    SilentStation& operator=(const SilentStation&) = delete;

    std::string Media() const { return "\"file:/stream-http://127.0.0.1:" + std::to_string(m_port) + "/\""; }

private:
    int m_socket;
    std::uint16_t m_port = 0;
};

constexpr std::size_t kHeaderBytes = 12;

std::uint32_t NumberAt(const std::string& packet, std::size_t offset, std::size_t bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < bytes; ++i)
        value = value << 8 | static_cast<unsigned char>(packet.at(offset + i));
    return value;
}

bool IsAudible(const std::string& packet) {
    return packet.find_first_not_of('\0', kHeaderBytes) != std::string::npos;
}

class Rtp : public Bed {
protected:
    void SetUp() override {
        m_driver = Connect();
        m_stream = std::to_string(m_driver->AddStream());
        m_media = "addmed " + m_stream + " " + FileMedia(ToneFile("a.wav", {{500, 0.3}}));
    }

    std::unique_ptr<LineClient> m_driver;
    std::string m_stream;
    std::string m_media;
};

TEST_F(Rtp, AStreamRunsOnUnbrokenOverSeveralMedia) {
    const Receiver receiver;
    m_driver->Ask("addcli " + m_stream + " " + receiver.Client());
    // The same client twice is one client.
    EXPECT_EQ(m_driver->Ask("addcli " + m_stream + " " + receiver.Client()), "OK addcli " + m_stream);
    m_driver->Ask(m_media);
    std::string last = receiver.NextRtp();
    for (int count = 0; count < 200; ++count) {
        if (count == 50 || count == 60)
            m_driver->Ask(m_media);
        const std::string packet = receiver.NextRtp();
        ASSERT_EQ(packet.size(), kHeaderBytes + 192 * 4);
        EXPECT_EQ(NumberAt(packet, 0, 1), 0x80U);
        EXPECT_EQ(NumberAt(packet, 1, 1) & 0x7fU, 96U);
        EXPECT_EQ(NumberAt(packet, 2, 2), (NumberAt(last, 2, 2) + 1) & 0xffffU);
        EXPECT_EQ(NumberAt(packet, 4, 4), NumberAt(last, 4, 4) + 192);
        EXPECT_EQ(NumberAt(packet, 8, 4), NumberAt(last, 8, 4));
        last = packet;
    }
}

TEST_F(Rtp, TheEndIsReportedWhenAllOfItIsSent) {
    const Receiver receiver;
    m_driver->Ask("addcli " + m_stream + " " + receiver.Client());
    m_driver->Ask(m_media);
    int audible = 0;
    std::string event;
    while (event.empty()) {
        audible += IsAudible(receiver.NextRtp()) ? 1 : 0;
        event = m_driver->NextEvent(std::chrono::milliseconds(0));
    }
    EXPECT_EQ(event, "* addmed EOM=" + m_stream);
    std::string packet;
    while (packet = receiver.NextRtp(std::chrono::milliseconds(0)), !packet.empty())
        audible += IsAudible(packet) ? 1 : 0;
    EXPECT_EQ(audible, 300 / 4);
}

TEST_F(Rtp, AMediaIsHeardForAWhileUntilTheNextOneHasSound) {
    constexpr int kOverlapPackets = 400 / 4;
    const Receiver receiver;
    const SilentStation station;
    m_driver->Ask("addcli " + m_stream + " " + receiver.Client());
    m_driver->Ask("addmed " + m_stream + " " + FileMedia(ToneFile("long.wav", {{500, 20}})));
    // Until as much is decoded ahead.
    for (int audible = 0; audible < 2 * kOverlapPackets;)
        audible += IsAudible(receiver.NextRtp()) ? 1 : 0;
    while (!receiver.NextRtp(std::chrono::milliseconds(0)).empty()) {
    }
    m_driver->Ask("addmed " + m_stream + " " + station.Media());
    int heard = 0;
    while (IsAudible(receiver.NextRtp()))
        ++heard;
    EXPECT_GE(heard, kOverlapPackets);
}

TEST_F(Rtp, ReportsRelateTheStreamToTheClock) {
    const Receiver receiver;
    m_driver->Ask("addcli " + m_stream + " " + receiver.Client());
    m_driver->Ask(m_media);
    const std::string packet = receiver.NextRtp();
    const std::string report = receiver.NextRtcp();
    ASSERT_GE(report.size(), 28U);
    EXPECT_EQ(NumberAt(report, 1, 1), 200U);
    EXPECT_EQ(NumberAt(report, 4, 4), NumberAt(packet, 8, 4));
}

TEST_F(Rtp, ARemovedClientGetsNothingMore) {
    const Receiver receiver;
    const Receiver other;
    m_driver->Ask("addcli " + m_stream + " " + receiver.Client());
    m_driver->Ask("addcli " + m_stream + " " + receiver.Client());
    m_driver->Ask("addcli " + m_stream + " " + other.Client());
    EXPECT_NE(receiver.NextRtp(), "");
    EXPECT_EQ(m_driver->Ask("remcli " + m_stream + " " + receiver.Client()), "OK remcli " + m_stream);
    EXPECT_EQ(m_driver->Ask("remcli " + m_stream + " " + receiver.Client()), "OK remcli " + m_stream);
    while (!receiver.NextRtp(std::chrono::milliseconds(0)).empty()) {
    }
    while (!other.NextRtp(std::chrono::milliseconds(0)).empty()) {
    }
    for (int count = 0; count < 20; ++count)
        EXPECT_NE(other.NextRtp(), "");
    EXPECT_EQ(receiver.NextRtp(std::chrono::milliseconds(0)), "");
}

TEST_F(Rtp, AnIdleStreamFallsQuietAndGoesOnWithTheNextMedia) {
    const Receiver receiver;
    m_driver->Ask("addcli " + m_stream + " " + receiver.Client());
    std::string last = receiver.NextRtp();
    for (std::string packet = last; !packet.empty();
         packet = receiver.NextRtp(std::chrono::milliseconds(400)))
        last = packet;
    m_driver->Ask(m_media);
    const std::string next = receiver.NextRtp();
    ASSERT_NE(next, "");
    EXPECT_EQ(NumberAt(next, 8, 4), NumberAt(last, 8, 4));
    EXPECT_EQ(NumberAt(next, 2, 2), (NumberAt(last, 2, 2) + 1) & 0xffffU);
    // At least the time waited above has gone by on the stream's clock.
    EXPECT_GE(NumberAt(next, 4, 4) - NumberAt(last, 4, 4), 48000U * 4 / 10);
}

} // namespace
} // namespace korvel::tests
