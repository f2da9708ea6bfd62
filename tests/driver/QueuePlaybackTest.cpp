// Starting, pausing, stopping and ending.
#include "PlaybackFixture.h"

namespace {

TEST_F(QueuePlayback, NewQueueIsStoppedWithoutAStream) {
    EXPECT_EQ(queue->GetQueueId(), kQueueId);
    EXPECT_EQ(queue->GetOwner(), kOwner);
    EXPECT_EQ(queue->GetQueueState(), STOP);
    EXPECT_EQ(queue->GetStreamId(), 4095u);
    EXPECT_EQ(queue->GetSourceDevice(), 0u);
    EXPECT_FALSE(queue->GetWaitingForAddResponse());
    EXPECT_FALSE(queue->IsRhapsodyChannel());
    EXPECT_FALSE(queue->IsInternetRadio());
    EXPECT_FALSE(queue->IsStoppedByErrors());
    EXPECT_FALSE(queue->IsShuffleSet());
    EXPECT_FALSE(queue->IsRepeatSet());
    EXPECT_EQ(queue->GetNotificationDevice(), 0u);
    EXPECT_EQ(queue->GetRoomCount(), 0u);
    EXPECT_EQ(CurrentIndex(), kNone);
    EXPECT_EQ(queue->GetCurrentMedia(), AudioMedia());
    queue->SetSourceDevice(9);
    EXPECT_EQ(queue->GetSourceDevice(), 9u);
}

TEST_F(QueuePlayback, QueueHoldsItsLinkAndLetsItGo) {
    link->AddRef();
    EXPECT_EQ(link->Release(), 2);
    queue.reset();
    link->AddRef();
    EXPECT_EQ(link->Release(), 1);
}

TEST_F(QueuePlayback, QueueWithoutALinkDropsItsLines) {
    queue = std::make_unique<AudioQueue>(core.Helper(), core.Instances(), nullptr, 1, 1, nullptr, nullptr);
    queue->SetStreamId(1);
    queue->AddSong(Song(1), true, false);
    queue->SetQueueState(PLAY);
    EXPECT_EQ(queue->GetQueueState(), PLAY);
    EXPECT_EQ(Sent(), Lines{});
}

TEST_F(QueuePlayback, StatesHaveTheirTexts) {
    EXPECT_STREQ(AudioQueue::QueueStateToStr(STOP), "STOP");
    EXPECT_STREQ(AudioQueue::QueueStateToStr(PAUSE), "PAUSE");
    EXPECT_STREQ(AudioQueue::QueueStateToStr(PLAY), "PLAY");
    EXPECT_STREQ(AudioQueue::QueueStateToStr(END), "END");
    EXPECT_STREQ(AudioQueue::QueueStateToStr(static_cast<QueueState>(4)), "");
}

TEST_F(QueuePlayback, ChangeIsAnnouncedWithTheSecondsSpentBefore) {
    Register();
    Advance(2999);
    queue->ChangeQueueState(PLAY);
    EXPECT_EQ(Out(), Lines{"message 200 QUEUE_STATE_CHANGED QUEUE_ID:INT=12 PREV_QUEUE_STATE:STRING=STOP "
                           "PREV_QUEUE_STATE_TIME:INT=2 QUEUE_STATE:STRING=PLAY"});
    Advance(1);
    queue->ChangeQueueState(PAUSE);
    EXPECT_EQ(Out(), Lines{"message 200 QUEUE_STATE_CHANGED QUEUE_ID:INT=12 PREV_QUEUE_STATE:STRING=PLAY "
                           "PREV_QUEUE_STATE_TIME:INT=1 QUEUE_STATE:STRING=PAUSE"});
}

TEST_F(QueuePlayback, QueueInfoComesLastInTheChange) {
    Register("mine");
    queue->ChangeQueueState(END);
    EXPECT_EQ(Out(), Lines{"message 200 QUEUE_STATE_CHANGED QUEUE_ID:INT=12 PREV_QUEUE_STATE:STRING=STOP "
                           "PREV_QUEUE_STATE_TIME:INT=0 QUEUE_STATE:STRING=END QUEUE_INFO:STRING=mine"});
}

TEST_F(QueuePlayback, OnlyPlayIsAnnouncedAgain) {
    Register();
    queue->ChangeQueueState(PLAY);
    queue->ChangeQueueState(PLAY);
    EXPECT_EQ(Actions(), (Lines{"=PLAY", "=PLAY"}));
    queue->ChangeQueueState(STOP);
    queue->ChangeQueueState(STOP);
    EXPECT_EQ(Actions(), Lines{"=STOP"});
}

// The time of a state that is entered again starts anew for play, and goes on for the others.
TEST_F(QueuePlayback, PlayAfterPlayStartsItsTimeAnew) {
    Register();
    queue->ChangeQueueState(PLAY);
    Advance(4000);
    queue->ChangeQueueState(PLAY);
    Advance(1000);
    queue->ChangeQueueState(STOP);
    Advance(2000);
    queue->ChangeQueueState(STOP);
    Advance(3000);
    Out();
    queue->ChangeQueueState(END);
    EXPECT_NE(Out().front().find("PREV_QUEUE_STATE_TIME:INT=5 "), std::string::npos);
}

TEST_F(QueuePlayback, WithoutARegisteredDeviceTheStateChangesSilently) {
    queue->ChangeQueueState(PLAY);
    EXPECT_EQ(queue->GetQueueState(), PLAY);
    EXPECT_EQ(Out(), Lines{});
}

TEST_F(QueuePlayback, WithoutAMessageTheStateChangesSilently) {
    Register("mine");
    Run("fail CreateMessage");
    queue->ChangeQueueState(PLAY);
    queue->UpdateStreamStatus("s");
    queue->NotifyMediaChanged("m");
    EXPECT_FALSE(queue->HandleRoomCommand("PLAY", "7"));
    queue->NotifyQueueDeletion();
    EXPECT_EQ(queue->GetQueueState(), PLAY);
    EXPECT_EQ(Out(), Lines{});
}

TEST_F(QueuePlayback, StoppingRewindsToTheFirstSong) {
    HoldOne(Song(1));
    queue->AddSong(Song(2), false, false);
    queue->SetQueueState(PLAY);
    queue->PlayNextSong(true, false);
    Out();
    queue->SetQueueState(STOP);
    EXPECT_EQ(Actions(), (Lines{"remmed 1", "=STOP"}));
    EXPECT_EQ(CurrentIndex(), 0u);
    EXPECT_EQ(queue->GetNextSongIndex(), 0u);
}

// Not the first place of the order that plays.
TEST_F(QueuePlayback, StoppingPinsTheFirstItemWhereTheShuffledOrderHasIt) {
    GiveStream();
    queue->SetIsInternetRadio(true);
    for (const std::uint32_t station : {1u, 2u, 3u})
        queue->AddSong(Radio(station), false, false);
    Random("0 0"); // 2 1 3, then 3 1 2
    queue->SetShuffle(true);
    queue->SetQueueState(PLAY);
    queue->SetQueueState(STOP);
    EXPECT_EQ(queue->GetNextSongIndex(), 1u);
}

TEST_F(QueuePlayback, EndingClearsTheSecondaryInfoAndDescribesTheCurrentMediaOnce) {
    GiveStream();
    queue->SetIsInternetRadio(true);
    queue->AddSong(Radio(5), false, false);
    const std::string title = "Title";
    queue->UpdateSecondaryInfo(false, nullptr, nullptr, &title, nullptr, nullptr);
    Register();
    Out();
    queue->SetQueueState(END);
    const Lines out = Out();
    ASSERT_EQ(out.size(), 3u);
    EXPECT_EQ(
        out[0],
        MediaInfo("<source>5</source><mediatype>SONG</mediatype><mediatypeV2>GENERIC_MEDIA</mediatypeV2>"
                  "<medSrcDev>0</medSrcDev><stationid></stationid><album></album><artist></artist>"
                  "<title></title><channel></channel>"));
    EXPECT_NE(out[1].find("QUEUE_STATE:STRING=END"), std::string::npos);
    EXPECT_EQ(out[2], "send eos 1");
}

TEST_F(QueuePlayback, EndIsToldForEveryRoomInOrder) {
    GiveStream();
    Register();
    queue->AddRoomClient(12);
    queue->AddRoomClient(7);
    queue->EndOfQueue();
    const Lines out = Out();
    ASSERT_EQ(out.size(), 4u);
    EXPECT_NE(out[0].find("QUEUE_STATE:STRING=END"), std::string::npos);
    EXPECT_EQ(out[1], "room-service 100002 27");
    EXPECT_EQ(out[2], "room-service 100002 32");
    EXPECT_EQ(out[3], "send eos 1");
}

TEST_F(QueuePlayback, FirstSongIsStreamedBeforePlayIsAnnounced) {
    HoldOne(Song(1));
    queue->PlayFirstSong();
    EXPECT_EQ(Actions(), (Lines{kAddA, "=PLAY"}));
}

TEST_F(QueuePlayback, FirstSongWithoutAnIdPlaysNothing) {
    HoldOne(Song(0));
    queue->PlayFirstSong();
    EXPECT_EQ(Out(), Lines{"message 200 QUEUE_STATE_CHANGED QUEUE_ID:INT=12 PREV_QUEUE_STATE:STRING=STOP "
                           "PREV_QUEUE_STATE_TIME:INT=0 QUEUE_STATE:STRING=PLAY"});
}

TEST_F(QueuePlayback, FirstStationWithoutAMediaIdPlaysNothing) {
    GiveStream();
    queue->SetIsInternetRadio(true);
    HoldOne(AudioMedia::CreateExternal(MEDIA_INTERNET_RADIO, "http://radio.example/x"));
    queue->PlayFirstSong();
    EXPECT_EQ(Actions(), Lines{"=PLAY"});
}

TEST_F(QueuePlayback, FirstStationIsStreamedByItsAddress) {
    GiveStream();
    queue->SetIsInternetRadio(true);
    HoldOne(Radio(5));
    queue->PlayFirstSong();
    EXPECT_EQ(Actions(), (Lines{"addmed 1 \\\"file:/stream-http://radio.example/5\\\"", "=PLAY"}));
}

TEST_F(QueuePlayback, FirstTrackIsStreamedUnlessItHasNoId) {
    HoldOne(Track("Tra.1"));
    queue->PlayFirstSong();
    EXPECT_EQ(Actions(), (Lines{"addmed 1 \\\"rhap://1:Tra.1\\\"", "=PLAY"}));
    NewQueue();
    HoldOne(Track(""));
    queue->PlayFirstSong();
    EXPECT_EQ(Out(), Lines{});
    EXPECT_EQ(queue->GetQueueState(), STOP);
}

TEST_F(QueuePlayback, ChannelIsNotStartedAsAFirstSong) {
    queue->SetIsRhapsodyChannel(true);
    HoldOne(Channel("st.1"));
    queue->PlayFirstSong();
    EXPECT_EQ(Out(), Lines{});
    EXPECT_EQ(queue->GetQueueState(), STOP);
}

TEST_F(QueuePlayback, LocalInputPlaysWhereThereIsNoSong) {
    GiveStream();
    Register();
    queue->PlayFirstSong();
    EXPECT_EQ(Actions(), Lines{"=PLAY"});
    queue->SetInputFile("line1");
    queue->PlayFirstSong();
    EXPECT_EQ(Actions(), (Lines{"addmed 1 line1", "=PLAY"}));
    HoldOne(AudioMedia::CreateExternal(MEDIA_RESERVED, ""));
    queue->SetInputFile("line2");
    queue->PlayFirstSong();
    EXPECT_EQ(Actions(), (Lines{"addmed 1 line2", "=PLAY"}));
}

TEST_F(QueuePlayback, NextSongAnnouncesPlayBeforeItIsStreamed) {
    HoldOne(Song(1));
    EXPECT_TRUE(queue->PlayNextSong(true, false));
    EXPECT_EQ(Actions(), (Lines{"=PLAY", kAddA}));
}

TEST_F(QueuePlayback, NextStationMayBeKnownByItsAddressAlone) {
    GiveStream();
    queue->SetIsInternetRadio(true);
    HoldOne(AudioMedia::CreateExternal(MEDIA_INTERNET_RADIO, "http://radio.example/x"));
    EXPECT_TRUE(queue->PlayNextSong(true, false));
    EXPECT_EQ(Actions(), (Lines{"=PLAY", "addmed 1 \\\"file:/stream-http://radio.example/x\\\""}));
}

TEST_F(QueuePlayback, NextSongKnownByAnOutsideIdPlaysWithoutALine) {
    HoldOne(AudioMedia::CreateExternal(MEDIA_DIGITAL, "outside"));
    EXPECT_TRUE(queue->PlayNextSong(true, false));
    EXPECT_EQ(Actions(), Lines{"=PLAY"});
}

TEST_F(QueuePlayback, PreviousSongIsPlayedBackwards) {
    HoldOne(Song(1));
    queue->AddSong(Song(2), false, false);
    queue->SetNextSong(std::uint32_t{1});
    queue->GetNextSong();
    EXPECT_TRUE(queue->PlayNextSong(false, false));
    EXPECT_EQ(Actions(), (Lines{"=PLAY", kAddA}));
}

TEST_F(QueuePlayback, ChannelIsStreamedUnderItsPrefixAndKeepsItsBareId) {
    queue->SetIsRhapsodyChannel(true);
    AudioMedia channel = Channel("st.1");
    channel.metaData = "Tra.9";
    HoldOne(channel);
    EXPECT_TRUE(queue->PlayNextSong(true, true));
    EXPECT_EQ(Out(),
              (Lines{"message 200 QUEUE_STATE_CHANGED QUEUE_ID:INT=12 PREV_QUEUE_STATE:STRING=STOP "
                     "PREV_QUEUE_STATE_TIME:INT=0 QUEUE_STATE:STRING=PLAY",
                     "send addmed 1 \\\"rhap://1:channel-st.1\\\"",
                     MediaInfo("<source>3</source><mediaid>268435440</mediaid><mediaidV2>Tra.9</mediaidV2>"
                               "<mediatype>SONG</mediatype><mediatypeV2>RHAPSODY_CHANNEL</mediatypeV2>"
                               "<stationid>channel-st.1</stationid>")}));
    EXPECT_EQ(queue->GetSongList().front().externalId, "st.1");
    EXPECT_EQ(queue->GetSongList().front().metaData, "");
}

// In a list of several items the channel is looked up by going back, which moves.
TEST_F(QueuePlayback, ChannelInAListIsLookedUpByGoingBack) {
    HoldOne(Channel("st.1"));
    queue->AddSong(Track("Tra.2"), false, false);
    queue->AddSong(Channel("st.3"), false, false);
    EXPECT_TRUE(queue->PlayNextSong(true, false));
    EXPECT_EQ(Actions(), (Lines{"=PLAY", "addmed 1 \\\"rhap://1:channel-st.1\\\""}));
    EXPECT_TRUE(queue->PlayNextSong(true, false));
    EXPECT_TRUE(queue->PlayNextSong(true, false));
    EXPECT_EQ(Actions(), (Lines{"=PLAY", "addmed 1 \\\"rhap://1:Tra.2\\\"", "=PLAY",
                                "addmed 1 \\\"rhap://1:channel-Tra.2\\\""}));
    EXPECT_EQ(CurrentIndex(), 1u);
}

TEST_F(QueuePlayback, NothingToPlayEndsTheQueueOnlyWhenAsked) {
    GiveStream();
    Register();
    EXPECT_FALSE(queue->PlayNextSong(true, false));
    EXPECT_EQ(Out(), Lines{});
    EXPECT_FALSE(queue->PlayNextSong(true, true));
    EXPECT_EQ(Out(), (Lines{MediaInfo("<source>0</source>"),
                            "message 200 QUEUE_STATE_CHANGED QUEUE_ID:INT=12 PREV_QUEUE_STATE:STRING=STOP "
                            "PREV_QUEUE_STATE_TIME:INT=0 QUEUE_STATE:STRING=END",
                            "send eos 1"}));
}

TEST_F(QueuePlayback, ItemWithoutIdsEndsTheQueueAndIsDescribedByItsType) {
    const auto described = [this](const AudioMedia& media) {
        NewQueue();
        HoldOne(media);
        EXPECT_FALSE(queue->PlayNextSong(true, true));
        EXPECT_EQ(queue->GetQueueState(), END);
        return MediaInfos();
    };
    EXPECT_EQ(described(Song(0)),
              Lines{MediaInfo("<source>1</source><mediaid>0</mediaid><mediatype>SONG</mediatype>"
                              "<display></display>")});
    EXPECT_EQ(described(Track("")),
              Lines{MediaInfo("<source>2</source><mediaid>268435440</mediaid><mediaidV2></mediaidV2>"
                              "<mediatype>SONG</mediatype><mediatypeV2>RHAPSODY</mediatypeV2>"
                              "<display></display>")});
    AudioMedia radio = Radio(0);
    radio.extra = 9;
    EXPECT_EQ(described(radio),
              Lines{MediaInfo("<source>5</source><mediatype>SONG</mediatype>"
                              "<mediatypeV2>GENERIC_MEDIA</mediatypeV2><medSrcDev>0</medSrcDev>"
                              "<stationid></stationid><album></album><artist></artist><title></title>"
                              "<channel></channel>")});
    EXPECT_EQ(described(AudioMedia::CreateExternal(MEDIA_RESERVED, "x")),
              Lines{MediaInfo("<source>0</source>")});
    EXPECT_EQ(described(AudioMedia::CreateExternal(9, "x")), Lines{MediaInfo("<source>0</source>")});
}

} // namespace
