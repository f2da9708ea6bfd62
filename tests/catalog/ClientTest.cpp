// The controller's client of the streaming service.
#include <algorithm>

#include "Gateway.h"
#include "TestHouse.h"
#include "rhapsody/RhapsodyService.h"

namespace korvel::controller {
namespace {

using std::chrono::milliseconds;
using Calls = std::vector<std::string>;

// Writes down what it is told.
class Listener final : public IRhapsodyCallback {
public:
    void RC_ErrorHandler(RC_Error code) override { Note("error " + std::to_string(code)); }
    void RC_Completed(std::vector<DataPlaylistLite>& playlists) override {
        std::string text = "playlists";
        for (const DataPlaylistLite& playlist : playlists)
            text += " " + playlist.id + "=" + playlist.name;
        Note(text);
    }
    void RC_Completed(unsigned int total, std::vector<DataTrackInfo>& tracks) override {
        std::string text = "tracks " + std::to_string(total) + ":";
        for (const DataTrackInfo& track : tracks)
            text += " " + track.id;
        Note(text);
    }
    void RC_Completed(std::vector<DataTrackFull>& tracks) override {
        const DataTrackFull& track = tracks.at(0);
        Note("track " + track.id + "|" + track.context + "|" + track.name + "|" + track.artist + "|" +
             track.album + "|" + track.image);
    }
    void RC_ConnectionChanged(bool connected) override { Note(connected ? "connected" : "lost"); }

    bool Heard(const std::string& call) const { return std::ranges::count(calls, call) > 0; }

    Calls calls;
    std::function<void()> onCall; // inside each call

private:
    void Note(const std::string& call) {
        calls.push_back(call);
        if (onCall)
            onCall();
    }
};

ITimerManager& NoTimers(TestLoop& loop) {
    static TimerService timers(loop.loop);
    return timers;
}

class ClientTest : public testing::Test {
protected:
    // Milliseconds for a whole answer.
    std::unique_ptr<KVRhapsodyClient::RhapsodyClient> MakeClient(int patience = 5000,
                                                                 const std::string& address = "") {
        RhapsodyService service(loop.loop, log, address,
                                {milliseconds(patience), BackOff(milliseconds(1), milliseconds(20))});
        return service.CreateClient(KVRhapsodyClient::RhapsodyBranding::Standard, NoTimers(loop), &general);
    }
    // A client that is connecting.
    std::unique_ptr<KVRhapsodyClient::RhapsodyClient> Connect(const std::string& address,
                                                              int patience = 5000) {
        auto client = MakeClient(patience);
        client->Connect(address);
        client->DisableOfflineMode();
        return client;
    }
    static std::string At(const ScriptedServer& server) {
        return "127.0.0.1:" + std::to_string(server.GetPort());
    }
    bool Answered(std::size_t times = 1) {
        return loop.RunUntil([&] { return listener.calls.size() >= times; });
    }
    // Answers the next request, when it has come, with this rest of an object.
    void AnswerWith(ScriptedServer& server, const std::string& rest) {
        const std::size_t seen = answered++;
        ASSERT_TRUE(loop.RunUntil([&] { return server.GetLines().size() > seen; }));
        const auto id = nlohmann::json::parse(server.GetLines()[seen]).at("id");
        server.Send("{\"id\":" + id.dump() + rest + "}\n");
    }

    tests::Folder folder;
    const std::string catalogue =
        folder.Write("c.toml", tests::TrackEntry("a") + tests::TrackEntry("b") +
                                   tests::ListEntry("playlist", "p", "[\"a\", \"b\", \"a\"]") +
                                   tests::ListEntry("playlist", "q", "[]"));
    TestLoop loop;
    Log log{LogLevel::Error, std::fopen("/dev/null", "w")};
    Listener general;  // hears of the connection
    Listener listener; // hears the answers
    std::size_t answered = 0;
};

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
    auto gateway = std::make_unique<tests::Gateway>(catalogue);
    const std::uint16_t port = gateway->Port();
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

TEST_F(ClientTest, WhatWasAskedOnALostConnectionFails) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server));
    client->GetMemberPlaylists(&listener);
    client->GetMemberPlaylists(&listener);
    ASSERT_TRUE(loop.RunUntil([&] { return server.GetLines().size() == 2; }));
    server.Kill();
    ASSERT_TRUE(Answered(2));
    EXPECT_EQ(listener.calls, (Calls{"error 16", "error 16"}));
    EXPECT_EQ(general.calls, (Calls{"connected", "lost"}));
}

TEST_F(ClientTest, ACatalogueThatIsNotThereIsANetworkErrorInTheEnd) {
    std::uint16_t port = 0;
    {
        const ScriptedServer server(loop);
        port = server.GetPort();
    }
    const auto client = Connect("127.0.0.1:" + std::to_string(port), 100);
    client->GetMemberPlaylists(&listener);
    ASSERT_TRUE(Answered());
    EXPECT_EQ(listener.calls, Calls{"error 16"});
}

TEST_F(ClientTest, ACatalogueThatIsSilentIsACommunicationsError) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server), 100);
    client->GetMemberPlaylists(&listener);
    ASSERT_TRUE(Answered());
    EXPECT_EQ(listener.calls, Calls{"error 3"});
    // Its answer comes too late, which must not disturb the next one.
    AnswerWith(server, ",\"playlists\":[]");
    client->GetTracksForPlaylist("p", 0, 500, 0, &listener);
    AnswerWith(server, ",\"total\":1,\"tracks\":[\"t\"]");
    ASSERT_TRUE(Answered(2));
    EXPECT_EQ(listener.calls, (Calls{"error 3", "tracks 1: t"}));
}

TEST_F(ClientTest, EachQuestionHasItsOwnDeadline) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server), 200);
    client->GetMemberPlaylists(&listener);
    AnswerWith(server, ",\"playlists\":[]");
    ASSERT_TRUE(Answered());
    client->GetMemberPlaylists(&listener);
    client->GetMemberPlaylists(&listener);
    ASSERT_TRUE(Answered(3));
    EXPECT_EQ(listener.calls, (Calls{"playlists", "error 3", "error 3"}));
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

TEST_F(ClientTest, AnAnswerOfAnotherShapeIsInvalidData) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server));
    const std::vector<std::string> answers = {"", ",\"playlists\":7", ",\"playlists\":[7]",
                                              ",\"playlists\":[{\"id\":\"p\"}]",
                                              ",\"playlists\":[{\"id\":\"p\",\"name\":null}]"};
    for (std::size_t i = 0; i < answers.size(); ++i) {
        client->GetMemberPlaylists(&listener);
        AnswerWith(server, answers[i]);
        ASSERT_TRUE(Answered(i + 1));
        EXPECT_EQ(listener.calls.back(), "error 10") << answers[i];
    }
}

TEST_F(ClientTest, AnErrorIsPassedOnWhenItsCodeIsOne) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server));
    const std::vector<std::pair<std::string, std::string>> errors = {
        {"{\"code\":4}", "error 4"},
        {"{\"code\":18}", "error 18"},
        {"{\"code\":0}", "error 9"},
        {"{\"code\":19}", "error 9"},
        {"{\"code\":-5}", "error 9"},
        {"{\"code\":\"2\"}", "error 9"},
        {"{\"code\":1e99}", "error 9"},
        {"{\"code\":99999999999999999999}", "error 9"},
        {"{}", "error 9"},
        {"7", "error 9"},
        {"null", "error 9"}};
    for (std::size_t i = 0; i < errors.size(); ++i) {
        client->GetMemberPlaylists(&listener);
        AnswerWith(server, ",\"error\":" + errors[i].first);
        ASSERT_TRUE(Answered(i + 1));
        EXPECT_EQ(listener.calls.back(), errors[i].second) << errors[i].first;
    }
}

TEST_F(ClientTest, LinesThatAreNoAnswersAreIgnored) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server));
    client->GetMemberPlaylists(&listener);
    ASSERT_TRUE(loop.RunUntil([&] { return server.GetLines().size() == 1; }));
    server.Send("hello\n\n[]\n{}\n{\"id\":\"1\"}\n{\"id\":-1}\n{\"id\":77}\n{\"id\":1.0}\n\xff\xfe\n");
    AnswerWith(server, ",\"playlists\":[]");
    ASSERT_TRUE(Answered());
    EXPECT_EQ(listener.calls, Calls{"playlists"});
}

TEST_F(ClientTest, AnEndlessLineCostsTheConnection) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server));
    client->GetMemberPlaylists(&listener);
    ASSERT_TRUE(loop.RunUntil([&] { return server.GetLines().size() == 1; }));
    server.Send(std::string(LineSplitter::kMaxLine + 1, 'x'));
    ASSERT_TRUE(Answered());
    EXPECT_EQ(listener.calls, Calls{"error 16"});
    EXPECT_TRUE(loop.RunUntil([&] { return server.GetConnections() == 2; }));
}

TEST_F(ClientTest, TextsHoldNoControlCharacters) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server));
    client->GetMemberPlaylists(&listener);
    AnswerWith(server, ",\"playlists\":[{\"id\":\"p\",\"name\":\"a\\u0000b\\nc\"}]");
    ASSERT_TRUE(Answered());
    EXPECT_EQ(listener.calls, Calls{"playlists p=a b c"});
}

TEST_F(ClientTest, TooManyQuestionsAreRefused) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server));
    for (std::size_t i = 0; i <= CatalogLink::kMaxQuestions; ++i)
        client->GetMemberPlaylists(&listener);
    ASSERT_TRUE(Answered());
    EXPECT_EQ(listener.calls, Calls{"error 9"});
}

TEST_F(ClientTest, AnAddressThatIsNoneIsOffLine) {
    for (const std::string address : {"", "127.0.0.1", ":5555", "127.0.0.1:", "127.0.0.1:0",
                                      "127.0.0.1:65536", "127.0.0.1:+80", "127.0.0.1:5555x"}) {
        listener.calls.clear();
        const auto client = Connect(address);
        client->GetMemberPlaylists(&listener);
        ASSERT_TRUE(Answered()) << address;
        EXPECT_EQ(listener.calls, Calls{"error 17"}) << address;
    }
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
