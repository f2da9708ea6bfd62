// What a queue tells rooms and the registered device.
#include "QueueFixture.h"
#include "platform/Text.h"

namespace {

class QueueNotifications : public QueueFixture {
protected:
    // The description of `media`, as a room gets it.
    std::string Described(const AudioMedia& media, const DataTrackFull* track = nullptr) {
        queue->AddRoomClient(7);
        Out();
        queue->UpdateRoomMediaVariable(media, track, false);
        const Lines told = Out("message 7 ");
        const std::string start = "message 7 UPDATE_MEDIA_INFO MEDIA_INFO:STRING=";
        if (told.size() != 1 || !told[0].starts_with(start))
            return "not told once";
        std::string text = told[0].substr(start.size());
        if (text.starts_with("\"")) {
            text = text.substr(1, text.size() - 2);
            text.erase(std::remove(text.begin(), text.end(), '\\'), text.end());
        }
        const std::string head = "<mediainfo><deviceid>100002</deviceid><queueid>12</queueid>";
        const std::string tail = "</mediainfo>";
        if (!text.starts_with(head) || !text.ends_with(tail))
            return "no mediainfo: " + text;
        return text.substr(head.size(), text.size() - head.size() - tail.size());
    }
    void SetSecondary(bool merge, std::initializer_list<const char*> texts) {
        std::vector<std::unique_ptr<std::string>> owned;
        for (const char* text : texts)
            owned.push_back(text ? std::make_unique<std::string>(text) : nullptr);
        EXPECT_TRUE(queue->UpdateSecondaryInfo(merge, owned[0].get(), owned[1].get(), owned[2].get(),
                                               owned[3].get(), owned[4].get()));
    }
};

std::string Base64(const std::string& text) {
    return kv::base64EncodeString(text);
}

// Answers nothing, notes what it is asked for.
class SilentRhapsody final : public KVRhapsodyClient::RhapsodyClient {
public:
    void Connect(const std::string&) override {}
    void DisableOfflineMode() override {}
    void GetMemberPlaylists(IRhapsodyCallback*) override {}
    void GetTracksForPlaylist(const std::string&, unsigned int, unsigned int, unsigned int,
                              IRhapsodyCallback*) override {}
    void GetCurrentSongInfo(const std::string& id, std::int32_t stream,
                            IRhapsodyCallback* callback) override {
        asked.push_back(id + " " + std::to_string(stream));
        lastCallback = callback;
    }
    Lines asked;
    IRhapsodyCallback* lastCallback = nullptr;
};

const DataTrackFull kTrack = {"Tra.1", "", "Colours", "Ann", "Blue", "http://img.example/1.jpg"};

TEST_F(QueueNotifications, NobodyRegisteredHearsNothing) {
    queue->NotifyMediaChanged("<m/>");
    queue->UpdateStreamStatus("buffering");
    queue->NotifyStreamStatusChanged();
    queue->NotifyQueueDeletion();
    queue->ChangeQueueState(PLAY);
    queue->ClearNotifications();
    EXPECT_EQ(Out(), Lines{});
}

TEST_F(QueueNotifications, EventsCarryTheQueueAndItsInfoFirst) {
    Register("mine");
    queue->NotifyMediaChanged("<m/>");
    queue->UpdateStreamStatus("buffering");
    Advance(2000);
    queue->NotifyQueueDeletion();
    EXPECT_EQ(Out(), (Lines{"message 200 QUEUE_MEDIA_INFO_UPDATED QUEUE_ID:INT=12 QUEUE_INFO:STRING=mine "
                            "MEDIA_INFO:STRING=<m/>",
                            "message 200 QUEUE_STREAM_STATUS_CHANGED QUEUE_ID:INT=12 QUEUE_INFO:STRING=mine "
                            "STATUS:STRING=buffering",
                            "message 200 QUEUE_DELETED QUEUE_ID:INT=12 QUEUE_INFO:STRING=mine "
                            "LAST_QUEUE_STATE:STRING=STOP LAST_QUEUE_STATE_TIME:INT=2"}));
}

TEST_F(QueueNotifications, EmptyQueueInfoIsLeftOut) {
    Register();
    queue->NotifyMediaChanged("<m/>");
    queue->UpdateStreamStatus("buffering");
    queue->ChangeQueueState(PAUSE);
    queue->NotifyQueueDeletion();
    EXPECT_EQ(Out(), (Lines{"message 200 QUEUE_MEDIA_INFO_UPDATED QUEUE_ID:INT=12 MEDIA_INFO:STRING=<m/>",
                            "message 200 QUEUE_STREAM_STATUS_CHANGED QUEUE_ID:INT=12 STATUS:STRING=buffering",
                            "message 200 QUEUE_STATE_CHANGED QUEUE_ID:INT=12 PREV_QUEUE_STATE:STRING=STOP "
                            "PREV_QUEUE_STATE_TIME:INT=0 QUEUE_STATE:STRING=PAUSE",
                            "message 200 QUEUE_DELETED QUEUE_ID:INT=12 LAST_QUEUE_STATE:STRING=PAUSE "
                            "LAST_QUEUE_STATE_TIME:INT=0"}));
}

TEST_F(QueueNotifications, StreamStatusIsToldWhenItChanges) {
    Register();
    queue->UpdateStreamStatus("");
    EXPECT_EQ(Out(), Lines{});
    queue->UpdateStreamStatus("a");
    queue->UpdateStreamStatus("a");
    queue->UpdateStreamStatus("ab");
    EXPECT_EQ(Out().size(), 2u);
    queue->UpdateStreamStatus("");
    EXPECT_EQ(Out(), Lines{"message 200 QUEUE_STREAM_STATUS_CHANGED QUEUE_ID:INT=12 STATUS:STRING=\"\""});
}

TEST_F(QueueNotifications, StatusHeardBeforeTheRegistrationIsNotToldAgain) {
    queue->UpdateStreamStatus("a");
    Register();
    queue->UpdateStreamStatus("a");
    EXPECT_EQ(Out(), Lines{});
}

TEST_F(QueueNotifications, RegistrationEndsOnceAndForgetsTheQueueInfo) {
    Register("mine");
    queue->ClearNotifications();
    queue->ClearNotifications();
    EXPECT_EQ(Out(), Lines{"message 200 QUEUE_DELETED QUEUE_ID:INT=12 QUEUE_INFO:STRING=mine "
                           "LAST_QUEUE_STATE:STRING=STOP LAST_QUEUE_STATE_TIME:INT=0"});
    EXPECT_EQ(queue->GetNotificationDevice(), 0u);
    queue->SetNotificationDevice(kListener);
    queue->NotifyMediaChanged("");
    EXPECT_EQ(Out(), Lines{"message 200 QUEUE_MEDIA_INFO_UPDATED QUEUE_ID:INT=12 MEDIA_INFO:STRING=\"\""});
}

TEST_F(QueueNotifications, QueueInfoIsForgottenWithoutARegistrationToo) {
    queue->SetQueueInfo("mine");
    queue->ClearNotifications();
    queue->SetNotificationDevice(kListener);
    queue->NotifyMediaChanged("m");
    EXPECT_EQ(Out(), Lines{"message 200 QUEUE_MEDIA_INFO_UPDATED QUEUE_ID:INT=12 MEDIA_INFO:STRING=m"});
}

TEST_F(QueueNotifications, MediaIsToldToTheRoomsThenToTheRegisteredDevice) {
    queue->AddRoomClient(12);
    queue->AddRoomClient(7, "10.0.0.7", 6200, 1);
    Register("mine");
    queue->UpdateRoomMediaVariable(AudioMedia(), nullptr, false);
    const std::string info =
        "MEDIA_INFO:STRING=<mediainfo><deviceid>100002</deviceid><queueid>12</queueid><source>0</source>"
        "</mediainfo>";
    EXPECT_EQ(Out(),
              (Lines{"message 7 UPDATE_MEDIA_INFO " + info, "message 12 UPDATE_MEDIA_INFO " + info,
                     "message 200 QUEUE_MEDIA_INFO_UPDATED QUEUE_ID:INT=12 QUEUE_INFO:STRING=mine " + info}));
}

TEST_F(QueueNotifications, ForceIsSaidOnlyWhenSet) {
    queue->AddRoomClient(7);
    queue->UpdateRoomMediaVariable(AudioMedia(), nullptr, true);
    EXPECT_EQ(Out(),
              Lines{"message 7 UPDATE_MEDIA_INFO MEDIA_INFO:STRING=<mediainfo><deviceid>100002</deviceid>"
                    "<queueid>12</queueid><source>0</source></mediainfo> FORCE:BOOLEAN=true"});
}

TEST_F(QueueNotifications, QueueWithoutRoomsTellsTheRegisteredDeviceAlone) {
    Register();
    queue->UpdateRoomMediaVariable(AudioMedia(), nullptr, true);
    EXPECT_EQ(Out(),
              Lines{"message 200 QUEUE_MEDIA_INFO_UPDATED QUEUE_ID:INT=12 MEDIA_INFO:STRING=<mediainfo>"
                    "<deviceid>100002</deviceid><queueid>12</queueid><source>0</source></mediainfo>"});
}

TEST_F(QueueNotifications, SongIsDescribedByItsRecord) {
    Run("song 1 location=/media/a.flac title=Blue artist=Ann album=Colours img=http://img.example/a");
    Run("song 2 location=/media/b.flac title=Green");
    EXPECT_EQ(Described(Song(1)),
              "<source>1</source><mediaid>1</mediaid><mediatype>SONG</mediatype><album>Colours</album>"
              "<artist>Ann</artist><title>Blue</title><img>" +
                  Base64("http://img.example/a") + "</img>");
    EXPECT_EQ(Described(Song(2)),
              "<source>1</source><mediaid>2</mediaid><mediatype>SONG</mediatype><title>Green</title>");
    EXPECT_EQ(Described(Song(3)), "<source>1</source><mediaid>3</mediaid><mediatype>SONG</mediatype>");
    EXPECT_EQ(Described(Song(0)),
              "<source>1</source><mediaid>0</mediaid><mediatype>SONG</mediatype><display></display>");
}

TEST_F(QueueNotifications, SongOnARadioQueueIsDescribedAsAStation) {
    Run("station 5 location=http://radio.example/5 name=One genre=News img=http://img.example/5");
    Run("station 6 location=http://radio.example/6 name=Two");
    queue->SetIsInternetRadio(true);
    EXPECT_EQ(Described(Song(5)),
              "<source>5</source><mediaid>5</mediaid><mediatype>SONG</mediatype>"
              "<mediatypeV2>INTERNET_MEDIA</mediatypeV2><channel>One</channel><genre>" +
                  Base64("News") + "</genre><img>" + Base64("http://img.example/5") + "</img>");
    AudioMedia playing = Song(6);
    playing.metaData = "Ann";
    EXPECT_EQ(Described(playing),
              "<source>5</source><mediaid>6</mediaid><mediatype>SONG</mediatype>"
              "<mediatypeV2>INTERNET_MEDIA</mediatypeV2><mediaidV2>Ann</mediaidV2><title>Ann</title>"
              "<channel>Two</channel>");
    playing.mediaId = 7;
    EXPECT_EQ(Described(playing),
              "<source>5</source><mediaid>7</mediaid><mediatype>SONG</mediatype>"
              "<mediatypeV2>INTERNET_MEDIA</mediatypeV2>");
    EXPECT_EQ(Described(Song(0)),
              "<source>5</source><mediaid>0</mediaid><mediatype>SONG</mediatype><display></display>");
}

TEST_F(QueueNotifications, TrackIsDescribedByWhatTheServiceSays) {
    const std::string head =
        "<source>2</source><mediaid>268435440</mediaid><mediaidV2>Tra.1</mediaidV2>"
        "<mediatype>SONG</mediatype><mediatypeV2>RHAPSODY</mediatypeV2>";
    EXPECT_EQ(Described(Track("Tra.1"), &kTrack),
              head + "<album>Colours</album><artist>Ann</artist><title>Blue</title><img>" +
                  Base64(kTrack.image) + "</img>");
    EXPECT_EQ(Described(Track("Tra.1")), head);
}

TEST_F(QueueNotifications, TrackWithoutADescriptionIsAskedFor) {
    SilentRhapsody rhapsody;
    RhapsodyCallbackBase callback;
    NewQueue(&rhapsody, &callback);
    Described(Track("Tra.1"), &kTrack);
    Described(Track(""));
    EXPECT_EQ(rhapsody.asked, Lines{});
    Described(Track("Tra.1"));
    EXPECT_EQ(rhapsody.asked, Lines{"Tra.1 0"});
    EXPECT_EQ(rhapsody.lastCallback, &callback);
    queue->Close();
    queue->UpdateRoomMediaVariable(Track("Tra.2"), nullptr, false);
    EXPECT_EQ(rhapsody.asked, Lines{"Tra.1 0"});
    queue.reset();
}

TEST_F(QueueNotifications, ChannelIsDescribedByWhatItPlays) {
    AudioMedia channel = Channel("st.1");
    channel.metaData = "Tra.9";
    EXPECT_EQ(
        Described(channel, &kTrack),
        "<source>3</source><mediaid>268435440</mediaid><mediaidV2>Tra.9</mediaidV2>"
        "<mediatype>SONG</mediatype><mediatypeV2>RHAPSODY_CHANNEL</mediatypeV2><stationid>st.1</stationid>"
        "<album>Colours</album><artist>Ann</artist><title>Blue</title><img>" +
            Base64(kTrack.image) + "</img>");
    EXPECT_EQ(Described(Channel("")),
              "<source>3</source><mediaid>268435440</mediaid><mediaidV2></mediaidV2>"
              "<mediatype>SONG</mediatype><mediatypeV2>RHAPSODY_CHANNEL</mediatypeV2><stationid></stationid>"
              "<display></display>");
}

TEST_F(QueueNotifications, ChannelIsAskedForOnceItsTrackIsKnown) {
    SilentRhapsody rhapsody;
    NewQueue(&rhapsody, nullptr);
    Described(Channel("st.1"));
    EXPECT_EQ(rhapsody.asked, Lines{});
    AudioMedia channel = Channel("st.1");
    channel.metaData = "Tra.9";
    Described(channel);
    EXPECT_EQ(rhapsody.asked, Lines{"Tra.9 0"});
    channel.externalId.clear();
    Described(channel);
    EXPECT_EQ(rhapsody.asked.size(), 1u);
    queue.reset();
}

TEST_F(QueueNotifications, ReservedAndUnknownItemsAreDescribedByTheirSourceAlone) {
    EXPECT_EQ(Described(AudioMedia::CreateExternal(MEDIA_RESERVED, "x")), "<source>4</source>");
    EXPECT_EQ(Described(AudioMedia()), "<source>0</source>");
    EXPECT_EQ(Described(AudioMedia::CreateExternal(6, "x")), "<source>6</source>");
    EXPECT_EQ(Described(AudioMedia::CreateExternal(-1, "x")), "<source>-1</source>");
    queue->SetIsInternetRadio(true);
    EXPECT_EQ(Described(AudioMedia()), "<source>5</source>");
}

TEST_F(QueueNotifications, StationIsDescribedByTheSecondaryInfo) {
    AudioMedia radio = AudioMedia::CreateExternal(MEDIA_INTERNET_RADIO, "st.5");
    radio.extra = 77;
    const std::string head =
        "<source>5</source><mediatype>SONG</mediatype>"
        "<mediatypeV2>GENERIC_MEDIA</mediatypeV2><medSrcDev>77</medSrcDev>"
        "<stationid>st.5</stationid>";
    EXPECT_EQ(Described(radio), head + "<album></album><artist></artist><title></title><channel></channel>");
    SetSecondary(false, {"Ann", "Colours", "Blue", "Pop", "http://img.example/1"});
    queue->SetQueueInfo("mine");
    EXPECT_EQ(Described(radio),
              head +
                  "<queueInfo>mine</queueInfo><album>Colours</album><artist>Ann</artist><title>Blue</title>"
                  "<channel></channel><genre>" +
                  Base64("Pop") + "</genre><img>" + Base64("http://img.example/1") + "</img>");
}

TEST_F(QueueNotifications, SecondaryInfoIsMergedOrReplaced) {
    const auto shown = [this] {
        const std::string text = Described(Radio(0));
        return text.substr(text.find("<album>"));
    };
    SetSecondary(false, {"Ann", "Colours", "Blue", "Pop", "img"});
    SetSecondary(true, {nullptr, nullptr, "Green", nullptr, nullptr});
    EXPECT_EQ(shown(),
              "<album>Colours</album><artist>Ann</artist><title>Green</title><channel></channel>"
              "<genre>" +
                  Base64("Pop") + "</genre><img>" + Base64("img") + "</img>");
    SetSecondary(true, {"", nullptr, nullptr, nullptr, nullptr});
    EXPECT_EQ(shown().substr(0, 41), "<album>Colours</album><artist></artist><t");
    SetSecondary(false, {nullptr, nullptr, "Red", nullptr, nullptr});
    EXPECT_EQ(shown(), "<album></album><artist></artist><title>Red</title><channel></channel>");
}

TEST_F(QueueNotifications, WhatAStreamPlaysIsKeptInThreePlaces) {
    EXPECT_FALSE(queue->UpdateCurrentSongMetaData("x"));
    EXPECT_EQ(queue->GetCurrentMedia().metaData, "");
    EXPECT_EQ(Described(Radio(0)).find("<title>x"), std::string::npos);

    queue->AddSongList({Radio(5), Radio(6)}, false);
    queue->SetNextSong(std::uint32_t{1});
    queue->GetNextSong();
    EXPECT_TRUE(queue->UpdateCurrentSongMetaData("Ann"));
    EXPECT_EQ(queue->GetCurrentMedia().metaData, "Ann");
    EXPECT_EQ(queue->GetSongList()[0].metaData, "Ann");
    EXPECT_EQ(queue->GetSongList()[1].metaData, "");
    EXPECT_NE(Described(Radio(0)).find("<title>Ann</title>"), std::string::npos);
}

// A core that is asked for the station's record may give the queue another list first.
TEST_F(QueueNotifications, StationIsDescribedAsItWasThoughTheListChangesMeanwhile) {
    const std::string text = "Ann and Ben sing of the blue sky";
    Run("station 1 name=One");
    queue->SetIsInternetRadio(true);
    queue->AddSongList(Songs({1}), false);
    ASSERT_TRUE(queue->UpdateCurrentSongMetaData(text));
    queue->AddRoomClient(7);
    Out();
    onCall = [&](const ServiceCall& call) {
        if (call.name == "GetMediaRecord")
            queue->ReplaceSongList(Songs({1, 2, 3, 4}));
    };
    queue->UpdateRoomMediaVariable(queue->GetCurrentMedia(), nullptr, false);
    onCall = nullptr;
    const Lines told = Out("message 7 ");
    ASSERT_EQ(told.size(), 1u);
    EXPECT_NE(told[0].find("<title>" + text + "</title>"), std::string::npos) << told[0];
}

} // namespace
