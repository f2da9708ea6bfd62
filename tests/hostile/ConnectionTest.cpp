// Connections that ask nothing, or never end asking.
#include "Bed.h"
#include "Crowd.h"
#include "Gateway.h"
#include "GatewayClient.h"
#include "HouseProcess.h"

namespace korvel::tests {
namespace {

// Of each address; together more than any program lets in at a time.
constexpr int kCrowd = 100;
// What a peer has for its first line, or for a request, and a while more.
constexpr std::chrono::milliseconds kUntilTheyEnd{60000};

class HostileConnections : public Bed {
protected:
    // From several addresses, for each has its share.
    void Crowded(std::uint16_t port, const std::string& bytes) {
        for (const char* from : {"127.0.0.1", "127.0.0.2", "127.0.0.3"})
            m_crowd.Come(port, from, bytes, kCrowd);
    }

    // The controller's, which is started for it; 0 when it does not come up.
    std::uint16_t HttpPort() {
        m_controller =
            std::make_unique<HouseProcess>(PathOf(""), "[[server]]\nport = " + std::to_string(ServerPort()));
        return m_controller->Port();
    }

    static std::string StatusLineOf(std::uint16_t port) {
        LineClient client(port);
        client.SendRaw("GET /api/status HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
        return client.ReadLine().value_or("");
    }

    Crowd m_crowd;
    std::unique_ptr<HouseProcess> m_controller;
};

TEST_F(HostileConnections, ADriverComesToTheAudioServerAllTheSameAndTheRoomPlaysOn) {
    const auto room = AddRoom();
    const auto playing = Connect();
    const std::string stream = std::to_string(playing->AddStream());
    playing->Ask("addcli " + stream + " " + room->Client());
    playing->Ask("addmed " + stream + " " + FileMedia(ToneFile("a.wav", {{500, 60}})));
    ASSERT_TRUE(room->Hears(500, 0.5));
    Crowded(ServerPort(), "");
    Crowded(ServerPort(), "1 addst");
    EXPECT_EQ(Connect()->Ask("reset"), "OK reset");
    EXPECT_EQ(playing->Ask("setsta " + stream + " play"), "OK setsta " + stream);
    EXPECT_TRUE(room->Hears(500, 0.5));
}

TEST_F(HostileConnections, TheCatalogueAnswersAllTheSame) {
    const Folder folder;
    Gateway gateway(folder.Write("c.toml", TrackEntry("a") + ListEntry("playlist", "p", "[\"a\"]")));
    Crowded(gateway.Port(), "");
    Crowded(gateway.Port(), "{\"id\":1,\"op\":");
    EXPECT_EQ(GatewayClient(gateway.Port()).Ask({{"op", "playlists"}}).count("playlists"), 1U);
    EXPECT_TRUE(gateway.Stop());
}

TEST_F(HostileConnections, TheControllerAnswersAllTheSame) {
    const auto port = HttpPort();
    ASSERT_NE(port, 0);
    Crowded(port, "");
    Crowded(port, "POST /api/command HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1000\r\n\r\n{");
    EXPECT_EQ(StatusLineOf(port), "HTTP/1.1 200 OK");
}

TEST_F(HostileConnections, WhatDoesNotEndIsEnded) {
    const Folder folder;
    Gateway gateway(folder.Write("c.toml", TrackEntry("a")));
    const auto http = HttpPort();
    m_crowd.Come(ServerPort(), "127.0.0.1", "", 1);
    m_crowd.Come(ServerPort(), "127.0.0.1", "1 addst", 1);
    m_crowd.Come(gateway.Port(), "127.0.0.1", "{\"id\":1,", 1);
    m_crowd.Come(http, "127.0.0.1", "", 1);
    m_crowd.Come(http, "127.0.0.1", "GET /api/status HT", 1);
    m_crowd.Come(http, "127.0.0.1",
                 "GET /api/status HTTP/1.1\r\nHost: localhost\r\nContent-Length: 9\r\n\r\n", 1);
    EXPECT_TRUE(m_crowd.WaitUntilClosed(6, kUntilTheyEnd));
    EXPECT_EQ(Connect()->Ask("reset"), "OK reset");
    EXPECT_EQ(StatusLineOf(http), "HTTP/1.1 200 OK");
    EXPECT_TRUE(gateway.Stop());
}

} // namespace
} // namespace korvel::tests
