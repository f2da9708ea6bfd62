// The documents that a queue describes itself in.
#include "QueueFixture.h"
#include "basics/Ids.h"
#include "basics/Variables.h"
#include "status/RoomHistories.h"

namespace {

class QueueDocuments : public QueueFixture {
protected:
    QueueDocuments() { Run("name 34 Kitchen"); }

    std::string Info() { return queue->GetInfoVariable()->ToText(); }
    std::string Status() { return queue->GetStatusData()->ToText(); }
    std::string Status132() { return queue->GetStatusDataVersion132()->ToText(); }
    std::string StatusOf(const std::string& rest) {
        return "<queue><id>12</id><name>Kitchen</name>" + rest + "<rooms></rooms></queue>";
    }
    static std::string InfoOf(const std::string& songs) {
        return "<info><id>12</id><name>34</name><songs>" + songs + "</songs></info>";
    }
    std::string Index() { return std::string(queue->GetStatusData()->FindChild("index")->GetText()); }
    std::string Index132() {
        return std::string(queue->GetStatusDataVersion132()->FindChild("index")->GetText());
    }
    // Makes the item current without a stream.
    void MakeCurrent(const AudioMedia& media) {
        NewQueue();
        queue->AddSong(media, false, false);
        queue->GetNextSong();
    }
};

TEST_F(QueueDocuments, EmptyQueueHasEmptyDocuments) {
    EXPECT_EQ(Info(), InfoOf(""));
    EXPECT_EQ(queue->GetInfoVariableVersion132()->ToText(), InfoOf(""));
    EXPECT_EQ(Status(), StatusOf("<state>Stop</state><song id=\"0\" source=\"0\"></song>"
                                 "<next id=\"0\" source=\"0\"></next><index>4095</index>"));
    EXPECT_EQ(Status132(), StatusOf("<state>Stop</state><item>0</item><index>4095</index>"));
    EXPECT_EQ(queue->GetSessionData()->ToText(), "<rooms></rooms>");
}

TEST_F(QueueDocuments, HistoriesArePassedOn) {
    RoomHistories histories;
    histories.AddPlaylistToHistory(5, 1, "One");
    const auto root = KVXML::CreateXmlNode("r");
    queue->toxmlHistory(&histories, *root);
    EXPECT_EQ(root->ToText(),
              "<r><history room=\"5\"><playlists><playlist id=\"1\" name=\"One\"></playlist></playlists>"
              "</history></r>");
}

TEST_F(QueueDocuments, RoomsStandInOrder) {
    queue->AddRoomClient(12);
    queue->AddRoomClient(7);
    EXPECT_EQ(queue->GetSessionData()->ToText(), "<rooms><id>7</id><id>12</id></rooms>");
    EXPECT_EQ(Status132(),
              "<queue><id>12</id><name>Kitchen</name><state>Stop</state><item>0</item>"
              "<index>4095</index><rooms><id>7</id><id>12</id></rooms></queue>");
}

TEST_F(QueueDocuments, ListShowsItemsByTheirKind) {
    AudioMedia channel = Channel("st.1");
    channel.metaData = "Tra.9";
    queue->AddSongList({Song(1050), Track("Tra.1"), channel, Channel("st.2"),
                        AudioMedia::CreateExternal(MEDIA_RESERVED, "x"), Radio(5)},
                       false);
    EXPECT_EQ(Info(), InfoOf("<song id=\"1050\" source=\"1\"></song><song id=\"Tra.1\" source=\"2\"></song>"
                             "<song id=\"Tra.9\" station_id=\"st.1\" source=\"3\"></song>"
                             "<song id=\"\" station_id=\"st.2\" source=\"3\"></song>"
                             "<song source=\"4\"></song><song source=\"5\"></song>"));
    EXPECT_EQ(queue->GetInfoVariableVersion132()->ToText(), InfoOf(""));
    EXPECT_EQ(Out("assert"), Lines{});
}

TEST_F(QueueDocuments, UnknownKindIsRecordedAndShownWithoutAnId) {
    queue->AddSongList({AudioMedia::CreateExternal(6, "x"), AudioMedia(), AudioMedia::CreateExternal(-1, "")},
                       false);
    Out();
    EXPECT_EQ(Info(),
              InfoOf("<song source=\"6\"></song><song source=\"0\"></song><song source=\"-1\"></song>"));
    EXPECT_EQ(Out(), Lines(3, "assert korvel_digitalaudio/kvw/AudioQueue 1180"));
    EXPECT_EQ(queue->GetInfoVariableVersion132()->ToText(), InfoOf(""));
    EXPECT_EQ(Out(), Lines(3, "assert korvel_digitalaudio/kvw/AudioQueue 1231"));
}

TEST_F(QueueDocuments, EverySourceOfARadioQueueIsRadio) {
    queue->SetIsInternetRadio(true);
    queue->AddSong(Song(1), false, false);
    queue->AddSong(Track("Tra.1"), false, false);
    EXPECT_EQ(Info(), InfoOf("<song id=\"1\" source=\"5\"></song><song id=\"Tra.1\" source=\"5\"></song>"));
    EXPECT_EQ(Status(), StatusOf("<state>Stop</state><song id=\"0\" source=\"5\"></song>"
                                 "<next id=\"1\" source=\"5\"></next><index>4095</index>"));
    queue->ClearSongs();
    queue->SetIsInternetRadio(true);
    EXPECT_EQ(Status(), StatusOf("<state>Stop</state><song id=\"0\" source=\"5\"></song>"
                                 "<next id=\"0\" source=\"5\"></next><index>4095</index>"));
}

TEST_F(QueueDocuments, ShuffledQueueListsItsSongsAsTheyWereAdded) {
    Random("0 0");
    queue->SetShuffle(true);
    queue->AddSongList(Songs({1, 2, 3}), false);
    EXPECT_EQ(Info(), InfoOf("<song id=\"1\" source=\"1\"></song><song id=\"2\" source=\"1\"></song>"
                             "<song id=\"3\" source=\"1\"></song>"));
}

TEST_F(QueueDocuments, ListIsPublishedInBothForms) {
    queue->AddSong(Song(1050), false, false);
    Calls("");
    std::vector<std::string> calls;
    onCall = [&](const ServiceCall& call) { calls.push_back(call.ToText()); };
    queue->UpdateInfoVariable();
    const auto published = [](std::uint32_t variable, const std::string& text) {
        const std::string driver = std::to_string(kDriverDeviceId);
        return "SetVariable " + driver + " " + driver + " " + std::to_string(variable) + " " + text + " true";
    };
    EXPECT_EQ(calls,
              (Lines{published(variables::kQueueInfoV2, InfoOf("<song id=\"1050\" source=\"1\"></song>")),
                     published(variables::kQueueInfo, InfoOf(""))}));
}

TEST_F(QueueDocuments, EveryStateHasItsWord) {
    const std::pair<QueueState, std::string> words[] = {
        {STOP, "Stop"}, {PAUSE, "Pause"}, {PLAY, "Play"}, {END, "Stop"}};
    for (const auto& [state, word] : words) {
        queue->ChangeQueueState(state);
        EXPECT_EQ(queue->GetStatusData()->FindChild("state")->GetText(), word);
        EXPECT_EQ(queue->GetStatusDataVersion132()->FindChild("state")->GetText(), word);
    }
    queue->ChangeQueueState(static_cast<QueueState>(9));
    EXPECT_EQ(queue->GetStatusData()->FindChild("state"), nullptr);
    EXPECT_EQ(queue->GetStatusDataVersion132()->FindChild("state"), nullptr);
}

TEST_F(QueueDocuments, CurrentItemIsShownByItsKind) {
    MakeCurrent(Song(1050));
    EXPECT_EQ(Status(), StatusOf("<state>Stop</state><song id=\"1050\" source=\"1\"></song>"
                                 "<next id=\"0\" source=\"0\"></next><index>0</index>"));
    EXPECT_EQ(Status132(), StatusOf("<state>Stop</state><item>1050</item><index>0</index>"));
    MakeCurrent(Track("Tra.1"));
    EXPECT_EQ(Status(), StatusOf("<state>Stop</state><song id=\"Tra.1\" source=\"2\"></song>"
                                 "<next id=\"0\" source=\"0\"></next><index>0</index>"));
    EXPECT_EQ(Status132(), StatusOf("<state>Stop</state><item>268435440</item><index>0</index>"));
    AudioMedia channel = Channel("st.1");
    channel.metaData = "Tra.9";
    MakeCurrent(channel);
    EXPECT_EQ(Status(),
              StatusOf("<state>Stop</state><song id=\"Tra.9\" station_id=\"st.1\" source=\"3\"></song>"
                       "<next id=\"0\" source=\"0\"></next><index>0</index>"));
    EXPECT_EQ(Status132(), StatusOf("<state>Stop</state><item>268435440</item><index>0</index>"));
    AudioMedia radio = Radio(5);
    radio.metaData = "Ann";
    MakeCurrent(radio);
    EXPECT_EQ(Status(), StatusOf("<state>Stop</state><song id=\"Ann\" source=\"5\"></song>"
                                 "<next id=\"0\" source=\"0\"></next><index>0</index>"));
    EXPECT_EQ(Status132(), StatusOf("<state>Stop</state><item>268435440</item><index>0</index>"));
    AudioMedia reserved = Song(44);
    reserved.type = MEDIA_RESERVED;
    MakeCurrent(reserved);
    EXPECT_EQ(Status(), StatusOf("<state>Stop</state><song id=\"44\" source=\"4\"></song>"
                                 "<next id=\"0\" source=\"0\"></next><index>0</index>"));
    EXPECT_EQ(Status132(), StatusOf("<state>Stop</state><item>44</item><index>0</index>"));
}

TEST_F(QueueDocuments, NextItemIsShownByItsKind) {
    queue->AddSong(Track("Tra.1"), false, false);
    EXPECT_EQ(queue->GetStatusData()->FindChild("next")->ToText(), "<next id=\"Tra.1\" source=\"2\"></next>");
    NewQueue();
    queue->AddSong(Channel("st.1"), false, false);
    EXPECT_EQ(queue->GetStatusData()->FindChild("next")->ToText(),
              "<next id=\"\" station_id=\"st.1\" source=\"3\"></next>");
}

TEST_F(QueueDocuments, CurrentItemOfASingleStreamIsTheOneMovedTo) {
    queue->SetIsInternetRadio(true);
    queue->AddSong(Radio(5), false, false);
    EXPECT_EQ(queue->GetStatusData()->FindChild("song")->GetAttribute("id"), "0");
    queue->UpdateCurrentSongMetaData("Ann");
    queue->GetFirstSong();
    EXPECT_EQ(queue->GetStatusData()->FindChild("song")->GetAttribute("id"), "Ann");
}

TEST_F(QueueDocuments, IndexCountsInTheSongListWhileShuffled) {
    queue->AddSongList(Songs({1, 2, 3}), false);
    queue->SetNextSong(std::uint32_t{2});
    queue->GetNextSong();
    EXPECT_EQ(Index(), "2");
    queue->SetShuffle(true);
    EXPECT_EQ(Index(), "2");
    EXPECT_EQ(Index132(), "2");
}

// A pin past the end leaves the queue at an index without a song.
TEST_F(QueueDocuments, IndexOfWhatIsNotInAShuffledListIsItsLength) {
    queue->AddSongList(Songs({1, 2, 3}), false);
    queue->SetShuffle(true);
    queue->SetNextSong(std::uint32_t{9});
    EXPECT_THROW(queue->GetNextSong(), std::out_of_range);
    EXPECT_EQ(Index132(), "3");
    EXPECT_EQ(Index(), "3");
}

TEST_F(QueueDocuments, IndexWithNothingCurrentDependsOnShuffleInThePlainFormOnly) {
    queue->AddSongList(Songs({1, 2}), false);
    EXPECT_EQ(Index(), "4095");
    EXPECT_EQ(Index132(), "4095");
    queue->SetShuffle(true);
    EXPECT_EQ(Index(), "2");
    EXPECT_EQ(Index132(), "4095");
    queue->AddSong(AudioMedia(), false, false);
    queue->AddSong(AudioMedia(), false, false);
    EXPECT_EQ(Index(), "2"); // where the first empty item stands
}

TEST_F(QueueDocuments, IndexAtTheEndOfAShuffledListIsThatOfNothing) {
    queue->AddSongList(Songs({1, 2}), false);
    queue->GetNextSong();
    queue->SetShuffle(true);
    queue->GetNextSong();
    queue->GetNextSong();
    EXPECT_EQ(queue->GetCurrentMedia().type, MEDIA_DIGITAL);
    EXPECT_EQ(Index(), "2");
    EXPECT_EQ(Index132(), "4095");
}

TEST_F(QueueDocuments, PinPastTheListShowsNothingNext) {
    queue->AddSongList(Songs({1, 2}), false);
    queue->SetNextSong(std::uint32_t{9999});
    EXPECT_EQ(Status(), StatusOf("<state>Stop</state><song id=\"0\" source=\"0\"></song>"
                                 "<next id=\"0\" source=\"0\"></next><index>4095</index>"));
    EXPECT_EQ(queue->GetNextSongIndex(), 9999u);
}

TEST_F(QueueDocuments, BuildingTheStatusCountsAsAMove) {
    queue->AddSongList(Songs({1, 2, 3}), false);
    queue->SetNextSong(std::uint32_t{1});
    queue->GetNextSong();
    Advance(6000);
    Status();
    EXPECT_EQ(queue->GetPreviousSong(), Song(1));
    queue->SetNextSong(std::uint32_t{1});
    queue->GetNextSong();
    Advance(6000);
    Status132();
    EXPECT_EQ(queue->GetPreviousSong(), Song(2));
}

// The song is written before the next one is looked up, which may begin another pass; the index after it.
TEST_F(QueueDocuments, BuildingTheStatusMayBeginAnotherPass) {
    queue->AddSongList(Songs({1, 2, 3}), false);
    queue->GetNextSong();
    queue->SetShuffle(true);
    queue->SetRepeat(true);
    queue->GetNextSong();
    queue->GetNextSong();
    const std::string last = std::to_string(queue->GetCurrentMedia().mediaId);
    Calls("");
    const auto status = queue->GetStatusData();
    EXPECT_EQ(Calls("Random"), 2);
    EXPECT_EQ(status->FindChild("song")->GetAttribute("id"), last);
    EXPECT_EQ(status->FindChild("next")->GetAttribute("id"), last);
}

} // namespace
