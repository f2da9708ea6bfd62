#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "HeldPort.h"
#include "Peer.h"
#include "common/OutgoingLink.h"

namespace korvel::common {
namespace {

using namespace std::chrono_literals;

TEST(BackOff, DoublesUpToItsLimitAndStartsAgain) {
    BackOff backOff(250ms, 5000ms);
    for (const int expected : {250, 500, 1000, 2000, 4000, 5000, 5000})
        EXPECT_EQ(backOff.Next(), std::chrono::milliseconds(expected));
    backOff.Reset();
    EXPECT_EQ(backOff.Next(), 250ms);
}

class OutgoingLinkTest : public testing::Test, protected OutgoingLink::Listener {
protected:
    ~OutgoingLinkTest() override {
        if (link)
            link->Stop();
    }

    void Make(std::optional<BackOff> again, const std::string& host = "127.0.0.1") {
        link = std::make_shared<OutgoingLink>(
            loop.loop.get_executor(),
            OutgoingLink::Settings{{host, port.Number()}, "server", {10, 100, 1h}, 10s, again},
            static_cast<OutgoingLink::Listener&>(*this), log);
        link->Start();
    }
    void Listen() {
        acceptor.emplace(loop.loop, tcp::endpoint(asio::ip::address_v4::loopback(), port.Number()));
        Accept();
    }
    void Accept() {
        acceptor->async_accept([this](error_code error, tcp::socket socket) {
            if (error)
                return;
            peers.push_back(std::make_shared<Peer>(std::move(socket)));
            peers.back()->Read();
            Accept();
        });
    }

    void OnConnected(OutgoingLink& from, const std::string& address) override {
        events.push_back("connected " + address);
        from.Send("hello\n");
    }
    void OnLine(OutgoingLink&, const Line& line) override {
        events.push_back((line.tooLong ? "long " : "line ") + std::string(line.GetText()));
        if (line.GetText() == "go")
            link.reset();
    }
    void OnLost(OutgoingLink&, bool wasConnected, const std::string&) override {
        events.push_back(wasConnected ? "lost" : "not reached");
    }
    bool Happens(const std::string& event, std::ptrdiff_t times = 1) {
        return loop.RunUntil([&] { return std::ranges::count(events, event) >= times; });
    }

    Loop loop;
    const Log log{LogLevel::Error};
    const tests::HeldPort port;
    std::optional<tcp::acceptor> acceptor;
    std::vector<std::shared_ptr<Peer>> peers;
    std::shared_ptr<OutgoingLink> link;
    std::vector<std::string> events;
};

TEST_F(OutgoingLinkTest, LinesGoBothWays) {
    Listen();
    Make({});
    ASSERT_TRUE(Happens("connected 127.0.0.1"));
    ASSERT_TRUE(loop.RunUntil([&] { return peers.size() == 1 && peers[0]->received == "hello\n"; }));
    peers[0]->Send("a\r\n01234567890\n");
    EXPECT_TRUE(Happens("long 0123456789"));
    EXPECT_TRUE(Happens("line a"));
    EXPECT_TRUE(link->IsConnected());
}

TEST_F(OutgoingLinkTest, ItComesAgainAfterALossAndAfterFailures) {
    Make(BackOff(1ms, 2ms));
    ASSERT_TRUE(Happens("not reached", 3));
    Listen();
    ASSERT_TRUE(Happens("connected 127.0.0.1"));
    ASSERT_TRUE(loop.RunUntil([&] { return !peers.empty(); }));
    peers[0]->Close();
    EXPECT_TRUE(Happens("lost"));
    EXPECT_TRUE(Happens("connected 127.0.0.1", 2));
}

TEST_F(OutgoingLinkTest, WithoutBackOffItComesWhenItIsAskedFor) {
    Make({});
    ASSERT_TRUE(Happens("not reached"));
    loop.loop.poll();
    EXPECT_EQ(events.size(), 1u);
    EXPECT_FALSE(link->IsConnected());
    Listen();
    link->Start();
    link->Start(); // one attempt is under way
    EXPECT_TRUE(Happens("connected 127.0.0.1"));
    link->Start();
    loop.loop.poll();
    EXPECT_EQ(peers.size(), 1u);
}

TEST_F(OutgoingLinkTest, ANameThatDoesNotExistIsAFailure) {
    Make({}, "a..b");
    EXPECT_TRUE(Happens("not reached"));
}

TEST_F(OutgoingLinkTest, OnceStoppedItSaysNothing) {
    Listen();
    Make(BackOff(1ms, 1ms));
    ASSERT_TRUE(loop.RunUntil([&] { return !peers.empty() && link->IsConnected(); }));
    link->Stop();
    EXPECT_TRUE(loop.RunUntil([&] { return peers[0]->ended; }));
    link->Send("to nobody\n");
    link->Start();
    loop.loop.poll();
    EXPECT_EQ(events, std::vector<std::string>{"connected 127.0.0.1"});
    EXPECT_FALSE(link->IsConnected());
}

TEST_F(OutgoingLinkTest, AConnectionThatIsGivenUpIsALossLikeAnyOther) {
    Listen();
    Make(BackOff(1ms, 1ms));
    link->Drop("there is none yet");
    ASSERT_TRUE(loop.RunUntil([&] { return peers.size() == 1 && link->IsConnected(); }));
    link->Drop("it sleeps");
    link->Drop("it sleeps");
    EXPECT_EQ(events.size(), 1u) << "not from within the call";
    EXPECT_TRUE(loop.RunUntil([&] { return peers[0]->ended; }));
    EXPECT_TRUE(Happens("connected 127.0.0.1", 2));
    EXPECT_EQ(events, (std::vector<std::string>{"connected 127.0.0.1", "lost", "connected 127.0.0.1"}));
}

TEST_F(OutgoingLinkTest, TheListenerMayLetGoOfIt) {
    Listen();
    Make(BackOff(1ms, 1ms));
    ASSERT_TRUE(loop.RunUntil([&] { return !peers.empty() && link->IsConnected(); }));
    peers[0]->Send("go\nmore\n");
    EXPECT_TRUE(loop.RunUntil([&] { return peers[0]->ended; }));
    EXPECT_EQ(events.back(), "line go");
}

} // namespace
} // namespace korvel::common
