// Packets that are not a room's.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cmath>
#include <numbers>
#include <random>
#include <thread>

#include "Bed.h"

namespace korvel::tests {
namespace {

constexpr const char* kStranger = "127.0.0.2";
constexpr const char* kServer = "127.0.0.1";
constexpr int kStrangeHz = 1000;

// Sends to a room from an address of this machine.
class Sender {
public:
    explicit Sender(const std::string& address) : m_socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        const sockaddr_in from = AddressOf(address, 0);
        if (::bind(m_socket, reinterpret_cast<const sockaddr*>(&from), sizeof(from)) != 0)
            ADD_FAILURE() << "cannot send from " << address;
    }
    ~Sender() { ::close(m_socket); }
    Sender(const Sender&) = delete;
    Sender& operator=(const Sender&) = delete;

    void Send(const std::string& packet, std::uint16_t port) const {
        const sockaddr_in to = AddressOf(kServer, port);
        ::sendto(m_socket, packet.data(), packet.size(), 0, reinterpret_cast<const sockaddr*>(&to),
                 sizeof(to));
    }

private:
    static sockaddr_in AddressOf(const std::string& ip, std::uint16_t port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        ::inet_pton(AF_INET, ip.c_str(), &address.sin_addr);
        return address;
    }

    int m_socket;
};

std::string Number(std::uint32_t number, int bytes) {
    std::string text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        text += static_cast<char>(number >> shift & 0xffU);
    return text;
}

// A sender report and a description, as a receiver wants them.
std::string Report(std::uint32_t stream) {
    return std::string("\x80\xc8") + Number(6, 2) + Number(stream, 4) + std::string(20, '\x01') + "\x81\xca" +
           Number(3, 2) + Number(stream, 4) + Number(0x01046e61, 4) + Number(0x6d650000, 4);
}

// 4 ms of a tone that no server plays here.
std::string Packet(std::uint32_t stream, std::uint32_t number) {
    constexpr std::uint32_t kFrames = 192;
    std::string packet =
        std::string("\x80\x60") + Number(number, 2) + Number(number * kFrames, 4) + Number(stream, 4);
    for (std::uint32_t frame = 0; frame < kFrames; ++frame) {
        const double seconds = (number * kFrames + frame) / 48000.0;
        const auto sample =
            static_cast<std::int32_t>(8000 * std::sin(2 * std::numbers::pi * kStrangeHz * seconds));
        packet +=
            Number(static_cast<std::uint32_t>(sample), 2) + Number(static_cast<std::uint32_t>(sample), 2);
    }
    return packet;
}

class HostilePlayer : public Bed {
protected:
    // A stream that plays a long tone to the room.
    void PlayTo(const Room& room) {
        m_driver = Connect();
        const std::string stream = std::to_string(m_driver->AddStream());
        m_driver->Ask("addcli " + stream + " " + room.Client());
        m_driver->Ask("addmed " + stream + " " + FileMedia(ToneFile("a.wav", {{500, 60}})));
    }
    static void FloodReports(const Room& room, const std::string& from, int count) {
        std::mt19937 random(20260101);
        const Sender sender(from);
        const auto port = static_cast<std::uint16_t>(room.Port() + 1);
        for (int sent = 0; sent < count; ++sent) {
            sender.Send(Report(static_cast<std::uint32_t>(random())), port);
            if (sent % 100 == 0)
                std::this_thread::yield();
        }
    }
    static bool IsLogged(const Room& room, const std::string& text) {
        return WaitUntil([&] { return room.Log().find(text) != std::string::npos; });
    }

    std::unique_ptr<LineClient> m_driver;
};

TEST_F(HostilePlayer, ReportsOfRandomStreamsLeaveNothingBehind) {
    constexpr int kReports = 5000;
    const auto room = AddRoom();
    PlayTo(*room);
    EXPECT_TRUE(room->Hears(500, 0.5));
    const unsigned threads = room->Threads();
    // The server's own address does not help.
    for (const char* from : {kServer, kStranger}) {
        FloodReports(*room, from, kReports);
        EXPECT_TRUE(room->Hears(500, 0.5));
        EXPECT_LE(room->Threads(), threads) << from;
    }
    EXPECT_TRUE(IsLogged(*room, "dropped packets: "));
}

TEST_F(HostilePlayer, AStrangerIsNotHeard) {
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{},
          std::vector<std::string>{"--sender", "10.9.8.7", "--sender", kServer}}) {
        const auto room = AddRoom("room" + std::to_string(options.size()), "", options);
        PlayTo(*room);
        EXPECT_TRUE(room->Hears(500, 0.2));
        const std::jthread stranger([&room](const std::stop_token& stop) {
            const Sender sender(kStranger);
            for (std::uint32_t number = 0; !stop.stop_requested(); ++number) {
                sender.Send(Packet(77, number), room->Port());
                // As fast as a server would.
                WaitUntil([&] { return stop.stop_requested(); }, std::chrono::milliseconds(4));
            }
        });
        EXPECT_TRUE(IsLogged(*room, "dropped packets: 10 of other senders"));
        EXPECT_TRUE(room->Hears(500, 1.5));
        EXPECT_EQ(room->Heard().Seconds(kStrangeHz), 0);
        EXPECT_EQ(room->Log().find("sender 77"), std::string::npos);
        m_driver->Ask("reset");
    }
}

TEST_F(HostilePlayer, ARoomThatIsToldOfItsSenderTakesNoOtherAlsoWhenNobodyPlays) {
    const auto room = AddRoom("room", "", {"--sender", kStranger});
    const Sender server(kServer);
    for (std::uint32_t number = 0; number < 10; ++number)
        server.Send(Packet(77, number), room->Port());
    EXPECT_TRUE(IsLogged(*room, "dropped packets: 10 of other senders"));
    const Sender sender(kStranger);
    sender.Send(Packet(78, 0), room->Port());
    EXPECT_TRUE(IsLogged(*room, "sender 78"));
    EXPECT_EQ(room->Log().find("sender 77"), std::string::npos);
}

TEST_F(HostilePlayer, OtherShapesOfPacketsAreDropped) {
    const auto room = AddRoom();
    PlayTo(*room);
    EXPECT_TRUE(room->Hears(500, 0.5));
    const unsigned threads = room->Threads();
    const Sender sender(kServer);
    for (std::uint32_t number = 0; number < 1000; ++number) {
        std::string packet = Packet(1000 + number % 3, number);
        packet[number % 2] = static_cast<char>(packet[number % 2] ^ (1 + number % 15));
        sender.Send(packet, room->Port());
    }
    EXPECT_TRUE(room->Hears(500, 0.5));
    EXPECT_LE(room->Threads(), threads);
    EXPECT_EQ(room->Heard().Seconds(kStrangeHz), 0);
}

} // namespace
} // namespace korvel::tests
