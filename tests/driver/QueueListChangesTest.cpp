// Removing, replacing, clearing and pinning songs.
#include "SongListFixture.h"

namespace {

TEST_F(QueueSongList, RemovingASongRemovesAllItsPlaces) {
    queue->AddSongList(Songs({1, 2, 1, 3, 1}), false);
    queue->RemoveSong(Song(1));
    EXPECT_EQ(ListedIds(), (Ids{2, 3}));
}

TEST_F(QueueSongList, RemovingClearsThePinAndKeepsTheCurrentIndex) {
    HoldThreeSongs();
    queue->SetNextSong(std::uint32_t{2});
    queue->GetNextSong();
    queue->SetNextSong(std::uint32_t{0});
    queue->RemoveSong(Song(3));
    EXPECT_EQ(CurrentIndex(), 2u);
    EXPECT_EQ(queue->GetNextSongIndex(), kNone);
    EXPECT_EQ(queue->GetCurrentMedia(), Song(3));
}

TEST_F(QueueSongList, RemovingWhatIsNotThereStillClearsThePinAndPublishes) {
    HoldThreeSongs();
    queue->SetNextSong(std::uint32_t{1});
    queue->RemoveSong(Song(9));
    EXPECT_EQ(queue->GetNextSongIndex(), kNone);
    EXPECT_EQ(Published(Out()), kInfoPublished);
}

TEST_F(QueueSongList, RemovingWhatIsNotThereStillShufflesAgain) {
    HoldThreeShuffled();
    queue->GetFirstSong();
    Calls("");
    queue->RemoveSong(Song(9));
    EXPECT_EQ(Calls("Random"), 2);
}

TEST_F(QueueSongList, RemovingTheLastSongStopsTheMediaAndKeepsTheQueue) {
    GiveStream();
    queue->AddSong(Song(1), false, false);
    queue->RemoveSong(Song(1));
    const Lines out = Out();
    EXPECT_EQ(out.front(), "send remmed 1");
    EXPECT_EQ(Published(Lines(out.begin() + 1, out.end())), kInfoPublished);
}

TEST_F(QueueSongList, RemovingOneOfTwoLeavesTheMediaAlone) {
    GiveStream();
    queue->AddSongList(Songs({1, 2}), false);
    Out();
    queue->RemoveSong(Song(1));
    EXPECT_EQ(Sent(), Lines{});
}

TEST_F(QueueSongList, RemovingTheStationEndsRadioMode) {
    GiveStream();
    BecomeRadio();
    queue->RemoveSong(Radio(5));
    EXPECT_FALSE(queue->IsInternetRadio());
    // Once for the song, once because leaving the mode clears the queue.
    EXPECT_EQ(Sent(), (Lines{"send remmed 1", "send remmed 1"}));
}

TEST_F(QueueSongList, RemovingTheChannelEndsChannelMode) {
    GiveStream();
    BecomeChannel();
    queue->RemoveSong(Channel("st.1"));
    EXPECT_FALSE(queue->IsRhapsodyChannel());
    EXPECT_EQ(Sent(), Lines{"send remmed 1"});
}

// The argument is an item of the very list.
TEST_F(QueueSongList, ItemsOfTheListItselfCanBeRemovedAddedAndPinned) {
    BecomeChannel();
    queue->RemoveSong(queue->GetCurrentMedia());
    EXPECT_TRUE(queue->IsSongListEmpty());
    EXPECT_FALSE(queue->IsRhapsodyChannel());

    queue->AddSongList(Songs({1, 2, 1, 2}), false);
    queue->RemoveSong(queue->GetSongList()[1]);
    EXPECT_EQ(ListedIds(), (Ids{1, 1}));
    queue->AddSong(queue->GetSongList().front(), false, true);
    EXPECT_EQ(ListedIds(), (Ids{1, 1, 1}));
    queue->AddSongList(queue->GetSongList(), true);
    EXPECT_EQ(ListedIds(), (Ids{1, 1, 1, 1, 1, 1}));
    queue->SetShuffle(true);
    queue->ShuffleQueue(queue->GetSongList().back());
    EXPECT_TRUE(queue->ReplaceSongList(queue->GetSongList()));
    EXPECT_EQ(ListedIds(), (Ids{1, 1, 1, 1, 1, 1}));
    queue->RemoveSong(queue->GetSongList().front());
    EXPECT_TRUE(queue->IsSongListEmpty());
}

TEST_F(QueueSongList, CurrentRadioItemCanBeRemovedByReference) {
    BecomeRadio();
    queue->RemoveSong(queue->GetCurrentMedia());
    EXPECT_TRUE(queue->IsSongListEmpty());
    EXPECT_FALSE(queue->IsInternetRadio());
}

TEST_F(QueueSongList, ReplacingKeepsThePlaceOfTheCurrentSong) {
    HoldThreeSongs();
    queue->PlayFirstSong();
    queue->SetNextSong(std::uint32_t{2});
    Out();
    EXPECT_FALSE(queue->ReplaceSongList(Songs({3, 2, 1, 1})));
    EXPECT_EQ(ListedIds(), (Ids{3, 2, 1, 1}));
    EXPECT_EQ(CurrentIndex(), 2u);
    EXPECT_EQ(queue->GetNextSongIndex(), 3u);
    EXPECT_EQ(Published(Out()), kInfoPublished);
}

TEST_F(QueueSongList, ReplacingAsksForAFreshStartUnlessTheCurrentSongGoesOn) {
    HoldThreeSongs();
    queue->PlayFirstSong();
    EXPECT_FALSE(queue->ReplaceSongList(Songs({2, 1})));
    queue->SetQueueState(PAUSE);
    EXPECT_FALSE(queue->ReplaceSongList(Songs({1, 2})));
    queue->ChangeQueueState(STOP);
    EXPECT_TRUE(queue->ReplaceSongList(Songs({1, 2})));
    queue->ChangeQueueState(END);
    EXPECT_TRUE(queue->ReplaceSongList(Songs({1, 2})));
    queue->ChangeQueueState(PLAY);
    EXPECT_TRUE(queue->ReplaceSongList(Songs({2, 3})));
    EXPECT_EQ(CurrentIndex(), kNone);
}

TEST_F(QueueSongList, ReplacingAShuffledListPinsARandomSongAtTheHead) {
    HoldThreeShuffled();
    queue->GetFirstSong();
    Random("1610612736 1 2"); // the third of three, in the order given
    queue->ReplaceSongList(Songs({7, 8, 9}));
    EXPECT_EQ(queue->GetNextSongIndex(), 0u);
    EXPECT_EQ(WalkActiveList(), (Ids{9, 8, 7}));
}

TEST_F(QueueSongList, ReplacingPicksTheLastSongForTheLargestRandomNumber) {
    HoldThreeShuffled();
    Random("2147483647 1 2");
    queue->ReplaceSongList(Songs({7, 8, 9}));
    EXPECT_EQ(queue->PeekNextSong(), Song(9));
}

TEST_F(QueueSongList, ReplacingWithNothingShufflesNothing) {
    HoldThreeShuffled();
    queue->GetFirstSong();
    Calls("");
    EXPECT_TRUE(queue->ReplaceSongList({}));
    EXPECT_EQ(Calls("Random"), 1); // the pick, of nothing
    EXPECT_TRUE(queue->IsSongListEmpty());
    EXPECT_EQ(queue->GetNextSong(), AudioMedia());
    queue->AddSong(Song(2), false, false);
    EXPECT_EQ(queue->GetNextSongIndex(), kNone); // the old order is forgotten
}

TEST_F(QueueSongList, ClearingLeavesNothingCurrentOrPinned) {
    HoldThreeSongs();
    queue->PlayFirstSong();
    queue->SetNextSong(std::uint32_t{2});
    Out();
    queue->ClearSongs();
    EXPECT_EQ(Published(Out()), kInfoPublished);
    EXPECT_TRUE(queue->IsSongListEmpty());
    EXPECT_EQ(CurrentIndex(), kNone);
    EXPECT_EQ(queue->GetCurrentMedia().type, MEDIA_NONE);
    EXPECT_EQ(queue->GetCurrentMedia().mediaId, 1u); // the type alone marks it empty
    queue->ReplaceSongList(Songs({1, 2}));
    EXPECT_EQ(queue->GetNextSongIndex(), kNone);
}

TEST_F(QueueSongList, ClearingARadioQueueStopsTheStreamAndEndsTheModeQuietly) {
    GiveStream();
    BecomeRadio();
    Register();
    queue->ClearSongs();
    const Lines out = Out();
    EXPECT_EQ(out.front(), "send remmed 1");
    EXPECT_EQ(Published(Lines(out.begin() + 1, out.end())), kInfoPublished);
    EXPECT_FALSE(queue->IsInternetRadio());
    EXPECT_EQ(queue->GetNotificationDevice(), kListener);
}

TEST_F(QueueSongList, ClearingAChannelQueueEndsTheModeWithoutALine) {
    GiveStream();
    BecomeChannel();
    queue->ClearSongs();
    EXPECT_EQ(Sent(), Lines{});
    EXPECT_FALSE(queue->IsRhapsodyChannel());
}

TEST_F(QueueSongList, ClearingForgetsTheShuffledOrderToo) {
    HoldThreeShuffled();
    queue->GetFirstSong();
    queue->ClearSongs();
    queue->SetShuffle(false);
    EXPECT_EQ(CurrentIndex(), kNone);
    EXPECT_TRUE(queue->IsSongListEmpty());

    // A song of the old order is not looked for there.
    HoldThreeShuffled();
    queue->ClearSongs();
    queue->AddSong(Song(2), false, false);
    EXPECT_EQ(queue->GetNextSongIndex(), kNone);
}

TEST_F(QueueSongList, PinnedIndexIsNotChecked) {
    HoldThreeSongs();
    queue->SetNextSong(std::uint32_t{9999});
    EXPECT_EQ(queue->GetNextSongIndex(), 9999u);
    EXPECT_THROW(queue->GetNextSong(), std::out_of_range);
}

TEST_F(QueueSongList, PinnedItemIsTheFirstEqualOneOfTheActiveList) {
    queue->AddSongList(Songs({1, 2, 3, 2}), false);
    queue->SetNextSong(Song(2));
    EXPECT_EQ(queue->GetNextSongIndex(), 1u);
    queue->SetNextSong(Song(9));
    EXPECT_EQ(queue->GetNextSongIndex(), 1u);
    queue->SetNextSong(kNone);
    Random("0 0 0"); // 2 1 2 3
    queue->SetShuffle(true);
    queue->SetNextSong(Song(1));
    EXPECT_EQ(queue->GetNextSongIndex(), 1u);
}

TEST_F(QueueSongList, RemovingTheCurrentMediaLeavesTheList) {
    GiveStream();
    HoldThreeSongs();
    queue->PlayFirstSong();
    Out();
    queue->RemoveCurrentSong();
    EXPECT_EQ(Out(), Lines{"send remmed 1"});
    EXPECT_EQ(ListedIds(), (Ids{1, 2, 3}));
}

TEST_F(QueueSongList, SingleStreamQueueHasItsFirstItemCurrent) {
    queue->SetIsInternetRadio(true);
    EXPECT_EQ(queue->GetCurrentMedia(), AudioMedia());
    queue->AddSong(Radio(5), false, false);
    EXPECT_EQ(queue->GetCurrentMedia(), Radio(5));
    EXPECT_EQ(&queue->GetCurrentMedia(), &queue->GetSongList().front());
    queue->SetIsRhapsodyChannel(true);
    queue->AddSong(Channel("st.1"), false, false);
    EXPECT_EQ(&queue->GetCurrentMedia(), &queue->GetSongList().front());
}

} // namespace
