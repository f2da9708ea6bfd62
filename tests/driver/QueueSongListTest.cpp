// Adding, removing, replacing and pinning songs.
#include <sstream>

#include "Outputs.h"
#include "QueueFixture.h"

namespace {

using Ids = std::vector<std::uint32_t>;

class QueueSongList : public QueueFixture {
protected:
    // Songs 1, 2 and 3, nothing current, nothing pinned.
    void HoldThreeSongs() {
        queue->AddSongList(Songs({1, 2, 3}), false);
        queue->SetNextSong(kNone);
        Out();
    }
    // Turns shuffle on over songs 1, 2 and 3 in the order 1, 2, 3.
    void HoldThreeShuffled() {
        HoldThreeSongs();
        Random("1 2");
        queue->SetShuffle(true);
        queue->SetNextSong(kNone);
        Out();
    }
    void BecomeChannel() {
        queue->SetIsRhapsodyChannel(true);
        queue->AddSong(Channel("st.1"), false, false);
        Out();
    }
    void BecomeRadio() {
        queue->SetIsInternetRadio(true);
        queue->AddSong(Radio(5), false, false);
        Out();
    }
};

const Lines kInfoPublished = {"info", "oldInfo"};

// What is published, by name; any other line as it stands.
Lines Published(const Lines& lines) {
    Lines names;
    for (const std::string& line : lines) {
        std::istringstream in(line);
        std::string word;
        std::uint32_t id = 0;
        names.push_back(in >> word >> id && word == "set" ? outputs::VariableName(id) : line);
    }
    return names;
}

TEST_F(QueueSongList, FirstSongAddedIsPinned) {
    queue->AddSong(Song(1), false, false);
    EXPECT_EQ(queue->GetNextSongIndex(), 0u);
    queue->AddSong(Song(2), false, false);
    EXPECT_EQ(queue->GetNextSongIndex(), 0u);
}

TEST_F(QueueSongList, SecondSongAddedIsNotPinned) {
    queue->AddSong(Song(1), false, false);
    queue->GetNextSong();
    queue->SetNextSong(kNone);
    queue->AddSong(Song(2), false, false);
    queue->AddSong(Song(3), false, false);
    EXPECT_EQ(queue->GetNextSong().mediaId, 2u);
}

TEST_F(QueueSongList, SameSongMayStandSeveralTimes) {
    queue->AddSong(Song(1), false, false);
    queue->AddSong(Song(1), false, false);
    EXPECT_EQ(ListedIds(), (Ids{1, 1}));
}

TEST_F(QueueSongList, AddedSongPublishesTheListOnlyWhenAsked) {
    queue->AddSong(Song(1), false, false);
    EXPECT_EQ(Out(), Lines{});
    queue->AddSong(Song(2), true, false);
    EXPECT_EQ(Published(Out()), kInfoPublished);
}

TEST_F(QueueSongList, SmallListsRarelyMoveALongOne) {
    queue->AddSongList(std::vector<AudioMedia>(1600, Song(1)), false);
    int moves = 0;
    for (int i = 0; i < 100; ++i) {
        const AudioMedia* before = queue->GetSongList().data();
        queue->AddSongList(Songs({2}), false);
        moves += before == queue->GetSongList().data() ? 0 : 1;
    }
    EXPECT_EQ(moves, 1);
}

TEST_F(QueueSongList, AddedSongEndsTheLocalInput) {
    queue->SetInputFile("line1");
    EXPECT_EQ(queue->GetInputFile(), "line1");
    queue->AddSong(Song(1), false, false);
    EXPECT_EQ(queue->GetInputFile(), "");
    queue->SetInputFile("line1");
    queue->AddSongList(Songs({1}), false);
    EXPECT_EQ(queue->GetInputFile(), "");
}

TEST_F(QueueSongList, ToFrontMeansNothingWithoutShuffle) {
    HoldThreeSongs();
    queue->AddSong(Song(4), false, true);
    EXPECT_EQ(ListedIds(), (Ids{1, 2, 3, 4}));
    EXPECT_EQ(queue->GetNextSongIndex(), kNone);
}

TEST_F(QueueSongList, SongAddedToTheFrontOfAShuffledQueueIsNext) {
    HoldThreeShuffled();
    queue->GetFirstSong();
    Random("1 2 3");
    queue->AddSong(Song(4), false, true);
    EXPECT_EQ(queue->GetNextSongIndex(), 0u);
    EXPECT_EQ(queue->PeekNextSong().mediaId, 4u);
    EXPECT_EQ(WalkActiveList(), (Ids{4, 2, 3, 1}));
}

TEST_F(QueueSongList, SongAddedBehindAShuffledQueueLeavesTheCurrentOneAtTheHead) {
    HoldThreeShuffled();
    queue->GetFirstSong();
    Random("0 0 0"); // 2 1 3 4, 3 1 2 4, 4 1 2 3; then 1 comes to the head
    queue->AddSong(Song(4), false, false);
    EXPECT_EQ(queue->GetCurrentMedia(), Song(1));
    EXPECT_EQ(queue->GetNextSongIndex(), 1u);
    EXPECT_EQ(WalkActiveList(), (Ids{1, 4, 2, 3}));
}

TEST_F(QueueSongList, ChannelQueueTakesOneMoreSongButNoList) {
    BecomeChannel();
    queue->AddSong(Song(1), false, false);
    queue->AddSongList(Songs({2, 3}), false);
    queue->AddSongList(std::vector<std::uint32_t>{4});
    EXPECT_EQ(ListedIds(), (Ids{0, 1}));
    EXPECT_EQ(Out(), Lines{});
    EXPECT_EQ(Calls("Random"), 0);
}

TEST_F(QueueSongList, ChannelQueueCannotBePinnedOrReplaced) {
    BecomeChannel();
    queue->SetNextSong(std::uint32_t{7});
    queue->SetNextSong(Channel("st.1"));
    EXPECT_EQ(queue->GetNextSongIndex(), kNone);
    EXPECT_FALSE(queue->ReplaceSongList(Songs({1})));
    EXPECT_EQ(queue->GetSongList(), std::vector<AudioMedia>{Channel("st.1")});
    EXPECT_EQ(Out(), Lines{});
}

TEST_F(QueueSongList, EmptyChannelQueueTakesPinsAndLists) {
    queue->SetIsRhapsodyChannel(true);
    queue->SetNextSong(std::uint32_t{0});
    queue->AddSongList({Channel("st.1"), Channel("st.2")}, false);
    EXPECT_EQ(queue->GetSongList().size(), 2u);
    EXPECT_EQ(queue->GetNextSongIndex(), 0u);
}

TEST_F(QueueSongList, AddingNoSongsDoesNothing) {
    queue->SetInputFile("line1");
    queue->AddSongList(std::vector<AudioMedia>{}, true);
    queue->AddSongList(std::vector<std::uint32_t>{});
    EXPECT_EQ(Out(), Lines{});
    EXPECT_EQ(Calls("Random"), 0);
    EXPECT_EQ(queue->GetInputFile(), "line1");
}

TEST_F(QueueSongList, FirstOfAListAddedToAnIdleQueueIsPinned) {
    queue->AddSongList(Songs({1, 2}), false);
    EXPECT_EQ(queue->GetNextSongIndex(), 0u);
    queue->SetNextSong(kNone);
    queue->AddSongList(Songs({3, 4, 5}), false);
    EXPECT_EQ(queue->GetNextSongIndex(), 2u);
    queue->SetNextSong(kNone);
    queue->AddSongList(Ids{6, 7});
    EXPECT_EQ(queue->GetNextSongIndex(), 5u);
}

TEST_F(QueueSongList, ListAddedBehindACurrentSongOrAPinPinsNothing) {
    HoldThreeSongs();
    queue->SetNextSong(std::uint32_t{2});
    queue->AddSongList(Songs({4}), false);
    EXPECT_EQ(queue->GetNextSong(), Song(3));
    queue->AddSongList(Songs({5}), false);
    EXPECT_EQ(queue->GetNextSong(), Song(4));
}

TEST_F(QueueSongList, EveryAddedListDrawsOneNumberAndPublishesOnce) {
    queue->AddSongList(Songs({1, 2, 3}), true);
    EXPECT_EQ(Calls("Random"), 1);
    EXPECT_EQ(Published(Out()), kInfoPublished);
    queue->AddSongList(Ids{4, 5});
    EXPECT_EQ(Calls("Random"), 1);
    EXPECT_EQ(Published(Out()), kInfoPublished);
}

TEST_F(QueueSongList, ShuffledListAddedToTheFrontIsHeadedByARandomOneOfItsSongs) {
    HoldThreeShuffled();
    queue->GetFirstSong();
    // 1610612736 of 2147483647 picks the last of the three; then the order is left as it was added.
    Random("1610612736 1 2 3 4 5");
    queue->AddSongList(Songs({4, 5, 6}), true);
    EXPECT_EQ(queue->GetNextSongIndex(), 0u);
    EXPECT_EQ(WalkActiveList(), (Ids{6, 2, 3, 4, 5, 1}));
}

TEST_F(QueueSongList, PickIsCutOffTowardsTheFirst) {
    HoldThreeShuffled();
    // Just below and just at the first of two.
    Random("1073741823 1 2 3 4");
    queue->AddSongList(Songs({4, 5}), true);
    EXPECT_EQ(queue->PeekNextSong(), Song(4));
    Random("1073741824 1 2 3 4 5 6");
    queue->AddSongList(Songs({6, 7}), true);
    EXPECT_EQ(queue->PeekNextSong(), Song(7));
}

TEST_F(QueueSongList, LargestRandomNumberPicksNoSong) {
    HoldThreeShuffled();
    queue->GetFirstSong();
    queue->SetNextSong(std::uint32_t{2});
    Random("2147483647 1 2 3 4");
    queue->AddSongList(Songs({4, 5}), true);
    EXPECT_EQ(queue->GetNextSongIndex(), 2u);
    EXPECT_EQ(WalkActiveList(), (Ids{1, 2, 3, 4, 5}));
}

TEST_F(QueueSongList, ShuffledListAddedBehindKeepsTheCurrentSongAtTheHead) {
    HoldThreeShuffled();
    queue->SetNextSong(std::uint32_t{1});
    queue->GetNextSong();
    Random("0 1 2 3 4");
    queue->AddSongList(Songs({4, 5}), false);
    EXPECT_EQ(queue->GetCurrentMedia(), Song(2));
    EXPECT_EQ(WalkActiveList(), (Ids{2, 1, 3, 4, 5}));
}

TEST_F(QueueSongList, IdsAddedToAShuffledQueueGoToTheFrontOnlyWhileSomethingIsCurrent) {
    HoldThreeShuffled();
    Random("0 1 2 3");
    queue->AddSongList(Ids{4});
    EXPECT_EQ(queue->GetNextSongIndex(), 3u); // pinned by its place in the list; nothing is current
    queue->SetNextSong(std::uint32_t{0});
    queue->GetNextSong();
    Random("0 1 2 3 4");
    queue->AddSongList(Ids{5});
    EXPECT_EQ(queue->GetNextSongIndex(), 0u);
    EXPECT_EQ(queue->PeekNextSong(), Song(5));
}

TEST_F(QueueSongList, IdsBecomeDigitalSongs) {
    queue->AddSongList(Ids{8, 9});
    EXPECT_EQ(queue->GetSongList(), Songs({8, 9}));
}

TEST_F(QueueSongList, ListsOfItemsKeepTheirExtraValue) {
    AudioMedia media = Radio(5);
    media.extra = 77;
    queue->AddSongList({media}, false);
    EXPECT_EQ(queue->GetSongList().front().extra, 77u);
}

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
