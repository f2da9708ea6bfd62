// The controller's client of the streaming service, when something is wrong.
#include "ClientFixture.h"
#include "common/Text.h"

namespace korvel::controller {
namespace {

class ClientFailure : public ClientTest {
protected:
    // Asks and answers until an answer is in time, which it is not always on a busy machine; returns what is
    // heard of it.
    std::string AnswerInTime(ScriptedServer& server, const std::function<void()>& ask,
                             const std::string& rest) {
        std::string heard = "error 3";
        while (heard == "error 3") {
            listener.calls.clear();
            ask();
            AnswerWith(server, rest);
            if (!Answered())
                return "nothing";
            heard = listener.calls.front();
        }
        return heard;
    }
};

TEST_F(ClientFailure, WhatWasAskedOnALostConnectionFails) {
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

TEST_F(ClientFailure, ACatalogueThatIsNotThereIsANetworkErrorInTheEnd) {
    const tests::HeldPort port;
    const auto client = Connect("127.0.0.1:" + std::to_string(port.Number()), 100);
    client->GetMemberPlaylists(&listener);
    ASSERT_TRUE(Answered());
    EXPECT_EQ(listener.calls, Calls{"error 16"});
}

TEST_F(ClientFailure, ACatalogueThatIsSilentIsACommunicationsError) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server), 100);
    client->GetMemberPlaylists(&listener);
    ASSERT_TRUE(Answered());
    EXPECT_EQ(listener.calls, Calls{"error 3"});
    // Its answer comes too late, which must not disturb the next one.
    AnswerWith(server, ",\"playlists\":[]");
    const auto ask = [&] { client->GetTracksForPlaylist("p", 0, 500, 0, &listener); };
    EXPECT_EQ(AnswerInTime(server, ask, ",\"total\":1,\"tracks\":[\"t\"]"), "tracks 1: t");
}

TEST_F(ClientFailure, EachQuestionHasItsOwnDeadline) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server), 200);
    const auto ask = [&] { client->GetMemberPlaylists(&listener); };
    EXPECT_EQ(AnswerInTime(server, ask, ",\"playlists\":[]"), "playlists");
    ask();
    ask();
    ASSERT_TRUE(Answered(3));
    EXPECT_EQ(listener.calls, (Calls{"playlists", "error 3", "error 3"}));
}

TEST_F(ClientFailure, AnAnswerOfAnotherShapeIsInvalidData) {
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

TEST_F(ClientFailure, AnErrorIsPassedOnWhenItsCodeIsOne) {
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

TEST_F(ClientFailure, LinesThatAreNoAnswersAreIgnored) {
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

TEST_F(ClientFailure, AnAnswerThatIsTooLongCostsTheQuestionsAndNotTheConnection) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server));
    client->GetMemberPlaylists(&listener);
    ASSERT_TRUE(loop.RunUntil([&] { return server.GetLines().size() == 1; }));
    server.Send(std::string(kServerLines.line + 1, 'x') + "\n");
    ASSERT_TRUE(Answered());
    EXPECT_EQ(listener.calls, Calls{"error 9"});
    answered = 1;
    client->GetMemberPlaylists(&listener);
    AnswerWith(server, ",\"playlists\":[]");
    ASSERT_TRUE(Answered(2));
    EXPECT_EQ(listener.calls.back(), "playlists");
    EXPECT_EQ(server.GetConnections(), 1);
}

TEST_F(ClientFailure, TextsHoldNoControlCharacters) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server));
    client->GetMemberPlaylists(&listener);
    AnswerWith(server, ",\"playlists\":[{\"id\":\"p\",\"name\":\"a\\u0000b\\nc\"}]");
    ASSERT_TRUE(Answered());
    EXPECT_EQ(listener.calls, Calls{"playlists p=a b c"});
}

TEST_F(ClientFailure, TracksThatNoLineCanNameAreLeftOut) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server));
    client->GetTracksForPlaylist("p", 0, 500, 0, &listener);
    AnswerWith(server, ",\"total\":5,\"tracks\":[\"a\",\"b\\\"\\r\\n9 reset\",\"c\\u0000\",\"" +
                           std::string(common::kMaxReferenceBytes + 1, 'x') + "\",\"d\"]");
    ASSERT_TRUE(Answered());
    EXPECT_EQ(listener.calls, Calls{"tracks 5: a d"});
}

TEST_F(ClientFailure, TooManyQuestionsAreRefused) {
    ScriptedServer server(loop);
    server.Mute();
    const auto client = Connect(At(server));
    for (std::size_t i = 0; i <= CatalogLink::kMaxQuestions; ++i)
        client->GetMemberPlaylists(&listener);
    ASSERT_TRUE(Answered());
    EXPECT_EQ(listener.calls, Calls{"error 9"});
}

TEST_F(ClientFailure, AnAddressThatIsNoneIsOffLine) {
    for (const std::string address : {"", "127.0.0.1", ":5555", "127.0.0.1:", "127.0.0.1:0",
                                      "127.0.0.1:65536", "127.0.0.1:+80", "127.0.0.1:5555x"}) {
        listener.calls.clear();
        const auto client = Connect(address);
        client->GetMemberPlaylists(&listener);
        ASSERT_TRUE(Answered()) << address;
        EXPECT_EQ(listener.calls, Calls{"error 17"}) << address;
    }
}

} // namespace
} // namespace korvel::controller
