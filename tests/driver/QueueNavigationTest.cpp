// Next, first and previous.
#include "QueueFixture.h"

namespace {

using Ids = std::vector<std::uint32_t>;

class QueueNavigation : public QueueFixture {
protected:
    // Songs 1 to `count`; the one at `current` is current, nothing is pinned.
    void Hold(std::uint32_t count, std::uint32_t current = kNone) {
        for (std::uint32_t id = 1; id <= count; ++id)
            queue->AddSong(Song(id), false, false);
        queue->SetNextSong(current);
        if (current != kNone)
            queue->GetNextSong();
        Out();
    }
    Lines Asserts() { return Out("assert"); }
};

TEST_F(QueueNavigation, NothingFollowsInAnEmptyList) {
    EXPECT_EQ(queue->GetNextSongIndex(), kNone);
    EXPECT_EQ(queue->PeekNextSong(), AudioMedia());
    EXPECT_EQ(queue->GetNextSong(), AudioMedia());
    EXPECT_EQ(queue->GetFirstSong(), AudioMedia());
    EXPECT_EQ(queue->GetPreviousSong(), AudioMedia());
    EXPECT_EQ(Calls("MonotonicTime"), 0);
    EXPECT_EQ(Asserts(), Lines{});
    EXPECT_EQ(CurrentIndex(), kNone);
}

TEST_F(QueueNavigation, PreviousIndexOfAnEmptyListIsAFault) {
    EXPECT_EQ(queue->GetPreviousSongIndex(), kNone);
    EXPECT_EQ(Asserts(), Lines{"assert korvel_digitalaudio/kvw/AudioQueue 402"});
}

TEST_F(QueueNavigation, AnOnlySongFollowsItselfOnRepeatAlone) {
    Hold(1, 0);
    EXPECT_EQ(queue->GetNextSongIndex(), kNone);
    EXPECT_EQ(queue->GetPreviousSongIndex(), kNone);
    queue->SetRepeat(true);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(queue->GetNextSong(), Song(1));
        EXPECT_EQ(queue->GetPreviousSong(), Song(1));
        EXPECT_EQ(CurrentIndex(), 0u);
    }
}

TEST_F(QueueNavigation, NothingFollowsAnOnlySong) {
    Hold(1, 0);
    EXPECT_EQ(queue->GetNextSong(), AudioMedia());
    EXPECT_EQ(CurrentIndex(), kNone);
    EXPECT_EQ(queue->GetCurrentMedia(), Song(1)); // what played last
}

TEST_F(QueueNavigation, SongsFollowInOrderAndEndOrBeginAgain) {
    Hold(3, 0);
    EXPECT_EQ(queue->GetNextSong(), Song(2));
    EXPECT_EQ(queue->GetNextSong(), Song(3));
    EXPECT_EQ(queue->GetNextSongIndex(), kNone);
    queue->SetRepeat(true);
    EXPECT_TRUE(queue->IsRepeatSet());
    EXPECT_EQ(queue->GetNextSongIndex(), 0u);
    EXPECT_EQ(queue->GetNextSong(), Song(1));
    EXPECT_EQ(CurrentIndex(), 0u);
}

TEST_F(QueueNavigation, ListWithNothingCurrentIsEnteredOnRepeatAlone) {
    Hold(3);
    EXPECT_EQ(queue->GetNextSongIndex(), kNone);
    EXPECT_EQ(queue->GetNextSong(), AudioMedia());
    queue->SetRepeat(true);
    EXPECT_EQ(queue->GetNextSongIndex(), 0u);
}

TEST_F(QueueNavigation, PinIsTakenOnceAndPeekingLeavesIt) {
    Hold(3, 0);
    queue->SetNextSong(std::uint32_t{2});
    EXPECT_EQ(queue->GetNextSongIndex(), 2u);
    EXPECT_EQ(queue->PeekNextSong(), Song(3));
    EXPECT_EQ(queue->GetCurrentMedia(), Song(1));
    EXPECT_EQ(CurrentIndex(), 0u);
    EXPECT_EQ(queue->GetNextSong(), Song(3));
    EXPECT_EQ(queue->GetNextSongIndex(), kNone);
}

TEST_F(QueueNavigation, PinHoldsAlsoForAnOnlySong) {
    Hold(1, 0);
    queue->SetNextSong(std::uint32_t{0});
    EXPECT_EQ(queue->GetNextSongIndex(), 0u);
}

TEST_F(QueueNavigation, FirstAndPreviousUseUpThePin) {
    Hold(3, 1);
    queue->SetNextSong(std::uint32_t{2});
    EXPECT_EQ(queue->GetFirstSong(), Song(1));
    EXPECT_EQ(queue->GetNextSong(), Song(2));
    queue->SetNextSong(std::uint32_t{2});
    EXPECT_EQ(queue->GetPreviousSong(), Song(1));
    EXPECT_EQ(queue->GetNextSong(), Song(2));
}

TEST_F(QueueNavigation, PinPastTheEndIsNoSong) {
    Hold(3, 0);
    queue->SetNextSong(std::uint32_t{3});
    EXPECT_EQ(queue->GetNextSongIndex(), 3u);
    try {
        queue->PeekNextSong();
        ADD_FAILURE() << "a song";
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "vector::_M_range_check");
    }
    EXPECT_EQ(CurrentIndex(), 0u);
    EXPECT_THROW(queue->GetNextSong(), std::out_of_range);
    EXPECT_EQ(CurrentIndex(), 3u); // as it stood when it failed
    EXPECT_EQ(queue->GetCurrentMedia(), Song(1));
    EXPECT_EQ(queue->GetNextSongIndex(), kNone);
}

TEST_F(QueueNavigation, PreviousFromPastTheListIsTriedAndFails) {
    Hold(3, 0);
    queue->SetNextSong(std::uint32_t{9});
    EXPECT_THROW(queue->GetNextSong(), std::out_of_range);
    EXPECT_THROW(queue->GetPreviousSong(), std::out_of_range);
    EXPECT_EQ(CurrentIndex(), 8u);
}

TEST_F(QueueNavigation, PreviousFromFarPastTheListIsAFault) {
    Hold(3, 0);
    queue->SetNextSong(std::uint32_t{4097});
    EXPECT_THROW(queue->GetNextSong(), std::out_of_range);
    EXPECT_EQ(queue->GetPreviousSong(), AudioMedia());
    EXPECT_EQ(Asserts().size(), 1u);
    EXPECT_EQ(CurrentIndex(), kNone);
}

TEST_F(QueueNavigation, PreviousGoesBackWithinFiveSeconds) {
    Hold(3, 2);
    EXPECT_EQ(queue->GetPreviousSong(), Song(2));
    Advance(5000);
    EXPECT_EQ(queue->GetPreviousSong(), Song(1));
}

TEST_F(QueueNavigation, LaterPreviousStartsTheCurrentSongAgain) {
    Hold(3, 2);
    Advance(5001);
    EXPECT_EQ(queue->GetPreviousSong(), Song(3));
    EXPECT_EQ(queue->GetPreviousSong(), Song(2)); // the restart counts as a move
}

TEST_F(QueueNavigation, LaterPreviousUsesUpThePinToo) {
    Hold(3, 0);
    queue->SetNextSong(std::uint32_t{2});
    Advance(5001);
    EXPECT_EQ(queue->GetPreviousSong(), Song(1));
    EXPECT_EQ(queue->GetNextSong(), Song(2));
}

TEST_F(QueueNavigation, LaterPreviousGoesBackWhenToldToSkipAlways) {
    Hold(3, 2);
    queue->SetAlwaysSkipPrev(true);
    Advance(60000);
    EXPECT_EQ(queue->GetPreviousSong(), Song(2));
    queue->SetAlwaysSkipPrev(false);
    Advance(60000);
    EXPECT_EQ(queue->GetPreviousSong(), Song(2));
}

TEST_F(QueueNavigation, OnlySongStartsAgainLater) {
    Hold(1, 0);
    Advance(5001);
    EXPECT_EQ(queue->GetPreviousSong(), Song(1));
    EXPECT_EQ(queue->GetPreviousSong(), AudioMedia());
}

TEST_F(QueueNavigation, LookingAtWhatFollowsCountsAsAMove) {
    Hold(3, 2);
    Advance(5001);
    queue->PeekNextSong();
    EXPECT_EQ(queue->GetPreviousSong(), Song(2));
    Advance(5001);
    queue->GetFirstSong();
    queue->SetNextSong(std::uint32_t{2});
    queue->GetNextSong();
    EXPECT_EQ(queue->GetPreviousSong(), Song(2));
}

TEST_F(QueueNavigation, PreviousAtTheFirstSongStaysOrWraps) {
    Hold(3, 0);
    EXPECT_EQ(queue->GetPreviousSong(), Song(1));
    EXPECT_EQ(queue->GetPreviousSong(), Song(1));
    queue->SetRepeat(true);
    EXPECT_EQ(queue->GetPreviousSong(), Song(3));
}

TEST_F(QueueNavigation, PreviousWithNothingCurrentIsTheLastSong) {
    for (const bool repeat : {false, true}) {
        NewQueue();
        Hold(3);
        queue->SetRepeat(repeat);
        EXPECT_EQ(queue->GetPreviousSong(), Song(3));
    }
}

TEST_F(QueueNavigation, PreviousWithNothingCurrentDoesNotRestart) {
    Hold(3, 2);
    queue->GetNextSong();
    ASSERT_EQ(CurrentIndex(), kNone);
    Advance(60000);
    EXPECT_EQ(queue->GetPreviousSong(), Song(3));
}

TEST_F(QueueNavigation, ClockThatWrapsStillTellsFiveSeconds) {
    Advance(4294867294); // the monotonic clock stands at 4294967294
    Hold(3, 2);
    Advance(5001);
    EXPECT_EQ(queue->GetPreviousSong(), Song(3));
}

// At its last millisecond before the wrap the clock reads what stands for "never".
TEST_F(QueueNavigation, MoveAtTheClocksLastMillisecondIsForgotten) {
    Advance(4294867295);
    Hold(3, 2);
    Advance(5001);
    EXPECT_EQ(queue->GetPreviousSong(), Song(2));
}

TEST_F(QueueNavigation, FirstSongMovesToTheTop) {
    Hold(3, 2);
    EXPECT_EQ(queue->GetFirstSong(), Song(1));
    EXPECT_EQ(queue->GetCurrentMedia(), Song(1));
    EXPECT_EQ(CurrentIndex(), 0u);
}

TEST_F(QueueNavigation, GoingToTheFirstSongCountsAsAMove) {
    Hold(3, 2);
    queue->SetRepeat(true);
    Advance(6000);
    queue->GetFirstSong();
    EXPECT_EQ(queue->GetPreviousSong(), Song(3)); // back, not to the start of song 1
}

TEST_F(QueueNavigation, SingleStreamQueueStaysOnItsFirstItem) {
    queue->SetIsInternetRadio(true);
    queue->AddSong(Radio(5), false, false);
    queue->AddSong(Radio(6), false, false);
    Calls("");
    EXPECT_EQ(queue->PeekNextSong(), Radio(5));
    EXPECT_EQ(queue->GetNextSong(), Radio(5));
    EXPECT_EQ(queue->GetPreviousSong(), Radio(5));
    EXPECT_EQ(CurrentIndex(), kNone);
    EXPECT_EQ(Calls("MonotonicTime"), 0);
    // Only asking for the first one makes it the current media.
    EXPECT_EQ(queue->GetStatusData()->FindChild("song")->GetAttribute("source"), "5");
    EXPECT_EQ(queue->GetStatusDataVersion132()->FindChild("item")->GetText(), "0");
    EXPECT_EQ(queue->GetFirstSong(), Radio(5));
    EXPECT_EQ(queue->GetStatusDataVersion132()->FindChild("item")->GetText(), "268435440");
    EXPECT_EQ(CurrentIndex(), kNone);
    EXPECT_EQ(queue->GetNextSongIndex(), 0u); // the pin of the first added song is still there
}

TEST_F(QueueNavigation, IndexThatReads4095StartsAgainOnRepeat) {
    std::vector<AudioMedia> many(4097, Song(1));
    queue->AddSongList(many, false);
    queue->SetNextSong(std::uint32_t{4094});
    queue->GetNextSong();
    EXPECT_EQ(queue->GetNextSongIndex(), kNone);
    queue->SetRepeat(true);
    EXPECT_EQ(queue->GetNextSongIndex(), 0u);
}

} // namespace
