// The shuffled order and what it does to the current song.
#include "QueueFixture.h"

namespace {

using Ids = std::vector<std::uint32_t>;

class QueueShuffle : public QueueFixture {
protected:
    // Songs 1 to 4 with song `current` playing, shuffled in the order given by `numbers`.
    void HoldFour(std::uint32_t current = 0) {
        queue->AddSongList(Songs({1, 2, 3, 4}), false);
        queue->SetNextSong(kNone);
        if (current != 0) {
            queue->SetNextSong(current - 1);
            queue->GetNextSong();
        }
        Calls("");
    }
    std::string PublishedIndex() {
        return std::string(queue->GetStatusData()->FindChild("index")->GetText());
    }
};

TEST_F(QueueShuffle, OrderFollowsTheRandomNumbers) {
    HoldFour();
    // j = r mod (i + 1): 0, then 7 mod 3 = 1, then 6 mod 4 = 2.
    Random("2 7 6"); // 2 1 3 4, 2 3 1 4, 2 3 4 1
    queue->SetShuffle(true);
    EXPECT_EQ(Calls("Random"), 3);
    EXPECT_TRUE(queue->IsShuffleSet());
    EXPECT_EQ(WalkActiveList(), (Ids{2, 3, 4, 1}));
    EXPECT_EQ(ListedIds(), (Ids{1, 2, 3, 4}));
}

TEST_F(QueueShuffle, FewerThanTwoSongsDrawNothing) {
    queue->_ShuffleQueue();
    queue->AddSong(Song(1), false, false);
    queue->_ShuffleQueue();
    EXPECT_EQ(Calls("Random"), 0);
}

TEST_F(QueueShuffle, WithNothingCurrentNothingBecomesCurrentOrPinned) {
    HoldFour();
    queue->SetShuffle(true);
    EXPECT_EQ(queue->GetNextSongIndex(), kNone);
    EXPECT_EQ(queue->GetCurrentMedia().type, MEDIA_NONE);
}

TEST_F(QueueShuffle, CurrentSongHeadsTheNewOrder) {
    HoldFour(3);
    Random("1 2 3");
    queue->SetShuffle(true);
    EXPECT_EQ(queue->GetCurrentMedia(), Song(3));
    EXPECT_EQ(queue->GetNextSongIndex(), 1u);
    EXPECT_EQ(PublishedIndex(), "2"); // its place in the song list
    EXPECT_EQ(WalkActiveList(), (Ids{3, 2, 1, 4}));
}

TEST_F(QueueShuffle, OnAndOffAgainLeavesTheSongAtItsPlace) {
    HoldFour(3);
    queue->SetShuffle(true);
    queue->SetShuffle(false);
    EXPECT_FALSE(queue->IsShuffleSet());
    EXPECT_EQ(queue->GetCurrentMedia(), Song(3));
    EXPECT_EQ(CurrentIndex(), 2u);
    EXPECT_EQ(queue->GetNextSong(), Song(4));
}

TEST_F(QueueShuffle, TurningOffKeepsTheNumberOfThePin) {
    HoldFour(3);
    Random("0 0 0");
    queue->SetShuffle(true);
    queue->SetNextSong(std::uint32_t{1});
    queue->SetShuffle(false);
    EXPECT_EQ(queue->GetNextSongIndex(), 1u);
    EXPECT_EQ(queue->PeekNextSong(), Song(2));
}

TEST_F(QueueShuffle, SettingWhatIsSetChangesNothing) {
    HoldFour(3);
    queue->SetShuffle(false);
    EXPECT_EQ(CurrentIndex(), 2u);
    Random("1 2 3"); // song 3 at the head
    queue->SetShuffle(true);
    Calls("");
    queue->SetShuffle(true);
    EXPECT_EQ(Calls("Random"), 0);
    EXPECT_EQ(queue->GetNextSongIndex(), 1u);
    // Off again, the old order still lies there and moves nothing.
    queue->SetShuffle(false);
    queue->SetShuffle(false);
    EXPECT_EQ(CurrentIndex(), 2u);
}

TEST_F(QueueShuffle, TurningOffWithNothingCurrentKeepsIt) {
    HoldFour();
    queue->SetShuffle(true);
    queue->SetShuffle(false);
    EXPECT_EQ(CurrentIndex(), kNone);
}

TEST_F(QueueShuffle, TurningOffPastTheEndIsStoredAllTheSame) {
    HoldFour(1);
    queue->SetShuffle(true);
    queue->SetNextSong(std::uint32_t{9});
    EXPECT_THROW(queue->GetNextSong(), std::out_of_range);
    queue->SetShuffle(false);
    EXPECT_FALSE(queue->IsShuffleSet());
    EXPECT_EQ(CurrentIndex(), 9u);
}

TEST_F(QueueShuffle, TurningOnPastTheEndIsStoredAllTheSame) {
    HoldFour(1);
    queue->SetNextSong(std::uint32_t{9});
    EXPECT_THROW(queue->GetNextSong(), std::out_of_range);
    queue->SetShuffle(true); // the current media is still song 1, which comes to the head
    EXPECT_EQ(queue->GetCurrentMedia(), Song(1));
    EXPECT_EQ(queue->GetNextSongIndex(), 1u);

    NewQueue();
    HoldFour(4);
    queue->RemoveSong(Song(4));
    queue->RemoveSong(Song(3));
    queue->RemoveSong(Song(2));
    queue->RemoveSong(Song(1));
    queue->SetShuffle(true); // the index is left over from song 4
    EXPECT_TRUE(queue->IsShuffleSet());
    EXPECT_EQ(queue->GetCurrentMedia(), Song(4));

    NewQueue();
    HoldFour(4);
    queue->RemoveSong(Song(4));
    queue->SetNextSong(std::uint32_t{9});
    queue->SetShuffle(true); // the pin is used up and finds nothing
    EXPECT_TRUE(queue->IsShuffleSet());
    EXPECT_EQ(queue->GetCurrentMedia(), Song(4));
    EXPECT_EQ(queue->PeekNextSong(), AudioMedia());
}

// While the flag is still off, the way to the head goes through the song list.
TEST_F(QueueShuffle, TurningOnWithTheCurrentSongGoneMovesOnInTheSongList) {
    HoldFour(1);
    queue->RemoveSong(Song(1)); // 2 3 4, current index 0
    Random("0 0");              // 3 2 4, then 4 2 3
    queue->SetShuffle(true);
    // The song after index 0 in the song list is at 1; the shuffled list has song 2 there.
    EXPECT_EQ(queue->GetCurrentMedia(), Song(2));
    EXPECT_EQ(queue->GetNextSongIndex(), 2u);
}

TEST_F(QueueShuffle, GivenSongHeadsAFreshOrderAndIsPinned) {
    HoldFour(1);
    queue->SetShuffle(true);
    Random("1 2 3");
    queue->ShuffleQueue(Song(3));
    EXPECT_EQ(queue->GetNextSongIndex(), 0u);
    EXPECT_EQ(queue->GetCurrentMedia(), Song(1));
    EXPECT_EQ(WalkActiveList(), (Ids{3, 2, 1, 4}));
}

TEST_F(QueueShuffle, SongThatIsNotThereLeavesThePin) {
    HoldFour(1);
    queue->SetShuffle(true);
    queue->SetNextSong(std::uint32_t{3});
    Random("0 0 0"); // 2 1 3 4, 3 1 2 4, 4 1 2 3
    queue->ShuffleQueue(Song(9));
    EXPECT_EQ(queue->GetNextSongIndex(), 3u);
    EXPECT_EQ(WalkActiveList(), (Ids{4, 1, 2, 3}));
}

TEST_F(QueueShuffle, MediaIdIsFoundWhateverTheTypeOfItsItem) {
    queue->AddSongList({Song(1), Song(2), Radio(7), Song(7)}, false);
    queue->SetShuffle(true);
    Random("1 2 3");
    queue->ShuffleQueue(std::uint32_t{7});
    EXPECT_EQ(queue->GetNextSongIndex(), 0u);
    EXPECT_EQ(queue->PeekNextSong(), Radio(7));
    queue->SetNextSong(std::uint32_t{3});
    Random("0 0 0"); // 2 1 7 7, 7 1 2 7, 7 1 2 7: the song is now first, the station last
    queue->ShuffleQueue(std::uint32_t{99});
    EXPECT_EQ(queue->PeekNextSong(), Radio(7));
    EXPECT_EQ(WalkActiveList(), (Ids{7, 1, 2, 7}));
}

TEST_F(QueueShuffle, ChannelQueueIsShuffledWithoutAPin) {
    queue->SetIsRhapsodyChannel(true);
    queue->AddSong(Channel("st.1"), false, false);
    queue->AddSong(Song(2), false, false);
    queue->ShuffleQueue(Song(2));
    queue->ShuffleQueue(std::uint32_t{2});
    EXPECT_EQ(queue->GetNextSongIndex(), kNone);
}

TEST_F(QueueShuffle, SongThatEndedHeadsTheNextPassOnRepeat) {
    HoldFour(1);
    queue->SetShuffle(true);
    queue->SetRepeat(true);
    for (int i = 0; i < 3; ++i)
        queue->GetNextSong();
    const AudioMedia last = queue->GetCurrentMedia();
    Calls("");
    EXPECT_EQ(queue->GetNextSong(), last);
    EXPECT_EQ(Calls("Random"), 3);
    EXPECT_EQ(queue->GetCurrentMedia(), last);
    EXPECT_FALSE(queue->GetNextSong() == last);
}

TEST_F(QueueShuffle, WithoutRepeatTheShuffledOrderEnds) {
    HoldFour(1);
    queue->SetShuffle(true);
    for (int i = 0; i < 3; ++i)
        queue->GetNextSong();
    Calls("");
    EXPECT_EQ(queue->GetNextSong(), AudioMedia());
    EXPECT_EQ(Calls("Random"), 0);
}

TEST_F(QueueShuffle, OneWrapShufflesOnlyOnce) {
    HoldFour(1);
    queue->SetRepeat(true);
    queue->SetShuffle(true);
    Calls("");
    // Sent to the last song right after the order was made: it still counts as fresh.
    queue->SetNextSong(std::uint32_t{3});
    queue->GetNextSong();
    queue->GetNextSong();
    EXPECT_EQ(Calls("Random"), 0);
    // One step inside the list makes it stale.
    queue->GetNextSong();
    queue->SetNextSong(std::uint32_t{3});
    queue->GetNextSong();
    queue->GetNextSong();
    EXPECT_EQ(Calls("Random"), 3);
}

TEST_F(QueueShuffle, LookingPastTheEndShufflesToo) {
    HoldFour(1);
    queue->SetShuffle(true);
    queue->SetRepeat(true);
    for (int i = 0; i < 3; ++i)
        queue->GetNextSong();
    const AudioMedia last = queue->GetCurrentMedia();
    Calls("");
    EXPECT_EQ(queue->PeekNextSong(), last);
    EXPECT_EQ(Calls("Random"), 3);
    queue->PeekNextSong();
    EXPECT_EQ(Calls("Random"), 0);
}

TEST_F(QueueShuffle, ShufflingMovesOnWhenTheCurrentSongLeft) {
    HoldFour(1);
    queue->SetShuffle(true);
    queue->GetNextSong();
    const AudioMedia gone = queue->GetCurrentMedia();
    Random("1 2");
    queue->RemoveSong(gone); // at index 1: the new order's third is next
    std::vector<AudioMedia> left = queue->GetSongList();
    EXPECT_EQ(queue->GetCurrentMedia(), left[2]);
}

} // namespace
