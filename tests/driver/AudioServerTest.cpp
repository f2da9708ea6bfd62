// An audio server object: its queues, its input and its announcement.
#include <gtest/gtest.h>

#include "TestCore.h"
#include "platform/Services.h"
#include "server/AudioServer.h"
#include "status/RoomHistories.h"

namespace {

using Lines = std::vector<std::string>;

class Watcher final : public AudioServerWatcher {
public:
    void StartClearTimer(AudioQueue* queue) override { calls.push_back({"start", queue}); }
    void InterruptClearTimer(AudioQueue* queue) override { calls.push_back({"interrupt", queue}); }
    std::vector<std::pair<std::string, AudioQueue*>> calls;
};

class Server : public testing::Test {
protected:
    // A hook may refer to what a test has on its stack.
    void TearDown() override { m_core.ClearHook(); }

    Server() { m_core.Run({"song 1 location=/media/a.flac", "song 2 location=/media/b.flac"}); }

    AudioQueue& Queue(std::uint32_t id, std::uint32_t room, std::uint32_t stream = protocol::kNoStream) {
        AudioQueue& queue = *m_server.CreateAudioQueue(room, id);
        queue.AddRoomClient(room, "10.0.0." + std::to_string(room), 6200, 1);
        queue.SetStreamId(stream);
        return queue;
    }
    // Whether something changed; `line` without its line end.
    bool Data(const std::string& line) {
        bool changed = true;
        m_server.OnDataIn(ASPacket(line + "\r\n"), changed);
        return changed;
    }

    TestCore m_core;
    Watcher m_watcher;
    AudioServer m_server{m_core.Helper(), m_core.Instances(), &m_watcher, 3000, true, nullptr, nullptr};
};

TEST_F(Server, HasNoQueuesAtFirst) {
    EXPECT_EQ(m_server.GetNextAudioQueue(0), nullptr);
    EXPECT_EQ(m_server.GetPendingQueue(), nullptr);
    EXPECT_EQ(m_server.GetAudioQueue(10000u), nullptr);
    EXPECT_FALSE(m_server.HasQueues());
    EXPECT_EQ(m_server.GetBindingId(), 3000u);
    EXPECT_TRUE(m_server.AllowMultipleStreamingInputs());
    EXPECT_EQ(m_server.GetAnnouncement(), nullptr);
}

TEST_F(Server, WalksItsQueuesInAscendingId) {
    AudioQueue& second = Queue(12, 8);
    AudioQueue& first = Queue(10, 9);
    EXPECT_EQ(m_server.GetNextAudioQueue(0), &first);
    EXPECT_EQ(m_server.GetNextAudioQueue(10), &second);
    EXPECT_EQ(m_server.GetNextAudioQueue(12), nullptr);
    EXPECT_EQ(m_server.GetNextAudioQueue(11), nullptr);
}

TEST_F(Server, FindsTheFirstMatchInAscendingId) {
    AudioQueue& second = Queue(12, 8, 5);
    AudioQueue& first = Queue(10, 8, 5);
    EXPECT_EQ(m_server.GetAudioQueueFromRoom(8), &first);
    EXPECT_EQ(m_server.GetAudioQueueFromStream(5), &first);
    EXPECT_EQ(m_server.GetInUseClientQueue("10.0.0.8", 1, 6200), &first);
    second.SetInputFile("line");
    EXPECT_EQ(m_server.GetAudioQueue("line"), &second);
    EXPECT_EQ(m_server.GetAudioQueue(std::string()), nullptr);
    EXPECT_EQ(m_server.GetPendingQueue(), nullptr);
    AudioQueue& pending = Queue(13, 9);
    EXPECT_EQ(m_server.GetPendingQueue(), &pending);
    EXPECT_TRUE(m_server.ContainsRoom(9));
    EXPECT_FALSE(m_server.ContainsRoom(10));
}

TEST_F(Server, TellsWhoUsesAnEndpoint) {
    AudioQueue& queue = Queue(10, 7);
    AudioQueue* found = nullptr;
    EXPECT_TRUE(m_server.IsClientInUse("10.0.0.7", 1, 6200, &found));
    EXPECT_EQ(found, &queue);
    EXPECT_FALSE(m_server.IsClientInUse("10.0.0.7", 6200, 1, &found));
    EXPECT_EQ(found, nullptr);
}

TEST_F(Server, AnIdThatIsInUseGivesAQueueThatNoSearchFinds) {
    AudioQueue& known = Queue(10, 7);
    AudioQueue* other = m_server.CreateAudioQueue(8, 10);
    ASSERT_NE(other, nullptr);
    EXPECT_NE(other, &known);
    EXPECT_EQ(m_server.GetAudioQueue(10u), &known);
    EXPECT_EQ(m_server.GetQueues(), std::vector<AudioQueue*>{m_server.GetAudioQueue(10)});
}

TEST_F(Server, RemovingAQueueWithRoomsIsNotedAsAnError) {
    Queue(10, 7);
    m_core.TakeLines();
    m_server.RemoveAudioQueue(10);
    EXPECT_EQ(m_core.TakeLines(), Lines{"< assert korvel_digitalaudio/kvw/AudioServer 368"});
    EXPECT_EQ(m_server.GetAudioQueue(10u), nullptr);
    m_server.RemoveAudioQueue(10);
    EXPECT_EQ(m_core.TakeLines(), Lines{});
}

TEST_F(Server, RemembersOneInputInUse) {
    AudioQueue& queue = Queue(10, 7);
    AudioQueue& other = Queue(11, 8);
    EXPECT_EQ(m_server.GetInUseInputPath(), "");
    EXPECT_EQ(m_server.GetInUseInputQueue(), nullptr);
    queue.SetInputFile("line");
    m_server.SetInUseInput("line", &queue);
    EXPECT_EQ(m_server.GetInUseInputPath(), "line");
    EXPECT_EQ(m_server.GetInUseInputQueue(), &queue);
    EXPECT_FALSE(m_server.ClearInUseInput(&other));
    EXPECT_EQ(m_server.GetInUseInputPath(), "line");
    EXPECT_TRUE(m_server.ClearInUseInput(&queue));
    EXPECT_EQ(m_server.GetInUseInputPath(), "");
    EXPECT_FALSE(m_server.ClearInUseInput(&queue));
}

TEST_F(Server, ForwardsToItsLink) {
    m_server.AddToServerSendQueue("hello");
    m_server.SendToServer();
    EXPECT_EQ(Only(m_core.TakeLines(), "< send"), Lines{R"(< send 3000 "0 hello\r\n")"});
}

TEST_F(Server, AQueueWhoseNextSongCannotBeToldSpoilsNoOther) {
    AudioQueue& broken = Queue(10, 7);
    broken.AddSongList(std::vector<std::uint32_t>{1, 2});
    broken.SetNextSong(9999u);
    Queue(11, 8).AddSongList(std::vector<std::uint32_t>{2});
    const auto root = KVXML::CreateXmlNode("queues");
    m_server.GetStatusVariable(*root);
    EXPECT_EQ(
        root->ToText(),
        "<queues><queue><id>10</id><name></name><state>Stop</state><song id=\"0\" source=\"0\"></song>"
        "<next id=\"0\" source=\"0\"></next><index>4095</index><rooms><id>7</id></rooms></queue>"
        "<queue><id>11</id><name></name><state>Stop</state><song id=\"0\" source=\"0\"></song>"
        "<next id=\"2\" source=\"1\"></next><index>4095</index><rooms><id>8</id></rooms></queue></queues>");
}

TEST_F(Server, PassesHistoriesOn) {
    RoomHistories histories;
    histories.AddPlaylistToHistory(5, 1, "One");
    const auto root = KVXML::CreateXmlNode("r");
    m_server.toxmlHistory(&histories, *root);
    EXPECT_EQ(root->ToText(),
              "<r><history room=\"5\"><playlists><playlist id=\"1\" name=\"One\"></playlist></playlists>"
              "</history></r>");
}

TEST_F(Server, OnlyClearsWhenTold) {
    AudioQueue& queue = Queue(10, 7, 3);
    EXPECT_TRUE(Data("* addmed EOM=3"));
    EXPECT_TRUE(m_watcher.calls.empty());
    m_server.SetClearPlaylistSettings(true);
    EXPECT_TRUE(Data("* addmed EOM=3"));
    ASSERT_EQ(m_watcher.calls.size(), 1u);
    EXPECT_EQ(m_watcher.calls[0], std::make_pair(std::string("start"), &queue));
    queue.AddSongList(std::vector<std::uint32_t>{1, 2});
    EXPECT_TRUE(Data("* addmed EOM=3"));
    ASSERT_EQ(m_watcher.calls.size(), 2u);
    EXPECT_EQ(m_watcher.calls[1], std::make_pair(std::string("interrupt"), &queue));
}

TEST_F(Server, NeedsNoWatcher) {
    AudioServer server(m_core.Helper(), m_core.Instances(), nullptr, 3001, false, nullptr, nullptr);
    server.SetClearPlaylistSettings(true);
    server.CreateAudioQueue(7, 10)->SetStreamId(3);
    bool changed = false;
    server.OnDataIn(ASPacket("* addmed EOM=3\r\n"), changed);
    EXPECT_TRUE(changed);
    server.RemoveAudioQueue(10);
}

TEST_F(Server, SaysWhatChanged) {
    AudioQueue& queue = Queue(10, 7, 3);
    queue.AddSongList(std::vector<std::uint32_t>{1, 2});
    EXPECT_FALSE(Data("1 OK addcli 3"));
    EXPECT_FALSE(Data("1 NO remmed 3"));
    EXPECT_FALSE(Data("1 NO addcli 3"));
    EXPECT_FALSE(Data("* addmed BAD=99 x"));
    EXPECT_FALSE(Data("* addmed EOM=99"));
    EXPECT_FALSE(Data("7 addstr stream=9"));
    EXPECT_FALSE(Data("* SYS STREAM=3 streamInfo:x"));
    EXPECT_TRUE(Data("* addmed BAD=3 x"));
}

TEST_F(Server, AStreamForAPlayingQueueChangesNothing) {
    AudioQueue& queue = Queue(10, 7);
    queue.AddSongList(std::vector<std::uint32_t>{1, 2});
    queue.PlayNextSong(true, false);
    queue.SetWaitingForAddResponse(true);
    EXPECT_FALSE(Data("7 addstr stream=9"));
    EXPECT_EQ(queue.GetStreamId(), 9u);
    EXPECT_FALSE(queue.GetWaitingForAddResponse());
}

TEST_F(Server, AStreamForAStoppedQueuePlaysIt) {
    AudioQueue& queue = Queue(10, 7);
    queue.AddSongList(std::vector<std::uint32_t>{1, 2});
    EXPECT_TRUE(Data("7 addstr stream=9"));
    EXPECT_EQ(queue.GetQueueState(), PLAY);
}

TEST_F(Server, AStreamGoesToAQueueThatDidNotAsk) {
    AudioQueue& queue = Queue(10, 7);
    EXPECT_FALSE(queue.GetWaitingForAddResponse());
    Data("7 addstr stream=9");
    EXPECT_EQ(queue.GetStreamId(), 9u);
}

TEST_F(Server, TellsErrorsInTheNameOfTheDriver) {
    Lines calls;
    m_core.SetHook([&](const ServiceCall& call) {
        if (call.name == "SendToUIs")
            calls.push_back(call.ToText());
    });
    m_server.SendErrorToUI("a <b>");
    EXPECT_EQ(calls, Lines{"SendToUIs 100002 <DA_ERROR Error=\"a &lt;b&gt;\"></DA_ERROR>"});
}

TEST_F(Server, TheCoreMayEndTheQueueThatItIsToldOf) {
    Queue(10, 7, 3);
    m_server.SetClearPlaylistSettings(true);
    m_core.SetHook([&](const ServiceCall& call) {
        if (call.name == "QueueEnded") {
            m_core.ClearHook();
            m_server.RemoveAudioQueue(10);
        }
    });
    EXPECT_TRUE(Data("* addmed EOM=3"));
    EXPECT_TRUE(m_watcher.calls.empty());
    EXPECT_FALSE(m_server.HasQueues());
}

TEST_F(Server, LeavesItsQueuesBehindWithoutAWord) {
    AudioQueue& queue = Queue(10, 7, 3);
    queue.SetNotificationDevice(200);
    AudioQueue& unlisted = *m_server.CreateAudioQueue(8, 10);
    unlisted.SetNotificationDevice(200);
    m_server.CreateAnnouncement();
    m_core.TakeLines();
    m_server.Retire();
    EXPECT_EQ(m_server.GetAudioQueue(10u), nullptr);
    EXPECT_EQ(m_server.GetPendingQueue(), nullptr);
    EXPECT_TRUE(m_server.HasQueues());
    // What still holds a queue changes nothing outside; a clear timer finds its rooms.
    queue.AddSong(AudioMedia::CreateTypeDigital(1), true, false);
    queue.SetQueueState(PLAY);
    queue.RemoveStream();
    unlisted.ChangeQueueState(PLAY);
    EXPECT_EQ(queue.GetRoomIds(), std::vector<std::uint32_t>{7});
    EXPECT_EQ(m_core.TakeLines(), Lines{});
}

TEST_F(Server, RoomsThatLeftMeanwhileAreNotToldToLetGo) {
    AudioQueue& queue = Queue(10, 7, 3);
    queue.AddRoomClient(8, "10.0.0.8", 6200, 1);
    m_core.SetHook([&](const ServiceCall& call) {
        if (call.name == "SendMessage" && call.arguments.back() == "DESELECT_AUDIO_PATH")
            queue.RemoveRoomClient(8);
    });
    Data("* addmed BAD=3 x");
    m_core.ClearHook();
    EXPECT_EQ(Only(m_core.TakeLines(), "< message"), Lines{"< message 7 DESELECT_AUDIO_PATH"});
}

TEST(ServerEnd, SaysNothingOfItsQueues) {
    TestCore core;
    {
        AudioServer server(core.Helper(), core.Instances(), nullptr, 3000, false, nullptr, nullptr);
        AudioQueue& queue = *server.CreateAudioQueue(7, 10);
        queue.AddRoomClient(7, "10.0.0.7", 6200, 1);
        queue.SetNotificationDevice(200);
        queue.CreateStream();
        core.TakeLines();
    }
    EXPECT_EQ(core.TakeLines(), Lines{"< timer-stop 1"});
}

TEST(ServerEnd, GivesTheAnnouncementUp) {
    TestCore core;
    {
        AudioServer server(core.Helper(), core.Instances(), nullptr, 3000, false, nullptr, nullptr);
        server.CreateAnnouncement();
        bool changed = true;
        server.OnDataIn(ASPacket("0 addann stream=5\r\n"), changed);
        EXPECT_FALSE(changed);
        core.Run("advance 5000");
    }
    EXPECT_EQ(Only(core.TakeLines(), "< send"), Lines{R"(< send 3000 "1 remstr 5\r\n")"});
}

} // namespace
