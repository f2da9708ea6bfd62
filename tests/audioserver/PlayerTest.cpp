// A player that starts is heard, and one that falls silent knows it.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "Bed.h"

namespace korvel::tests {
namespace {

class Players : public Bed {
protected:
    // A stream that plays a tone for a long time.
    std::string PlayTone(LineClient& driver) {
        const std::string stream = std::to_string(driver.AddStream());
        driver.Ask("addmed " + stream + " " + FileMedia(ToneFile("tone.wav", {{500, 60}})));
        return stream;
    }
    void ExpectAllHear(LineClient& driver, const std::string& stream,
                       const std::vector<std::unique_ptr<Room>>& rooms) {
        for (const auto& room : rooms)
            driver.Ask("addcli " + stream + " " + room->Client());
        for (const auto& room : rooms) {
            EXPECT_TRUE(WaitUntil([&] { return room->Heard().Seconds(500) >= 0.2; })) << room->Log();
            driver.Ask("remcli " + stream + " " + room->Client());
        }
    }
};

TEST_F(Players, EachOfFortyIsHeard) {
    const auto driver = Connect();
    const std::string stream = PlayTone(*driver);
    for (int started = 0; started < 40; started += 8) {
        std::vector<std::unique_ptr<Room>> rooms;
        for (int room = 0; room < 8; ++room)
            rooms.push_back(AddRoom("room" + std::to_string(room)));
        ExpectAllHear(*driver, stream, rooms);
    }
}

constexpr int kFrames = 192; // in each packet

// A fifth of a second of a stream, as fast as it plays: each sample is one higher than the one before, from 1 on.
void SendStairs(std::uint16_t port) {
    constexpr int kPackets = 50;
    constexpr std::chrono::milliseconds kEach(4);
    const auto start = std::chrono::steady_clock::now();
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    for (int number = 0; number < kPackets; ++number) {
        std::string packet{'\x80', '\x60'};
        const auto append = [&packet](int value, int bytes) {
            for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
                packet += static_cast<char>(value >> shift & 0xff);
        };
        append(number, 2);
        append(number * kFrames, 4);
        append(77, 4);
        for (int frame = 1; frame <= kFrames; ++frame) {
            append(number * kFrames + frame, 2);
            append(number * kFrames + frame, 2);
        }
        EXPECT_TRUE(WaitUntil([&] { return std::chrono::steady_clock::now() >= start + number * kEach; }));
        ::sendto(socket, packet.data(), packet.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof(to));
    }
    ::close(socket);
}

TEST_F(Players, OneThatHeardNothingHearsASenderFromItsFirstSampleOn) {
    constexpr int kLast = 50 * kFrames;
    const auto room = AddRoom();
    EXPECT_TRUE(WaitUntil([&] { return room->Heard().Length() > 0.5; }));
    SendStairs(room->Port());
    const auto isSound = [](double sample) { return sample != 0; };
    std::vector<double> heard;
    EXPECT_TRUE(WaitUntil([&] {
        heard = room->Heard().Samples();
        return std::count_if(heard.begin(), heard.end(), isSound) >= kLast;
    }));
    auto sample = std::find_if(heard.begin(), heard.end(), isSound);
    ASSERT_GE(heard.end() - sample, kLast);
    for (int expected = 1; expected <= kLast; ++expected)
        ASSERT_EQ(*sample++ * 32768, expected);
}

TEST_F(Players, AStartOnABusyMachineIsHeard) {
    const auto driver = Connect();
    const std::string stream = PlayTone(*driver);
    std::vector<std::unique_ptr<Room>> rooms;
    rooms.push_back(AddRoom("plain"));
    rooms.push_back(AddRoom("clock", "clock"));
    rooms.push_back(AddRoom("silence", "silence"));
    ExpectAllHear(*driver, stream, rooms);
    for (const auto& room : rooms) {
        EXPECT_EQ(room->Log().find("no sound"), std::string::npos);
        // A mixer that reckons with another start of time runs ahead: it has more than one that began before.
        const double length = room->Heard().Length();
        EXPECT_LT(length, rooms.front()->Heard().Length() + 0.3);
    }
}

TEST_F(Players, SoundThatStopsComingOutIsReportedAndComesBack) {
    const auto driver = Connect();
    const std::string stream = PlayTone(*driver);
    const auto room = AddRoom("room", "stall");
    driver->Ask("addcli " + stream + " " + room->Client());
    EXPECT_EQ(room->NextReport(), "stalled");
    EXPECT_NE(room->Log().find("no sound comes out: starting anew"), std::string::npos);
    EXPECT_TRUE(room->Hears(500, 0.5));
    EXPECT_EQ(room->NextReport(), "playing");
    EXPECT_NE(room->Log().find("sound comes out again"), std::string::npos);
    // The stall is in the recording, as the silence that it was.
    EXPECT_TRUE(room->Stop());
    EXPECT_EQ(room->Heard().Order({0, 500}), (std::vector<int>{500, 0, 500}));
    EXPECT_GT(room->Heard().Seconds(0), 1.5);
}

TEST_F(Players, AStallThatLastsIsReportedOnce) {
    const auto room = AddRoom("room", "stalls");
    EXPECT_EQ(room->NextReport(), "stalled");
    const auto hasStalledTwice = [&room] {
        const std::string log = room->Log();
        const std::string_view stall = "no sound comes out";
        const auto first = log.find(stall);
        return first != std::string::npos && log.find(stall, first + 1) != std::string::npos;
    };
    EXPECT_TRUE(WaitUntil(hasStalledTwice));
    EXPECT_TRUE(room->Stop());
    EXPECT_EQ(room->NextReport(), "");
}

TEST_F(Players, OneThatCannotStopPlayingEnds) {
    const auto room = AddRoom("room", "hang");
    EXPECT_EQ(room->NextReport(), "stalled");
    EXPECT_EQ(room->WaitForExit(), 1);
    EXPECT_NE(room->Log().find("does not stop"), std::string::npos);
}

} // namespace
} // namespace korvel::tests
