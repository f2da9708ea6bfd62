// What each request is answered with.
#include <gtest/gtest.h>

#include "Gateway.h"
#include "GatewayClient.h"

namespace korvel::tests {
namespace {

using nlohmann::json;

class RequestTest : public testing::Test {
protected:
    json Ask(const json& request) { return client.Ask(request); }
    static int CodeOf(const json& reply) { return reply.at("error").at("code"); }
    // The id of the track that the stream plays, or the error's code.
    std::string Playing(int stream, const std::string& context = "10000") {
        const json reply = Ask({{"op", "playing"}, {"context", context}, {"stream", stream}});
        if (reply.contains("error"))
            return std::to_string(CodeOf(reply));
        EXPECT_EQ(reply.at("context"), context);
        return reply.at("track").at("id");
    }

    Folder folder;
    Gateway gateway{folder.Write("c.toml", TrackEntry("a") + TrackEntry("b", 40) +
                                               ListEntry("playlist", "p", "[\"a\", \"b\", \"a\"]") +
                                               ListEntry("playlist", "empty", "[]") +
                                               ListEntry("channel", "c", "[\"b\", \"a\"]"))};
    GatewayClient client{gateway.Port()};
};

TEST_F(RequestTest, PlaylistsComeInTheOrderOfTheFile) {
    EXPECT_EQ(
        Ask({{"op", "playlists"}}),
        json::parse(R"({"playlists":[{"id":"p","name":"Name p"},{"id":"empty","name":"Name empty"}]})"));
}

TEST_F(RequestTest, TracksOfAPlaylistComeInPieces) {
    const json whole = {{"op", "playlist-tracks"}, {"playlist", "p"}};
    EXPECT_EQ(Ask(whole), json::parse(R"({"total":3,"tracks":["a","b","a"]})"));
    json piece = whole;
    piece["offset"] = 1;
    piece["count"] = 1;
    EXPECT_EQ(Ask(piece), json::parse(R"({"total":3,"tracks":["b"]})"));
    piece["count"] = 4294967295;
    EXPECT_EQ(Ask(piece), json::parse(R"({"total":3,"tracks":["b","a"]})"));
    piece["offset"] = 4294967295;
    EXPECT_EQ(Ask(piece), json::parse(R"({"total":3,"tracks":[]})"));
    piece["playlist"] = "empty";
    EXPECT_EQ(Ask(piece), json::parse(R"({"total":0,"tracks":[]})"));
    EXPECT_EQ(CodeOf(Ask({{"op", "playlist-tracks"}, {"playlist", "x"}})), 2);
}

TEST_F(RequestTest, ATrackHasItsData) {
    EXPECT_EQ(Ask({{"op", "track"}, {"track", "b"}}),
              json::parse(R"({"track":{"id":"b","title":"Title b","artist":"Artist b","album":"Album b",
                                       "image":"http://covers/b","duration":40000}})"));
    EXPECT_EQ(CodeOf(Ask({{"op", "track"}, {"track", "x"}})), 6);
}

TEST_F(RequestTest, ATrackResolvesToItsMediaAndIsWhatTheStreamPlays) {
    EXPECT_EQ(Ask({{"op", "resolve"}, {"stream", 7}, {"media", "a"}}),
              (json{{"track", "a"}, {"media", folder.PathOf("a.wav")}, {"offset", 0}}));
    EXPECT_EQ(Playing(7), "a");
    EXPECT_EQ(CodeOf(Ask({{"op", "resolve"}, {"stream", 7}, {"media", "x"}})), 6);
}

TEST_F(RequestTest, AChannelResolvesToWhereItIsNow) {
    const json first = Ask({{"op", "resolve"}, {"stream", 7}, {"media", "channel-c"}});
    EXPECT_EQ(first.at("track"), "b");
    EXPECT_EQ(first.at("media"), folder.PathOf("b.wav"));
    EXPECT_EQ(first.at("turn"), 1);
    EXPECT_LT(first.at("offset"), 40000);
    EXPECT_EQ(Playing(7), "b");
    EXPECT_EQ(CodeOf(Ask({{"op", "resolve"}, {"stream", 7}, {"media", "channel-x"}})), 2);
}

TEST_F(RequestTest, AChannelGoesOnWhenItsListenerHasComeToTheEnd) {
    Ask({{"op", "resolve"}, {"stream", 7}, {"media", "channel-c"}});
    Ask({{"op", "resolve"}, {"stream", 8}, {"media", "channel-c"}});
    EXPECT_EQ(Ask({{"op", "resolve"}, {"stream", 7}, {"media", "channel-c"}, {"after", 1}}),
              (json{{"track", "a"}, {"media", folder.PathOf("a.wav")}, {"offset", 0}, {"turn", 2}}));
    EXPECT_EQ(Playing(7), "a");
    EXPECT_EQ(Playing(8, "another"), "a");
}

TEST_F(RequestTest, OnStreamZeroTheContextIsATrack) {
    const json reply = Ask({{"op", "playing"}, {"context", "b"}, {"stream", 0}});
    EXPECT_EQ(reply.at("track").at("title"), "Title b");
    EXPECT_EQ(reply.at("context"), "");
    EXPECT_EQ(CodeOf(Ask({{"op", "playing"}, {"context", "x"}, {"stream", 0}})), 6);
}

TEST_F(RequestTest, AQuestionAboutAStreamWaitsUntilItPlaysSomething) {
    GatewayClient audioServer(gateway.Port());
    client.Send(R"({"id":50,"op":"playing","context":"1","stream":9})"
                "\n");
    // Its answer must not hold up the others.
    client.Send(R"({"id":51,"op":"playlists"})"
                "\n");
    EXPECT_EQ(client.Next().at("id"), 51);
    audioServer.Ask({{"op", "resolve"}, {"stream", 9}, {"media", "b"}});
    const json reply = client.Next();
    EXPECT_EQ(reply.at("id"), 50);
    EXPECT_EQ(reply.at("track").at("id"), "b");
}

TEST_F(RequestTest, AQuestionAboutASilentStreamIsAnsweredInTheEnd) {
    EXPECT_EQ(Playing(9), "2");
}

TEST_F(RequestTest, AStoppedStreamPlaysNothing) {
    Ask({{"op", "resolve"}, {"stream", 7}, {"media", "a"}});
    EXPECT_EQ(Ask({{"op", "stop"}, {"stream", 7}}), json::object());
    EXPECT_EQ(Ask({{"op", "stop"}, {"stream", 7}}), json::object());
    EXPECT_EQ(Playing(7), "2");
}

TEST_F(RequestTest, AStreamBelongsToWhoeverResolvedItLast) {
    Ask({{"op", "resolve"}, {"stream", 7}, {"media", "a"}});
    GatewayClient other(gateway.Port());
    other.Ask({{"op", "resolve"}, {"stream", 7}, {"media", "b"}});
    Ask({{"op", "stop"}, {"stream", 7}});
    EXPECT_EQ(Playing(7), "b");
}

TEST_F(RequestTest, StreamsGoWithTheirConnection) {
    {
        GatewayClient other(gateway.Port());
        other.Ask({{"op", "resolve"}, {"stream", 7}, {"media", "b"}});
        EXPECT_EQ(Playing(7), "b");
    }
    EXPECT_EQ(Playing(8), "2"); // long enough for the end of that connection to be noticed
    EXPECT_EQ(Playing(7), "2");
}

TEST_F(RequestTest, ARequestThatIsNoneIsRefusedAndDoesNoHarm) {
    for (const std::string line : {"", " ", "x", "\xff\xfe", "null", "7", "\"text\"", "[]", "{", "{}",
                                   "{\"id\":1", "{\"id\":\"1\"}", "{\"id\":-1}", "{\"id\":1.5}",
                                   "{\"id\":4294967296}", "{\"id\":null}", "{\"id\":{}}", "{\"id\":1}}"}) {
        client.Send(line + "\n");
        const json reply = client.Next();
        EXPECT_TRUE(reply.at("id").is_null()) << line;
        EXPECT_EQ(CodeOf(reply), 10) << line;
    }
    for (const std::string rest : {"",
                                   ",\"op\":1",
                                   ",\"op\":\"\"",
                                   ",\"op\":\"reset\"",
                                   ",\"op\":\"playlist-tracks\"",
                                   ",\"op\":\"playlist-tracks\",\"playlist\":7",
                                   ",\"op\":\"playlist-tracks\",\"playlist\":\"p\",\"offset\":-1",
                                   ",\"op\":\"playlist-tracks\",\"playlist\":\"p\",\"count\":1.5",
                                   ",\"op\":\"playlist-tracks\",\"playlist\":\"p\",\"count\":4294967296",
                                   ",\"op\":\"track\"",
                                   ",\"op\":\"track\",\"track\":[\"a\"]",
                                   ",\"op\":\"playing\",\"stream\":1",
                                   ",\"op\":\"playing\",\"context\":\"1\"",
                                   ",\"op\":\"playing\",\"context\":\"1\",\"stream\":\"1\"",
                                   ",\"op\":\"resolve\",\"stream\":0,\"media\":\"a\"",
                                   ",\"op\":\"resolve\",\"media\":\"a\"",
                                   ",\"op\":\"resolve\",\"stream\":1",
                                   ",\"op\":\"resolve\",\"stream\":1,\"media\":\"channel-c\",\"after\":\"x\"",
                                   ",\"op\":\"stop\"",
                                   ",\"op\":\"stop\",\"stream\":0"}) {
        client.Send("{\"id\":9" + rest + "}\n");
        const json reply = client.Next();
        EXPECT_EQ(reply.at("id"), 9) << rest;
        EXPECT_EQ(CodeOf(reply), 10) << rest;
    }
    EXPECT_EQ(Ask({{"op", "playlists"}}).at("playlists").size(), 2u);
}

TEST_F(RequestTest, ALineMayEndWithACarriageReturnAndComeInPieces) {
    client.Send("{\"id\":1,");
    client.Send("\"op\":\"playlists\"}\r");
    client.Send("\n{\"id\":2,\"op\":\"playlists\"}\n{\"id\":3,\"op\":\"playlists\"}\n");
    for (const int id : {1, 2, 3})
        EXPECT_EQ(client.Next().at("id"), id);
}

} // namespace
} // namespace korvel::tests
