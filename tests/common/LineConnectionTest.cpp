#include <gtest/gtest.h>

#include <fstream>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "Peer.h"
#include "common/LineConnection.h"

namespace korvel::common {
namespace {

using namespace std::chrono_literals;

class LineConnectionTest : public testing::Test, protected LineConnection::Listener {
protected:
    ~LineConnectionTest() override {
        if (connection)
            connection->Close();
    }

    // `first`: what the peer has said before anybody listens.
    void Open(const LineLimits& these, const std::string& first = "") {
        tcp::acceptor acceptor(loop.loop, {asio::ip::address_v4::loopback(), 0});
        tcp::socket other(loop.loop);
        other.connect(acceptor.local_endpoint());
        near = acceptor.local_endpoint().port();
        far = other.local_endpoint().port();
        peer = std::make_shared<Peer>(std::move(other));
        peer->Send(first);
        connection = std::make_shared<LineConnection>(acceptor.accept(), these,
                                                      static_cast<LineConnection::Listener&>(*this));
        connection->Start();
    }

    void OnLine(const Line& line) override {
        lines.push_back((line.tooLong ? "!" : "") + std::string(line.GetText()));
        if (lines.back() == throwAfter)
            throw std::runtime_error("cannot take it");
        if (closeAfter == lines.back())
            connection->Close();
    }
    void OnEnd(const std::string& why) override { ends.push_back(why); }

    bool Waits(std::size_t count) {
        return loop.RunUntil([&] { return lines.size() >= count; });
    }

    // The system's timer of the connection: its kind and the hundredths of a second that it still has.
    std::pair<int, long> TimerOfConnection() const {
        std::ifstream table("/proc/net/tcp");
        std::string row;
        while (std::getline(table, row)) {
            std::istringstream words(row);
            std::string number;
            std::string local;
            std::string remote;
            std::string state;
            std::string queues;
            std::string timer;
            words >> number >> local >> remote >> state >> queues >> timer;
            if (local.ends_with(HexOf(near)) && remote.ends_with(HexOf(far)) && timer.size() > 3)
                return {std::stoi(timer.substr(0, 2)), std::stol(timer.substr(3), nullptr, 16)};
        }
        return {};
    }
    static std::string HexOf(std::uint16_t port) {
        std::ostringstream text;
        text << ':' << std::hex << std::uppercase << std::setw(4) << std::setfill('0') << port;
        return text.str();
    }

    Loop loop;
    std::uint16_t near = 0; // the connection's ports
    std::uint16_t far = 0;
    std::shared_ptr<Peer> peer;
    std::shared_ptr<LineConnection> connection;
    std::vector<std::string> lines;
    std::vector<std::string> ends;
    std::string closeAfter;
    std::string throwAfter;
    const LineLimits limits{10, 1u << 20, 1h};
};

TEST_F(LineConnectionTest, LinesComeAndGo) {
    Open(limits);
    peer->Read();
    peer->Send("one\r\ntwo\nthr");
    ASSERT_TRUE(Waits(2));
    connection->Send("first\n");
    connection->Send("second\n");
    peer->Send("ee\n");
    ASSERT_TRUE(Waits(3));
    EXPECT_EQ(lines, (std::vector<std::string>{"one", "two", "three"}));
    EXPECT_TRUE(loop.RunUntil([&] { return peer->received == "first\nsecond\n"; }));
    EXPECT_TRUE(ends.empty());
}

TEST_F(LineConnectionTest, AfterALineThatIsTooLongTheNextIsRead) {
    Open(limits);
    peer->Send("12345678901\n" + std::string(100000, 'x') + "\nshort\n");
    ASSERT_TRUE(Waits(3));
    EXPECT_EQ(lines, (std::vector<std::string>{"!1234567890", "!xxxxxxxxxx", "short"}));
    EXPECT_TRUE(connection->IsOpen());
}

TEST_F(LineConnectionTest, TheOwnerHearsOfTheEndOnce) {
    Open(limits);
    peer->Close();
    EXPECT_TRUE(loop.RunUntil([&] { return !ends.empty(); }));
    EXPECT_FALSE(connection->IsOpen());
    connection->Send("to nobody\n");
    loop.loop.poll();
    EXPECT_EQ(ends, std::vector<std::string>{"end of connection"});
}

TEST_F(LineConnectionTest, WhoeverClosesItHearsNoMore) {
    Open(limits);
    peer->Read();
    closeAfter = "a";
    peer->Send("a\nb\nc\n");
    EXPECT_TRUE(loop.RunUntil([&] { return peer->ended; }));
    EXPECT_EQ(lines, std::vector<std::string>{"a"});
    EXPECT_TRUE(ends.empty());
}

TEST_F(LineConnectionTest, WhoeverFailsAtALineIsToldOfTheEnd) {
    Open(limits);
    throwAfter = "a";
    peer->Send("a\nb\n");
    EXPECT_THROW(loop.RunUntil([&] { return !ends.empty(); }), std::runtime_error);
    EXPECT_EQ(ends, std::vector<std::string>{"internal error"});
    EXPECT_FALSE(connection->IsOpen());
}

TEST_F(LineConnectionTest, ALineThatDoesNotEndEndsTheConnection) {
    Open({10, 1u << 20, 50ms});
    peer->Send("whole\nhalf");
    EXPECT_TRUE(loop.RunUntil([&] { return !ends.empty(); }));
    EXPECT_EQ(lines, std::vector<std::string>{"whole"});
    EXPECT_EQ(ends, std::vector<std::string>{"a line does not end"});
}

TEST_F(LineConnectionTest, SoDoesOneThatIsTooLongAndGoesOn) {
    Open({10, 1u << 20, 50ms});
    peer->Send("12345678901");
    EXPECT_TRUE(loop.RunUntil([&] {
        if (ends.empty())
            peer->Send("x");
        return !ends.empty();
    }));
    EXPECT_EQ(lines, std::vector<std::string>{"!1234567890"});
}

TEST_F(LineConnectionTest, BetweenLinesAPeerMayKeepSilent) {
    Open({10, 1u << 20, 1ms});
    asio::steady_timer later(loop.loop, 50ms);
    bool over = false;
    later.async_wait([&](error_code) { over = true; });
    peer->Send("a\n");
    EXPECT_TRUE(loop.RunUntil([&] { return over; }));
    peer->Send("b\n");
    EXPECT_TRUE(Waits(2));
    EXPECT_TRUE(ends.empty());
}

TEST_F(LineConnectionTest, APeerThatSaysNothingLosesTheConnectionWhereItMustSpeak) {
    Open({10, 1u << 20, 1h, 50ms});
    EXPECT_TRUE(loop.RunUntil([&] { return !ends.empty(); }));
    EXPECT_EQ(ends, std::vector<std::string>{"it says nothing"});
}

TEST_F(LineConnectionTest, OnceItHasSpokenItMayKeepSilent) {
    Open({10, 1u << 20, 1h, 50ms}, "a\n");
    asio::steady_timer later(loop.loop, 100ms);
    bool over = false;
    later.async_wait([&](error_code) { over = true; });
    EXPECT_TRUE(loop.RunUntil([&] { return over; }));
    EXPECT_TRUE(ends.empty());
}

TEST_F(LineConnectionTest, TheSystemAsksSoonForAPeerThatSaysNothing) {
    constexpr int kKeepAlive = 2;
    Open(limits);
    const auto [kind, left] = TimerOfConnection();
    EXPECT_EQ(kind, kKeepAlive);
    EXPECT_LT(left, 100 * kPeerPatience.count());
}

TEST_F(LineConnectionTest, APeerThatReadsNothingLosesTheConnection) {
    Open(limits);
    const std::string line = std::string(1000, 'x') + "\n";
    std::size_t sent = 0;
    for (; ends.empty() && sent < 100000; ++sent) {
        connection->Send(line);
        loop.loop.poll();
    }
    EXPECT_EQ(ends, std::vector<std::string>{"it does not read what it is sent"});
    peer->Read();
    EXPECT_TRUE(loop.RunUntil([&] { return peer->ended; }));
    EXPECT_LT(peer->received.size(), line.size() * sent);
}

TEST_F(LineConnectionTest, AnOverflowDoesNotEndItInTheMiddleOfACall) {
    Open({10, 5, 1h});
    connection->Send("123456\n");
    EXPECT_TRUE(connection->IsOpen());
    connection->Send("1\n");
    EXPECT_TRUE(loop.RunUntil([&] { return !ends.empty(); }));
    peer->Read();
    EXPECT_TRUE(loop.RunUntil([&] { return peer->ended; }));
    EXPECT_EQ(peer->received, "") << "the line after the one that was lost";
}

} // namespace
} // namespace korvel::common
