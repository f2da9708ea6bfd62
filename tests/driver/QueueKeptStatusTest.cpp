// Status elements are kept while they are true, and no longer.
#include "QueueFixture.h"

namespace {

class QueueKeptStatus : public QueueFixture {
protected:
    QueueKeptStatus() {
        queue->AddSongList(Songs({1, 2, 3}), false);
        queue->GetNextSong();
        queue->AddRoomClient(7, "10.0.0.7", 6200, 1);
        Out();
    }

    std::string Status() { return queue->GetStatusData()->ToText(); }
    std::string Status132() { return queue->GetStatusDataVersion132()->ToText(); }
    std::string RoomMap() { return queue->GetRoomMapData()->ToText(); }

    // Which of the three elements `change` changes: "S" the status, "O" the older one, "M" the room map's.
    std::string ChangedBy(const std::function<void()>& change) {
        const auto status = queue->GetStatusData();
        const auto status132 = queue->GetStatusDataVersion132();
        const auto roomMap = queue->GetRoomMapData();
        change();
        std::string changed;
        if (status->ToText() != Status())
            changed += 'S';
        if (status132->ToText() != Status132())
            changed += 'O';
        if (roomMap->ToText() != RoomMap())
            changed += 'M';
        return changed;
    }
};

TEST_F(QueueKeptStatus, AnUnchangedQueueShowsTheSameElements) {
    const auto status = queue->GetStatusData();
    const auto status132 = queue->GetStatusDataVersion132();
    const auto roomMap = queue->GetRoomMapData();
    Advance(1000);
    queue->UpdateInfoVariable();
    EXPECT_EQ(queue->GetStatusData().get(), status.get());
    EXPECT_EQ(queue->GetStatusDataVersion132().get(), status132.get());
    EXPECT_EQ(queue->GetRoomMapData().get(), roomMap.get());
}

TEST_F(QueueKeptStatus, RoomMapHoldsTheStatusAndTheEndpoints) {
    EXPECT_EQ(RoomMap(), "<audioQueueInfo>" + Status() +
                             "<roomInfo roomId=\"7\" ip=\"10.0.0.7\" port=\"6200\" channel=\"1\">"
                             "</roomInfo></audioQueueInfo>");
}

TEST_F(QueueKeptStatus, EveryChangeShowsAtOnce) {
    EXPECT_EQ(ChangedBy([&] { Run("name 34 Attic"); }), "SOM");
    EXPECT_EQ(ChangedBy([&] { queue->ChangeQueueState(PAUSE); }), "SOM");
    EXPECT_EQ(ChangedBy([&] { queue->GetNextSong(); }), "SOM");
    EXPECT_EQ(ChangedBy([&] { queue->SetNextSong(std::uint32_t{0}); }), "SM");
    EXPECT_EQ(ChangedBy([&] { queue->AddRoomClient(8); }), "SOM");
    EXPECT_EQ(ChangedBy([&] { queue->AddRoomClient(8, "10.0.0.8", 6200, 1); }), "M");
    EXPECT_EQ(ChangedBy([&] { queue->AddRoomClient(8, "10.0.0.8", 6200, 2); }), "M");
    EXPECT_EQ(ChangedBy([&] { queue->RemoveRoomClient(7); }), "SOM");
    EXPECT_EQ(ChangedBy([&] { queue->ClearSongs(); }), "SOM");
}

TEST_F(QueueKeptStatus, ChangesOfTheListShowAtOnce) {
    EXPECT_EQ(ChangedBy([&] { queue->RemoveSong(Song(2)); }), "SM"); // song 3 takes its place
    queue->GetNextSong();                                            // the last one
    EXPECT_EQ(ChangedBy([&] { queue->AddSong(Song(4), false, false); }), "SM");
    EXPECT_EQ(ChangedBy([&] { queue->RemoveSong(Song(4)); }), "SM");
    EXPECT_EQ(ChangedBy([&] { queue->SetRepeat(true); }), "SM");
    EXPECT_EQ(ChangedBy([&] { queue->ReplaceSongList(Songs({4, 3})); }), "SM");
}

TEST_F(QueueKeptStatus, OtherOrdersShowAtOnce) {
    NewQueue();
    queue->AddSongList(Songs({1, 2, 3}), false);
    // Nothing is current: in each order the first song comes next, in the same place of the same list.
    Random("1 2"); // 1 2 3
    EXPECT_EQ(ChangedBy([&] { queue->SetShuffle(true); }), "SM");
    EXPECT_EQ(ChangedBy([&] {
                  queue->SetShuffle(false);
                  Random("0 0"); // 3 1 2
                  queue->SetShuffle(true);
              }),
              "SM");
    EXPECT_EQ(ChangedBy([&] { queue->ShuffleQueue(Song(2)); }), "SM");
}

TEST_F(QueueKeptStatus, TextOfAStreamShowsAtOnce) {
    queue->SetIsInternetRadio(true);
    queue->AddSong(Radio(5), false, false);
    EXPECT_EQ(ChangedBy([&] { queue->UpdateCurrentSongMetaData("Ann"); }), "SM"); // in what comes next
    queue->GetFirstSong();
    EXPECT_EQ(ChangedBy([&] { queue->UpdateCurrentSongMetaData("Ben"); }), "SM");
}

TEST_F(QueueKeptStatus, ModeShowsAtOnce) {
    queue->ClearSongs();
    EXPECT_EQ(ChangedBy([&] { queue->SetIsInternetRadio(true); }), "SM");
}

TEST_F(QueueKeptStatus, PlaceInAShuffledListFollowsTheSongs) {
    queue->SetShuffle(true);
    queue->ReplaceSongList(Songs({8, 9, 1}));
    EXPECT_EQ(queue->GetStatusDataVersion132()->FindChild("index")->GetText(), "2");
    queue->RemoveSong(Song(8));
    EXPECT_EQ(queue->GetStatusDataVersion132()->FindChild("index")->GetText(), "1");
    queue->ReplaceSongList(Songs({1, 9}));
    EXPECT_EQ(queue->GetStatusDataVersion132()->FindChild("index")->GetText(), "0");
}

// A queue that is closed from within the question for its owner's name shows what it is after that.
TEST_F(QueueKeptStatus, ClosingWhileTheStatusIsMadeShows) {
    Status();
    onCall = [&](const ServiceCall& call) {
        if (call.name == "GetDeviceName")
            queue->Close();
    };
    EXPECT_EQ(RoomMap().find("roomInfo"), std::string::npos);
}

} // namespace
