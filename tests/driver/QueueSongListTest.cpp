// Adding songs.
#include "SongListFixture.h"

namespace {

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

} // namespace
