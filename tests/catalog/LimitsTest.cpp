// What is bounded, and what happens beyond it.
#include <gtest/gtest.h>

#include <deque>

#include "Gateway.h"
#include "GatewayClient.h"

namespace korvel::tests {
namespace {

using nlohmann::json;

constexpr std::size_t kMaxRequestBytes = 4096;
constexpr std::size_t kMaxConnectionsPerAddress = 16;
constexpr int kMaxWaiting = 64;
constexpr std::uint32_t kMaxSessions = 1024;

std::string RequestOf(std::size_t bytes) {
    std::string request = "{\"id\":5,\"op\":\"playlists\"}";
    return request + std::string(bytes - request.size(), ' ');
}

// A list of that many tracks as TOML writes it.
std::string ListOf(int count) {
    std::string list = "[";
    for (int i = 0; i < count; ++i)
        list += "\"a\",";
    return list + "]";
}

class LimitsTest : public testing::Test {
protected:
    Folder folder;
    Gateway gateway{folder.Write("c.toml", TrackEntry("a") + ListEntry("playlist", "p", ListOf(600)))};
};

TEST_F(LimitsTest, ALineThatIsTooLongIsSkippedAndRefused) {
    GatewayClient client(gateway.Port());
    client.Send(RequestOf(kMaxRequestBytes) + "\r\n");
    EXPECT_EQ(client.Next().at("id"), 5);
    for (const std::size_t bytes : {kMaxRequestBytes + 1, kMaxRequestBytes + 2, std::size_t{3} << 20}) {
        client.Send(RequestOf(bytes) + "\n");
        EXPECT_EQ(client.Next(),
                  json::parse(R"({"id":null,"error":{"code":7,"text":"the request is too long"}})"));
    }
    client.Send(RequestOf(30) + "\n");
    EXPECT_EQ(client.Next().at("id"), 5);
}

TEST_F(LimitsTest, DeepNestingIsNoTrouble) {
    GatewayClient client(gateway.Port());
    client.Send("{\"id\":5,\"op\":" + std::string(4000, '[') + "\n");
    EXPECT_EQ(client.Next().at("error").at("code"), 10);
    client.Send("{\"id\":5,\"op\":" + std::string(2000, '[') + std::string(2000, ']') + "}\n");
    EXPECT_EQ(client.Next().at("id"), 5);
}

TEST_F(LimitsTest, AReplyHasAtMostSoManyTracks) {
    GatewayClient client(gateway.Port());
    json request = {{"op", "playlist-tracks"}, {"playlist", "p"}, {"offset", 0}, {"count", 1000}};
    json reply = client.Ask(request);
    EXPECT_EQ(reply.at("total"), 600);
    EXPECT_EQ(reply.at("tracks").size(), 500u);
    request["offset"] = 500;
    EXPECT_EQ(client.Ask(request).at("tracks").size(), 100u);
}

TEST_F(LimitsTest, TheConnectionThatHasBeenIdleForLongestGivesWay) {
    std::deque<GatewayClient> clients;
    const auto listsFor = [&](std::size_t client) { return clients[client].Ask({{"op", "playlists"}}); };
    for (std::size_t i = 0; i < kMaxConnectionsPerAddress; ++i) {
        clients.emplace_back(gateway.Port());
        EXPECT_FALSE(listsFor(i).is_null());
    }
    EXPECT_FALSE(listsFor(0).is_null());
    clients.emplace_back(gateway.Port());
    EXPECT_FALSE(listsFor(kMaxConnectionsPerAddress).is_null());
    EXPECT_TRUE(clients[1].IsClosed());
    EXPECT_FALSE(listsFor(0).is_null());
}

TEST_F(LimitsTest, WhileAllOfThemPlayFurtherConnectionsAreClosedAtOnce) {
    std::deque<GatewayClient> clients;
    for (std::uint32_t stream = 1; stream <= kMaxConnectionsPerAddress; ++stream) {
        clients.emplace_back(gateway.Port());
        ASSERT_EQ(clients.back().Ask({{"op", "resolve"}, {"stream", stream}, {"media", "a"}}).at("track"),
                  "a");
    }
    EXPECT_TRUE(GatewayClient(gateway.Port()).IsClosed());
    // Another connection's stream from now on: the first plays nothing.
    EXPECT_EQ(clients[1].Ask({{"op", "resolve"}, {"stream", 1}, {"media", "a"}}).at("track"), "a");
    EXPECT_FALSE(GatewayClient(gateway.Port()).Ask({{"op", "playlists"}}).is_null());
    EXPECT_TRUE(clients[0].IsClosed());
    clients.clear();
    EXPECT_TRUE(WaitUntil([&] {
        return !GatewayClient(gateway.Port()).Ask({{"op", "playlists"}}).is_null();
    }));
}

TEST_F(LimitsTest, FurtherQuestionsDoNotWait) {
    GatewayClient client(gateway.Port());
    for (int i = 0; i <= kMaxWaiting; ++i)
        client.Send(json{{"id", i}, {"op", "playing"}, {"context", "1"}, {"stream", 7}}.dump() + "\n");
    EXPECT_EQ(client.Next().at("id"), kMaxWaiting);
    for (int i = 0; i < kMaxWaiting; ++i)
        EXPECT_EQ(client.Next().at("error").at("code"), 2);
}

TEST_F(LimitsTest, FurtherStreamsAreRefused) {
    GatewayClient client(gateway.Port());
    for (std::uint32_t stream = 1; stream <= kMaxSessions; ++stream)
        ASSERT_EQ(client.Ask({{"op", "resolve"}, {"stream", stream}, {"media", "a"}}).at("track"), "a");
    const json further = {{"op", "resolve"}, {"stream", kMaxSessions + 1}, {"media", "a"}};
    EXPECT_EQ(client.Ask(further).at("error").at("code"), 4);
    client.Ask({{"op", "stop"}, {"stream", 3}});
    EXPECT_EQ(client.Ask(further).at("track"), "a");
}

TEST_F(LimitsTest, APeerThatDoesNotReadIsDropped) {
    GatewayClient client(gateway.Port());
    std::string requests;
    for (int i = 0; i < 1000; ++i)
        requests += "{\"id\":1,\"op\":\"playlist-tracks\",\"playlist\":\"p\"}\n";
    // Some of it waits in the system, so the gateway's own bound comes later than its number says.
    bool open = true;
    for (int i = 0; open && i < 100; ++i)
        open = client.Send(requests);
    EXPECT_FALSE(open);
    EXPECT_FALSE(GatewayClient(gateway.Port()).Ask({{"op", "playlists"}}).is_null());
}

} // namespace
} // namespace korvel::tests
