// The controller's client of the streaming service.
#include "ClientFixture.h"

namespace korvel::controller {
namespace {

TEST_F(ClientTest, OffLineItAnswersSoAndNeverAtOnce) {
    const auto client = MakeClient();
    client->GetMemberPlaylists(&listener);
    client->Connect("127.0.0.1:1");
    client->GetTracksForPlaylist("p", 0, 500, 0, &listener);
    client->GetCurrentSongInfo("a", 0, &listener);
    EXPECT_TRUE(listener.calls.empty());
    ASSERT_TRUE(Answered(3));
    EXPECT_EQ(listener.calls, (Calls{"error 17", "error 17", "error 17"}));
}

TEST_F(ClientTest, AsksTheCatalogue) {
    const tests::Gateway gateway(catalogue);
    const auto client = Connect(gateway.Address());
    client->GetMemberPlaylists(&listener);
    client->GetTracksForPlaylist("p", 0, 500, 0, &listener);
    client->GetTracksForPlaylist("p", 1, 1, 0, &listener);
    client->GetCurrentSongInfo("b", 0, &listener);
    EXPECT_TRUE(listener.calls.empty());
    ASSERT_TRUE(Answered(4));
    EXPECT_EQ(listener.calls, (Calls{"playlists p=Name p q=Name q", "tracks 3: a b a", "tracks 3: b",
                                     "track b||Title b|Artist b|Album b|http://covers/b"}));
    EXPECT_EQ(general.calls, Calls{"connected"});
}

TEST_F(ClientTest, WhatTheCatalogueRefusesIsAnError) {
    const tests::Gateway gateway(catalogue);
    const auto client = Connect(gateway.Address());
    client->GetTracksForPlaylist("x", 0, 500, 0, &listener);
    client->GetCurrentSongInfo("x", 0, &listener);
    client->GetCurrentSongInfo("\xff\n\"", 0, &listener);
    ASSERT_TRUE(Answered(3));
    EXPECT_EQ(listener.calls, (Calls{"error 2", "error 6", "error 6"}));
}

TEST_F(ClientTest, TheSettingTakesTheAddressFromTheDriver) {
    const tests::Gateway gateway(catalogue);
    const auto client = MakeClient(5000, gateway.Address());
    client->Connect("127.0.0.1:1");
    client->DisableOfflineMode();
    client->GetTracksForPlaylist("q", 0, 500, 0, &listener);
    ASSERT_TRUE(Answered());
    EXPECT_EQ(listener.calls, Calls{"tracks 0:"});
}

TEST_F(ClientTest, ConnectsAgainAfterALoss) {
    const tests::HeldPort port;
    auto gateway = std::make_unique<tests::Gateway>(catalogue, port);
    const auto client = Connect(gateway->Address());
    ASSERT_TRUE(loop.RunUntil([&] { return general.calls == Calls{"connected"}; }));
    EXPECT_TRUE(gateway->Stop());
    ASSERT_TRUE(loop.RunUntil([&] { return general.calls == Calls{"connected", "lost"}; }));
    // Asked while there is no connection, answered by the next one.
    client->GetMemberPlaylists(&listener);
    gateway = std::make_unique<tests::Gateway>(catalogue, port);
    ASSERT_TRUE(Answered());
    EXPECT_EQ(listener.calls, Calls{"playlists p=Name p q=Name q"});
    EXPECT_EQ(general.calls, (Calls{"connected", "lost", "connected"}));
}

TEST_F(ClientTest, AnswersMayComeInAnyOrder) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server));
    client->GetMemberPlaylists(&listener);
    client->GetTracksForPlaylist("p", 0, 500, 0, &listener);
    ASSERT_TRUE(loop.RunUntil([&] { return server.GetLines().size() == 2; }));
    server.Send("{\"id\":2,\"total\":0,\"tracks\":[]}\n{\"id\":1,\"playlists\":[]}\n");
    ASSERT_TRUE(Answered(2));
    EXPECT_EQ(listener.calls, (Calls{"tracks 0:", "playlists"}));
}

TEST_F(ClientTest, ASecondAddressReplacesTheFirst) {
    ScriptedServer server(loop);
    server.Mute();
    const tests::Gateway gateway(catalogue);
    const auto client = Connect(At(server));
    client->GetMemberPlaylists(&listener);
    ASSERT_TRUE(loop.RunUntil([&] { return server.GetLines().size() == 1; }));
    client->Connect(gateway.Address());
    client->GetTracksForPlaylist("q", 0, 500, 0, &listener);
    ASSERT_TRUE(Answered(2));
    EXPECT_EQ(listener.calls, (Calls{"error 16", "tracks 0:"}));
    EXPECT_FALSE(server.IsConnected());
}

TEST_F(ClientTest, NobodyNeedsToListen) {
    const tests::Gateway gateway(catalogue);
    const auto client = Connect(gateway.Address());
    client->GetMemberPlaylists(nullptr);
    client->GetTracksForPlaylist("q", 0, 500, 0, &listener);
    ASSERT_TRUE(Answered());
    EXPECT_EQ(listener.calls, Calls{"tracks 0:"});
}

TEST_F(ClientTest, ADestroyedClientSaysNothingMore) {
    ScriptedServer server(loop);
    server.Mute();
    auto client = Connect(At(server));
    client->GetMemberPlaylists(&listener);
    ASSERT_TRUE(loop.RunUntil([&] { return server.GetLines().size() == 1; }));
    AnswerWith(server, ",\"playlists\":[]");
    auto offline = MakeClient();
    offline->GetMemberPlaylists(&listener);
    client.reset();
    offline.reset();
    EXPECT_TRUE(loop.RunUntil([&] { return !server.IsConnected(); }));
    EXPECT_EQ(listener.calls, Calls{});
    EXPECT_EQ(general.calls, Calls{"connected"});
}

TEST_F(ClientTest, MayBeDestroyedInsideEachOfItsCalls) {
    ScriptedServer server(loop);
    server.Mute();
    std::unique_ptr<KVRhapsodyClient::RhapsodyClient> client;
    const auto destroy = [&] { client.reset(); };

    general.onCall = destroy;
    client = Connect(At(server));
    ASSERT_TRUE(loop.RunUntil([&] { return !client; })); // connected
    general.onCall = nullptr;

    listener.onCall = destroy;
    for (const std::string rest : {",\"playlists\":[]", ",\"error\":{\"code\":2}"}) {
        client = Connect(At(server));
        client->GetMemberPlaylists(&listener);
        client->GetMemberPlaylists(&listener);
        AnswerWith(server, rest);
        ASSERT_TRUE(loop.RunUntil([&] { return !client; }));
        ASSERT_TRUE(loop.RunUntil([&] { return !server.IsConnected(); }));
        answered = server.GetLines().size();
    }
    client = Connect(At(server), 100);
    client->GetMemberPlaylists(&listener);
    client->GetMemberPlaylists(&listener);
    ASSERT_TRUE(loop.RunUntil([&] { return !client; })); // too late
    EXPECT_EQ(listener.calls, (Calls{"playlists", "error 2", "error 3"}));

    general.calls.clear();
    client = Connect(At(server));
    ASSERT_TRUE(loop.RunUntil([&] { return general.calls == Calls{"connected"} && server.IsConnected(); }));
    general.onCall = destroy;
    server.Kill();
    ASSERT_TRUE(loop.RunUntil([&] { return !client; }));
    EXPECT_EQ(general.calls.back(), "lost");
}

TEST_F(ClientTest, MayBeAskedInsideItsCalls) {
    const tests::Gateway gateway(catalogue);
    const auto client = Connect(gateway.Address());
    listener.onCall = [&] {
        if (listener.calls.size() < 100)
            client->GetCurrentSongInfo("a", 0, &listener);
    };
    client->GetCurrentSongInfo("a", 0, &listener);
    EXPECT_TRUE(Answered(100));
}

} // namespace
} // namespace korvel::controller
