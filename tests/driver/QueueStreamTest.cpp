// The stream of a queue, and the modes in which it plays a single one.
#include "QueueFixture.h"

namespace {

class QueueStream : public QueueFixture {
protected:
    QueueStream() {
        Run("song 1 location=/media/a.flac");
        Run("song 2 location=/media/b.flac");
    }
    // A stream that cannot pause is stopped by a pause.
    bool CanPause() {
        queue->ChangeQueueState(PLAY);
        queue->SetQueueState(PAUSE);
        return queue->GetQueueState() == PAUSE;
    }
};

TEST_F(QueueStream, RequestForTheStreamGoesAheadOfWhatWaitsForIt) {
    queue->AddRoomClient(7, "10.0.0.7", 6200, 1);
    EXPECT_EQ(Sent(), Lines{});
    queue->CreateStream();
    EXPECT_TRUE(queue->GetWaitingForAddResponse());
    EXPECT_EQ(Sent(), Lines{"send addstr"});
    queue->SetStreamId(4);
    EXPECT_FALSE(queue->GetWaitingForAddResponse());
    EXPECT_EQ(queue->GetStreamId(), 4u);
    EXPECT_EQ(Sent(), Lines{"send addcli 4 10.0.0.7 6200"});
}

TEST_F(QueueStream, KnownStreamIdOnlyEndsTheWait) {
    GiveStream();
    queue->UpdateCaps("NO-PAUSE");
    queue->SetWaitingForAddResponse(true);
    queue->SetStreamId(1);
    EXPECT_FALSE(queue->GetWaitingForAddResponse());
    EXPECT_FALSE(CanPause());
}

TEST_F(QueueStream, NewStreamMayPause) {
    GiveStream();
    queue->UpdateCaps("NO-PAUSE");
    queue->SetStreamId(2);
    EXPECT_TRUE(CanPause());
}

TEST_F(QueueStream, RemovingTheStreamEndsTheWait) {
    GiveStream();
    queue->SetWaitingForAddResponse(true);
    queue->RemoveStream();
    EXPECT_FALSE(queue->GetWaitingForAddResponse());
    EXPECT_EQ(Sent(), Lines{"send remstr 1"});
    EXPECT_EQ(queue->GetStreamId(), 1u);
}

TEST_F(QueueStream, OnlyTheNewestMediaWaitsForTheStream) {
    queue->AddSongToStream(Song(1));
    EXPECT_EQ(Out(), Lines{});
    queue->AddRoomClient(7, "10.0.0.7", 6200, 1);
    queue->AddSongToStream(Song(2));
    EXPECT_EQ(Out("log"), Lines{"log 6 Digital Audio addmed entry superceeded"});
    queue->SetStreamId(1);
    EXPECT_EQ(Sent(), (Lines{"send addcli 1 10.0.0.7 6200", "send addmed 1 \\\"file://media/b.flac\\\""}));
}

TEST_F(QueueStream, SeveralWaitingMediaGiveWayWithOneLogLine) {
    queue->SetInputFile("line1");
    queue->AddFileToStream();
    queue->AddFileToStream();
    queue->AddSongToStream(Track("Tra.1"));
    EXPECT_EQ(Out(), Lines{"log 6 Digital Audio addmed entry superceeded"});
    queue->SetStreamId(1);
    EXPECT_EQ(Sent(), Lines{"send addmed 1 \\\"rhap://1:Tra.1\\\""});
}

TEST_F(QueueStream, LocalInputDoesNotPushOutWhatWaits) {
    queue->AddSongToStream(Song(1));
    queue->SetInputFile("line1");
    queue->AddFileToStream();
    EXPECT_EQ(Out(), Lines{});
    queue->SetStreamId(1);
    EXPECT_EQ(Sent(), (Lines{"send addmed 1 \\\"file://media/a.flac\\\"", "send addmed 1 line1"}));
}

TEST_F(QueueStream, MediaThatCannotBeStreamedIsOnlyDescribed) {
    queue->AddSongToStream(Song(1));
    queue->AddRoomClient(7);
    queue->AddSongToStream(AudioMedia::CreateExternal(MEDIA_RESERVED, ""));
    Run("fail SongLocation");
    queue->AddSongToStream(Song(2));
    EXPECT_EQ(Out(),
              (Lines{"message 7 UPDATE_MEDIA_INFO MEDIA_INFO:STRING=<mediainfo><deviceid>100002</deviceid>"
                     "<queueid>12</queueid><source>4</source></mediainfo>",
                     "message 7 UPDATE_MEDIA_INFO MEDIA_INFO:STRING=<mediainfo><deviceid>100002</deviceid>"
                     "<queueid>12</queueid><source>1</source><mediaid>2</mediaid>"
                     "<mediatype>SONG</mediatype></mediainfo>"}));
    queue->SetStreamId(1); // what waited still does
    EXPECT_EQ(Sent(), Lines{"send addmed 1 \\\"file://media/a.flac\\\""});
}

TEST_F(QueueStream, MediaIsDescribedAfterItsLine) {
    GiveStream();
    queue->AddRoomClient(7);
    queue->AddSongToStream(Track("Tra.1"));
    const Lines out = Out();
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0], "send addmed 1 \\\"rhap://1:Tra.1\\\"");
    EXPECT_TRUE(out[1].starts_with("message 7 UPDATE_MEDIA_INFO "));
}

TEST_F(QueueStream, NewMediaMayPauseUntilItSaysOtherwise) {
    GiveStream();
    queue->UpdateCaps("NO-PAUSE");
    queue->AddSongToStream(AudioMedia());
    EXPECT_TRUE(CanPause());
}

TEST_F(QueueStream, AbilitiesAreWordsBetweenCommas) {
    GiveStream();
    const auto canPauseAfter = [this](const std::string& caps) {
        queue->UpdateCaps(caps);
        return CanPause();
    };
    EXPECT_FALSE(canPauseAfter("NO-PAUSE"));
    EXPECT_FALSE(canPauseAfter("SEEK,NO-PAUSE"));
    EXPECT_FALSE(canPauseAfter("NO-PAUSE,SEEK"));
    EXPECT_FALSE(canPauseAfter(",,NO-PAUSE,"));
    EXPECT_TRUE(canPauseAfter(""));
    EXPECT_TRUE(canPauseAfter(","));
    EXPECT_TRUE(canPauseAfter("no-pause"));
    EXPECT_TRUE(canPauseAfter("NO-PAUSE "));
    EXPECT_TRUE(canPauseAfter(" NO-PAUSE"));
    EXPECT_TRUE(canPauseAfter("NO-PAUSES,XNO-PAUSE,NO"));
}

TEST_F(QueueStream, LaterAbilitiesReplaceEarlierOnes) {
    GiveStream();
    queue->UpdateCaps("NO-PAUSE");
    queue->UpdateCaps("SEEK");
    EXPECT_TRUE(CanPause());
}

TEST_F(QueueStream, PausingWhatCannotPauseStopsAndRewinds) {
    GiveStream();
    queue->AddSongList(Songs({1, 2}), false);
    queue->SetNextSong(std::uint32_t{1});
    queue->PlayNextSong(true, false);
    Out();
    queue->UpdateCaps("NO-PAUSE");
    queue->SetQueueState(PAUSE);
    EXPECT_EQ(queue->GetQueueState(), STOP);
    EXPECT_EQ(Sent(), Lines{"send remmed 1"});
    EXPECT_EQ(queue->PeekNextSong(), Song(1));
}

TEST_F(QueueStream, RadioModeEmptiesTheQueueWheneverItIsTurnedOn) {
    GiveStream();
    queue->AddSong(Song(1), false, false);
    queue->SetIsInternetRadio(true);
    EXPECT_TRUE(queue->IsInternetRadio());
    EXPECT_TRUE(queue->IsSongListEmpty());
    EXPECT_EQ(Sent(), Lines{});
    queue->AddSong(Radio(5), false, false);
    queue->SetIsInternetRadio(true);
    EXPECT_TRUE(queue->IsInternetRadio());
    EXPECT_TRUE(queue->IsSongListEmpty());
    EXPECT_EQ(Sent(), Lines{"send remmed 1"});
}

TEST_F(QueueStream, RadioModeKeepsTheRegistrationWhileItIsTurnedOn) {
    Register("mine");
    queue->SetIsInternetRadio(true);
    queue->SetIsInternetRadio(true);
    EXPECT_EQ(queue->GetNotificationDevice(), kListener);
    EXPECT_EQ(Out("message"), Lines{});
}

TEST_F(QueueStream, LeavingRadioModeEmptiesTheQueueAndEndsTheRegistration) {
    GiveStream();
    queue->SetIsInternetRadio(true);
    queue->AddSong(Radio(5), false, false);
    queue->UpdateCaps("NO-PAUSE");
    Register("mine");
    Out();
    queue->SetIsInternetRadio(false);
    EXPECT_FALSE(queue->IsInternetRadio());
    EXPECT_TRUE(queue->IsSongListEmpty());
    EXPECT_EQ(queue->GetNotificationDevice(), 0u);
    const Lines out = Out();
    EXPECT_EQ(out.front(), "send remmed 1");
    EXPECT_EQ(out.back(),
              "message 200 QUEUE_DELETED QUEUE_ID:INT=12 QUEUE_INFO:STRING=mine "
              "LAST_QUEUE_STATE:STRING=STOP LAST_QUEUE_STATE_TIME:INT=0");
    EXPECT_TRUE(CanPause());
}

TEST_F(QueueStream, RadioModeThatIsOffEndsTheRegistrationAndKeepsTheSongs) {
    GiveStream();
    queue->AddSong(Song(1), false, false);
    queue->UpdateCaps("NO-PAUSE");
    Register();
    queue->SetIsInternetRadio(false);
    EXPECT_EQ(ListedIds(), std::vector<std::uint32_t>{1});
    EXPECT_EQ(queue->GetNotificationDevice(), 0u);
    EXPECT_EQ(Out().size(), 1u);
    EXPECT_TRUE(CanPause());
}

TEST_F(QueueStream, ChannelModeEmptiesTheQueueWheneverItIsSetOrLeft) {
    queue->AddSong(Song(1), false, false);
    queue->SetIsRhapsodyChannel(true);
    EXPECT_TRUE(queue->IsRhapsodyChannel());
    EXPECT_TRUE(queue->IsSongListEmpty());
    queue->AddSong(Channel("st.1"), false, false);
    queue->SetIsRhapsodyChannel(true);
    EXPECT_TRUE(queue->IsRhapsodyChannel());
    EXPECT_TRUE(queue->IsSongListEmpty());
    queue->AddSong(Channel("st.1"), false, false);
    queue->SetIsRhapsodyChannel(false);
    EXPECT_FALSE(queue->IsRhapsodyChannel());
    EXPECT_TRUE(queue->IsSongListEmpty());
}

TEST_F(QueueStream, ChannelModeThatIsOffKeepsTheSongsAndTheRegistration) {
    queue->AddSong(Song(1), false, false);
    Register();
    queue->SetIsRhapsodyChannel(false);
    EXPECT_EQ(ListedIds(), std::vector<std::uint32_t>{1});
    EXPECT_EQ(queue->GetNotificationDevice(), kListener);
    EXPECT_EQ(Out(), Lines{});
}

TEST_F(QueueStream, ChannelModeEndsTheRegistration) {
    Register();
    queue->SetIsRhapsodyChannel(true);
    EXPECT_EQ(queue->GetNotificationDevice(), 0u);
}

TEST_F(QueueStream, OneModeEndsTheOther) {
    GiveStream();
    queue->SetIsInternetRadio(true);
    queue->AddSong(Radio(5), false, false);
    queue->SetIsRhapsodyChannel(true);
    EXPECT_FALSE(queue->IsInternetRadio());
    EXPECT_TRUE(queue->IsRhapsodyChannel());
    EXPECT_EQ(Sent(), Lines{"send remmed 1"});
    queue->AddSong(Channel("st.1"), false, false);
    Register();
    queue->SetIsInternetRadio(true);
    EXPECT_TRUE(queue->IsInternetRadio());
    EXPECT_FALSE(queue->IsRhapsodyChannel());
    EXPECT_TRUE(queue->IsSongListEmpty());
    EXPECT_EQ(queue->GetNotificationDevice(), 0u); // by way of leaving the channel
    EXPECT_EQ(Sent(), Lines{});
}

} // namespace
