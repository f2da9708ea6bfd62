// What the rooms' device may take over, and what a queue still says at its end.
#include "PlaybackFixture.h"

namespace {

TEST_F(QueuePlayback, RoomCommandIsOfferedToTheRegisteredDevice) {
    EXPECT_FALSE(queue->HandleRoomCommand("PLAY", "7"));
    EXPECT_EQ(Out(), Lines{});
    Register("mine");
    EXPECT_FALSE(queue->HandleRoomCommand("PLAY", "7"));
    EXPECT_EQ(Out(), Lines{"message 200 PLAY ROOM_ID:INT=7"});
}

TEST_F(QueuePlayback, RoomCommandIsHandledOnlyByAClearYes) {
    Register();
    const auto handled = [this](const std::string& reply) {
        Run("reply 200 PLAY " + reply);
        return queue->HandleRoomCommand("PLAY", "7");
    };
    EXPECT_TRUE(handled("<reply handled=\"true\"/>"));
    EXPECT_TRUE(handled("<r handled=\"TRUE\"/>"));
    EXPECT_TRUE(handled("<r><handled>True</handled></r>"));
    EXPECT_FALSE(handled("<r><handled>false</handled></r>"));
    EXPECT_FALSE(handled("<r handled=\"1\"/>"));
    EXPECT_FALSE(handled("<r/>"));
    EXPECT_FALSE(handled("true"));
    EXPECT_FALSE(handled("<r handled=\"true\">"));
    EXPECT_FALSE(handled("\"\""));
}

TEST_F(QueuePlayback, EndOfTheQueueObjectStopsAndSaysSo) {
    HoldOne(Song(1));
    queue->AddRoomClient(7, "10.0.0.7", 6200, 1);
    queue->SetQueueState(PLAY);
    Advance(3000);
    Out();
    queue.reset();
    EXPECT_EQ(Out(), (Lines{"message 200 QUEUE_STATE_CHANGED QUEUE_ID:INT=12 PREV_QUEUE_STATE:STRING=PLAY "
                            "PREV_QUEUE_STATE_TIME:INT=3 QUEUE_STATE:STRING=STOP",
                            "message 200 QUEUE_DELETED QUEUE_ID:INT=12 LAST_QUEUE_STATE:STRING=STOP "
                            "LAST_QUEUE_STATE_TIME:INT=0"}));
}

TEST_F(QueuePlayback, ClosedQueueSaysNothingAnyMore) {
    HoldOne(Song(1));
    queue->AddRoomClient(7, "10.0.0.7", 6200, 1);
    queue->Close();
    EXPECT_TRUE(queue->IsClosed());
    EXPECT_EQ(queue->GetRoomCount(), 0u);
    Out();
    queue->Close();
    queue->SetQueueState(PLAY);
    queue->SetQueueState(STOP);
    queue->AddRoomClient(8, "10.0.0.8", 6200, 1);
    queue->AddRoomClient(9);
    queue->AddSong(Song(2), true, false);
    queue->UpdateStreamStatus("s");
    queue->CreateStream();
    EXPECT_EQ(queue->GetRoomCount(), 0u);
    EXPECT_EQ(Out(), Lines{});
}

// Whoever moved the queue on when it was closed asks nobody for anything on its behalf.
TEST_F(QueuePlayback, ClosedQueueAsksForNothingAnyMore) {
    Run("song 2 location=b.flac device=300");
    Run("reply 300 GET_MOUNT_PATH usb");
    Run("reply 200 PLAY <r handled=\"true\"/>");
    HoldOne(Song(2));
    EXPECT_TRUE(queue->HandleRoomCommand("PLAY", "7"));
    Out();
    bool closed = false;
    onCall = [&](const ServiceCall& call) {
        if (call.name == "SendMessage" && !std::exchange(closed, true)) // announces that it plays
            queue->Close();
    };
    queue->PlayNextSong(true, false);
    onCall = nullptr;
    EXPECT_EQ(Out(), (Lines{"message 200 QUEUE_STATE_CHANGED QUEUE_ID:INT=12 PREV_QUEUE_STATE:STRING=PLAY "
                            "PREV_QUEUE_STATE_TIME:INT=0 QUEUE_STATE:STRING=STOP",
                            "message 200 QUEUE_DELETED QUEUE_ID:INT=12 LAST_QUEUE_STATE:STRING=STOP "
                            "LAST_QUEUE_STATE_TIME:INT=0",
                            "message 200 QUEUE_STATE_CHANGED QUEUE_ID:INT=12 PREV_QUEUE_STATE:STRING=STOP "
                            "PREV_QUEUE_STATE_TIME:INT=0 QUEUE_STATE:STRING=PLAY"}));
    EXPECT_FALSE(queue->HandleRoomCommand("PLAY", "7"));
    queue->AddSongToStream(Track("Tra.1"));
    EXPECT_EQ(Out(), Lines{});
}

TEST_F(QueuePlayback, QueueThatIsClosedWhileASongIsLookedUpAsksNoStorageDevice) {
    Run("song 2 location=b.flac device=300");
    for (const std::string lookUp : {"GetLocation", "GetStorageDevice", "CreateMessage"}) {
        NewQueue();
        std::vector<std::string> asked;
        onCall = [&](const ServiceCall& call) {
            if (call.name == lookUp)
                queue->Close();
            if (call.name == "SendMessage" && call.arguments[0] == "300")
                asked.push_back(call.name);
        };
        queue->AddSongToStream(Song(2));
        onCall = nullptr;
        EXPECT_EQ(asked, std::vector<std::string>{}) << lookUp;
    }
}

} // namespace
