// The audio server plays what the gateway serves.
#include "Bed.h"
#include "Gateway.h"
#include "GatewayClient.h"
#include "WebServer.h"

namespace korvel::tests {
namespace {

class CatalogStream : public Bed {
protected:
    CatalogStream() {
        folder.Write("a.wav", WavOf({{500, 0.6}}));
        folder.Write("b.wav", WavOf({{1000, 0.6}}));
        folder.Write("long.wav", WavOf({{500, 3}, {1500, 2}}));
        folder.Write("noise.wav", "no sound");
        m_serverOptions = {"--catalog", gateway.Address()};
    }

    // A stream that a room listens to.
    void Listen() {
        room = AddRoom();
        driver = Connect();
        stream = std::to_string(driver->AddStream());
        driver->Ask("addcli " + stream + " " + room->Client());
    }
    void Play(const std::string& id) {
        EXPECT_EQ(driver->Ask("addmed " + stream + " \"rhap://" + stream + ":" + id + "\""),
                  "OK addmed " + stream);
    }
    // The id of what the gateway says that the stream plays; "" for nothing.
    std::string Playing() {
        GatewayClient client(gateway.Port());
        const auto reply = client.Ask({{"op", "playing"}, {"context", "1"}, {"stream", std::stoi(stream)}});
        return reply.contains("track") ? reply.at("track").at("id").get<std::string>() : "";
    }

    Folder folder;
    Gateway gateway{folder.Write(
        "c.toml", TrackEntry("a", 0.6) + TrackEntry("b", 0.6) + TrackEntry("long", 5) +
                      TrackEntry("none", 60) + TrackEntry("noise", 60) +
                      ListEntry("channel", "ab", "[\"a\", \"b\"]") +
                      ListEntry("channel", "long", "[\"long\"]") +
                      ListEntry("channel", "holes", "[\"none\", \"noise\", \"a\", \"none\", \"b\"]") +
                      ListEntry("channel", "worse", "[\"none\", \"noise\", \"none\", \"a\"]") +
                      ListEntry("channel", "broken", "[\"none\"]"))};
    std::unique_ptr<Room> room;
    std::unique_ptr<LineClient> driver;
    std::string stream;
};

TEST_F(CatalogStream, ATrackPlaysToItsEnd) {
    Listen();
    Play("a");
    EXPECT_EQ(driver->NextEvent(), "* addmed EOM=" + stream);
    EXPECT_TRUE(room->Hears(0, 0.2));
    EXPECT_NEAR(room->Heard().Seconds(500), 0.6, 0.1);
}

TEST_F(CatalogStream, TheStreamPlaysItUntilItIsRemoved) {
    Listen();
    Play("long");
    EXPECT_EQ(Playing(), "long");
    driver->Ask("remmed " + stream);
    EXPECT_TRUE(WaitUntil([&] { return Playing().empty(); }));
}

TEST_F(CatalogStream, WhatTheCatalogueDoesNotHaveIsBad) {
    Listen();
    Play("x");
    EXPECT_EQ(driver->NextEvent(), "* addmed BAD=" + stream + " the catalogue says: no such track");
    Play("channel-x");
    EXPECT_EQ(driver->NextEvent(), "* addmed BAD=" + stream + " the catalogue says: no such channel");
    Play("none");
    EXPECT_EQ(driver->NextEvent(), "* addmed BAD=" + stream + " No such file or directory");
}

TEST_F(CatalogStream, AReferenceThatIsNoneIsBad) {
    Listen();
    for (const std::string reference : {"", "1", "1:", ":a", "x:a", "-1:a"}) {
        driver->Ask("addmed " + stream + " \"rhap://" + reference + "\"");
        EXPECT_TRUE(driver->NextEvent().starts_with("* addmed BAD=" + stream + " not a")) << reference;
    }
    driver->Ask("addmed " + stream + " \"rhap://1:" + std::string(201, 'a') + "\"");
    EXPECT_EQ(driver->NextEvent(), "* addmed BAD=" + stream + " not an id of the catalogue");
    driver->Ask("addmed " + stream + " \"rhap://1:\xff\"");
    EXPECT_EQ(driver->NextEvent(), "* addmed BAD=" + stream + " the catalogue says: no such track");
}

TEST_F(CatalogStream, AChannelGoesOnForEver) {
    Listen();
    Play("channel-ab");
    EXPECT_TRUE(room->Hears(500, 0.8));
    EXPECT_TRUE(room->Hears(1000, 0.8));
    EXPECT_TRUE(room->Hears(500, 0.8));
    const std::vector<int> order = room->Heard().Order({500, 1000});
    for (std::size_t i = 1; i < order.size(); ++i)
        EXPECT_NE(order[i], order[i - 1]);
    driver->Ask("setsta " + stream + " stop");
    EXPECT_TRUE(room->Hears(0, 0.5));
    EXPECT_EQ(driver->NextEvent(std::chrono::milliseconds(0)), "");
}

TEST_F(CatalogStream, AChannelIsJoinedWhereItIs) {
    Listen();
    // Whoever came before has heard the beginning.
    ASSERT_TRUE(WaitUntil([&] {
        GatewayClient client(gateway.Port());
        const auto place = client.Ask({{"op", "resolve"}, {"stream", 999}, {"media", "channel-long"}});
        return place.at("offset") > 3300 && place.at("offset") < 4200;
    }));
    Play("channel-long");
    ASSERT_TRUE(room->Hears(1500, 0.3));
    EXPECT_NEAR(room->Heard().Seconds(500), 0, 0.05);
    // And then from its beginning.
    EXPECT_TRUE(room->Hears(500, 2.5));
}

TEST_F(CatalogStream, AChannelLeavesOutWhatCannotBePlayed) {
    Listen();
    Play("channel-holes");
    EXPECT_TRUE(room->Hears(500, 0.4));
    EXPECT_TRUE(room->Hears(1000, 0.4));
    driver->Ask("remmed " + stream);
    EXPECT_EQ(driver->NextEvent(std::chrono::milliseconds(0)), "");
}

TEST_F(CatalogStream, AChannelWithThreeTracksInARowThatCannotBePlayedIsBad) {
    Listen();
    Play("channel-worse");
    EXPECT_EQ(driver->NextEvent(), "* addmed BAD=" + stream + " No such file or directory");
}

TEST_F(CatalogStream, AChannelWithNothingToPlayIsBad) {
    Listen();
    Play("channel-broken");
    EXPECT_EQ(driver->NextEvent(), "* addmed BAD=" + stream + " No such file or directory");
}

TEST_F(CatalogStream, APauseKeepsThePlaceAlsoWhileTheMediaIsLookedUp) {
    Listen();
    driver->SendRaw("8 addmed " + stream + " \"rhap://1:long\"\r\n9 setsta " + stream + " pause\r\n");
    EXPECT_TRUE(room->Hears(0, 0.5));
    EXPECT_EQ(room->Heard().Seconds(500), 0);
    driver->SendRaw("10 setsta " + stream + " play\r\n");
    EXPECT_TRUE(room->Hears(500, 0.5));
}

TEST_F(CatalogStream, ANewMediaTakesThePlaceOfOneThatIsLookedUp) {
    Listen();
    driver->SendRaw("7 addmed " + stream + " \"rhap://1:x\"\r\n8 addmed " + stream +
                    " \"rhap://1:a\"\r\n9 addmed " + stream + " \"rhap://1:b\"\r\n");
    EXPECT_EQ(driver->ReadLine(), "7 OK addmed " + stream);
    EXPECT_EQ(driver->ReadLine(), "8 OK addmed " + stream);
    EXPECT_EQ(driver->ReadLine(), "9 OK addmed " + stream);
    EXPECT_EQ(driver->ReadLine(), "* addmed EOM=" + stream);
    EXPECT_TRUE(room->Hears(0, 0.2));
    EXPECT_NEAR(room->Heard().Seconds(1000), 0.6, 0.1);
    EXPECT_LT(room->Heard().Seconds(500), 0.1);
}

TEST_F(CatalogStream, AStreamMayGoWhileItsMediaIsLookedUp) {
    Listen();
    driver->SendRaw("7 addmed " + stream + " \"rhap://1:a\"\r\n8 remstr " + stream + "\r\n");
    EXPECT_EQ(driver->ReadLine(), "7 OK addmed " + stream);
    EXPECT_EQ(driver->ReadLine(), "8 OK remstr " + stream);
    driver->SendRaw("9 reset\r\n");
    EXPECT_EQ(driver->ReadLine(), "9 OK reset");
}

TEST_F(CatalogStream, AMediaMayBeOnTheWeb) {
    const WebServer web(WavOf({{1000, 2}}), true);
    Gateway other(folder.Write("web.toml", "[[track]]\nid = \"w\"\ntitle = \"W\"\nduration = 2\nmedia = \"" +
                                               web.Url() + "w.wav\"\n"));
    m_serverOptions = {"--catalog", other.Address()};
    Listen();
    Play("w");
    EXPECT_TRUE(room->Hears(1000, 0.5));
}

TEST_F(CatalogStream, WithoutAGatewayItIsBadAndWithOneAgainItPlays) {
    const HeldPort port;
    Gateway first(folder.PathOf("c.toml"), port);
    m_serverOptions = {"--catalog", first.Address()};
    Listen();
    Play("a");
    EXPECT_TRUE(room->Hears(500, 0.1));
    EXPECT_TRUE(first.Stop());
    EXPECT_EQ(driver->NextEvent(), "* addmed EOM=" + stream); // what plays is not disturbed
    Play("a");
    EXPECT_TRUE(
        driver->NextEvent().starts_with("* addmed BAD=" + stream + " the catalogue cannot be reached"));
    const Gateway again(folder.PathOf("c.toml"), port);
    Play("long");
    EXPECT_TRUE(room->Hears(500, 1));
}

TEST_F(CatalogStream, AnAddressThatIsNoneIsRefused) {
    for (const std::string address : {"", "here", ":5555", "here:", "here:0", "here:65536", "here:x"}) {
        Process process(KORVEL_AUDIOSERVER, {"--port", "0", "--catalog", address}, PathOf("errors"));
        EXPECT_EQ(process.WaitForExit(), 2) << address;
    }
}

} // namespace
} // namespace korvel::tests
