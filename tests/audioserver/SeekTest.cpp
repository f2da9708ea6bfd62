// Places in a media, judged by what a room hears: the songs are 500 Hz first and 1000 Hz behind that.
#include <filesystem>

#include "Bed.h"
#include "WatchClient.h"
#include "WebServer.h"

namespace korvel::tests {
namespace {

using nlohmann::json;

class Seeking : public Bed {
protected:
    // A stream that plays to the room, and what watches it.
    void Listen() {
        m_room = AddRoom();
        m_driver = Connect();
        m_stream = m_driver->AddStream();
        m_number = std::to_string(m_stream);
        EXPECT_EQ(m_driver->Ask("addcli " + m_number + " " + m_room->Client()), "OK addcli " + m_number);
        m_watcher = std::make_unique<WatchClient>(ServerPort());
        EXPECT_EQ(m_watcher->Greet().value("hello", 0), 1);
    }
    std::string Song(const std::string& name = "a.wav") {
        return FileMedia(ToneFile(name, {{500, 10}, {1000, 10}}));
    }
    void Play(const std::string& media) {
        EXPECT_EQ(m_driver->Ask("addmed " + m_number + " " + media), "OK addmed " + m_number);
    }
    // What has become of a seek: "done", or the code of the problem.
    std::string Seek(unsigned milliseconds) { return m_watcher->Try(SeekTo(m_stream, milliseconds)); }
    bool CanSeek() {
        return m_watcher->Sees(m_stream, [](const json& now) { return now["canSeek"] == true; });
    }
    double Told() const { return m_watcher->Stream(m_stream)["position"]["ms"].get<double>(); }

    std::unique_ptr<Room> m_room;
    std::unique_ptr<LineClient> m_driver;
    std::unique_ptr<WatchClient> m_watcher;
    std::uint32_t m_stream = 0;
    std::string m_number;
};

TEST_F(Seeking, ForwardsAndBackwards) {
    Listen();
    Play(Song());
    EXPECT_TRUE(m_room->Hears(500, 0.5));
    EXPECT_EQ(Seek(12000), "done");
    EXPECT_TRUE(m_room->Hears(1000, 0.5));
    EXPECT_TRUE(m_watcher->Sees(m_stream, [](const json& now) {
        return now["state"] == "playing" && now["position"]["ms"] >= 12000;
    }));
    EXPECT_NEAR(Told(), 12000, 50);
    EXPECT_EQ(Seek(2000), "done");
    EXPECT_TRUE(m_room->Hears(500, 0.5));
    EXPECT_EQ(m_room->Heard().Order({500, 1000}), (std::vector<int>{500, 1000, 500}));
    EXPECT_EQ(m_watcher->Stream(m_stream)["serial"], 1) << "it is the same media";
    EXPECT_EQ(m_driver->NextEvent(std::chrono::milliseconds(0)), "") << "the driver hears nothing of it";
}

TEST_F(Seeking, LandsWhereItIsToLandAndEndsWhereTheSongEnds) {
    Listen();
    Play(FileMedia(ToneFile("a.wav", {{500, 10}, {1000, 1}})));
    EXPECT_EQ(m_driver->Ask("setsta " + m_number + " pause"), "OK setsta " + m_number);
    EXPECT_TRUE(CanSeek());
    EXPECT_EQ(Seek(9500), "done");
    m_driver->Ask("setsta " + m_number + " play");
    EXPECT_EQ(m_driver->NextEvent(), "* addmed EOM=" + m_number);
    EXPECT_TRUE(m_room->Hears(0, 0.3));
    EXPECT_LT(m_room->Heard().Seconds(500), 0.5 + 0.3)
        << "half a second, and what was heard before the pause";
    EXPECT_GT(m_room->Heard().Seconds(500), 0.4);
    EXPECT_NEAR(m_room->Heard().Seconds(1000), 1, 0.1);
}

TEST_F(Seeking, APausedSongStaysSilentAndGoesOnAtTheNewPlace) {
    Listen();
    Play(Song());
    EXPECT_TRUE(m_room->Hears(500, 0.3));
    m_driver->Ask("setsta " + m_number + " pause");
    EXPECT_TRUE(m_room->Hears(0, 0.3));
    EXPECT_TRUE(CanSeek());
    EXPECT_EQ(Seek(12000), "done");
    EXPECT_TRUE(m_watcher->Sees(m_stream, [](const json& now) { return now["position"]["ms"] == 12000; }));
    EXPECT_EQ(m_watcher->Stream(m_stream)["state"], "paused");
    EXPECT_EQ(m_watcher->Stream(m_stream)["position"]["rate"], 0);
    const double before = m_room->Heard().Seconds(500);
    EXPECT_TRUE(m_room->Hears(0, 0.8));
    EXPECT_EQ(m_room->Heard().Seconds(500), before);
    EXPECT_EQ(m_room->Heard().Seconds(1000), 0);
    m_driver->Ask("setsta " + m_number + " play");
    // Not after now: a busy machine may come here when it has been heard to its end.
    EXPECT_TRUE(WaitUntil([this] { return m_room->Heard().Seconds(1000) >= 0.5; }));
    EXPECT_EQ(m_room->Heard().Order({500, 1000}), (std::vector<int>{500, 1000}));
}

TEST_F(Seeking, TheNewestOfManyWins) {
    Listen();
    Play(Song());
    EXPECT_TRUE(CanSeek());
    std::string lines;
    for (int id = 1; id <= 50; ++id)
        lines += "{\"id\":" + std::to_string(id) + ",\"seek\":{\"stream\":" + m_number +
                 ",\"position\":" + std::to_string(id == 50 ? 15000 : 100 * id) + "}}\n";
    m_watcher->Lines().SendRaw(lines);
    json last;
    for (int answers = 0; answers < 50;) {
        const json line = m_watcher->Next();
        ASSERT_FALSE(line.is_null());
        if (!line.contains("id"))
            continue;
        ++answers;
        EXPECT_TRUE(line.contains("done") || line["problem"]["code"] == "superseded") << line;
        last = line;
    }
    EXPECT_EQ(last, (json{{"id", 50}, {"done", true}}));
    EXPECT_TRUE(m_room->Hears(1000, 0.3));
}

TEST_F(Seeking, BeforeTheMediaIsOpenItWaitsForThat) {
    Listen();
    m_driver->SendRaw("1 addmed " + m_number + " " + Song() + "\r\n");
    EXPECT_EQ(m_driver->ReadLine(), "1 OK addmed " + m_number);
    EXPECT_EQ(Seek(12000), "done");
    EXPECT_TRUE(m_room->Hears(1000, 0.3));
}

TEST_F(Seeking, AWebFileGoesToItsPlaces) {
    const WebServer web(WavOf({{500, 2}, {1000, 3}}), true, true);
    Listen();
    Play("\"file:/stream-" + web.Url() + "a.wav\"");
    EXPECT_TRUE(m_room->Hears(500, 0.3));
    EXPECT_TRUE(CanSeek());
    EXPECT_NEAR(m_watcher->Stream(m_stream)["duration"].get<double>(), 5000, 10);
    EXPECT_EQ(Seek(3000), "done");
    EXPECT_TRUE(m_room->Hears(1000, 0.5));
    EXPECT_LT(m_room->Heard().Seconds(500), 1.9);
}

TEST_F(Seeking, AWebServerThatGivesNoPartsIsHeardToTheEnd) {
    const WebServer web(WavOf({{500, 4}}), true);
    Listen();
    Play("\"file:/stream-" + web.Url() + "a.wav\"");
    EXPECT_TRUE(m_watcher->Sees(m_stream, [](const json& now) { return !now["duration"].is_null(); }));
    const std::string answer = Seek(3000);
    EXPECT_TRUE(answer == "failed" || answer == "notSeekable") << answer;
    EXPECT_TRUE(m_watcher->SeesState(m_stream, "ended"));
    EXPECT_TRUE(m_room->Hears(0, 0.2));
    EXPECT_NEAR(m_room->Heard().Seconds(500), 4, 0.3);
}

TEST_F(Seeking, WhatCannotBeDoneSaysWhy) {
    m_serverOptions = {"--input", "line in=audiotestsrc is-live=true freq=1000"};
    Listen();
    EXPECT_EQ(m_watcher->Try(SeekTo(99, 0)), "noStream");
    EXPECT_EQ(m_watcher->Try(StartAt(99, Song(), 0)), "noStream");
    EXPECT_EQ(Seek(0), "noMedia");
    Play(Song());
    EXPECT_TRUE(CanSeek());
    EXPECT_EQ(Seek(20000), "beyondEnd");
    json stale = SeekTo(m_stream, 12000);
    stale["seek"]["serial"] = 2;
    EXPECT_EQ(m_watcher->Try(stale), "stale");
    stale["seek"]["serial"] = 1;
    EXPECT_EQ(m_watcher->Try(stale), "done");

    Play("line in");
    EXPECT_TRUE(m_watcher->Sees(m_stream, [](const json& now) { return now["live"] == true; }));
    EXPECT_EQ(m_watcher->Stream(m_stream)["canSeek"], false);
    EXPECT_EQ(m_watcher->Stream(m_stream)["position"], nullptr);
    EXPECT_EQ(Seek(0), "live");
    EXPECT_EQ(m_watcher->Try(StartAt(m_stream, "line in", 5000)), "live");
    m_driver->Ask("remmed " + m_number);
    EXPECT_EQ(Seek(0), "noMedia");
}

TEST_F(Seeking, AFailedSeekLeavesTheSongAsItWas) {
    Listen();
    Play(Song());
    EXPECT_TRUE(CanSeek());
    EXPECT_TRUE(std::filesystem::remove(PathOf("a.wav")));
    EXPECT_EQ(Seek(12000), "failed");
    EXPECT_TRUE(m_room->Hears(500, 0.3));
    EXPECT_EQ(m_driver->NextEvent(std::chrono::milliseconds(0)), "");
}

TEST_F(Seeking, AMediaThatStartsElsewhereIsNotHeardFromItsBeginning) {
    Listen();
    const std::string song = Song();
    EXPECT_EQ(m_watcher->Try(StartAt(m_stream, song, 12000)), "done");
    Play(song);
    EXPECT_TRUE(m_room->Hears(1000, 0.5));
    EXPECT_EQ(m_room->Heard().Order({500, 1000}), std::vector<int>{1000});
    EXPECT_TRUE(m_watcher->SeesState(m_stream, "playing"));
    EXPECT_NEAR(Told(), 12000, 50);
    Play(song);
    EXPECT_TRUE(m_room->Hears(500, 0.3)) << "it counts once";
}

TEST_F(Seeking, AStartThatIsPausedAtOnceIsSilent) {
    Listen();
    const std::string song = Song();
    EXPECT_EQ(m_watcher->Try(StartAt(m_stream, song, 12000)), "done");
    m_driver->SendRaw("1 addmed " + m_number + " " + song + "\r\n2 setsta " + m_number + " pause\r\n");
    EXPECT_TRUE(m_watcher->Sees(m_stream, [](const json& now) {
        return now["state"] == "paused" && now["position"].is_object() && now["position"]["ms"] == 12000;
    }));
    EXPECT_EQ(m_watcher->Stream(m_stream)["position"]["rate"], 0);
    EXPECT_EQ(m_driver->ReadLine(), "1 OK addmed " + m_number);
    EXPECT_EQ(m_driver->ReadLine(), "2 OK setsta " + m_number);
    m_driver->Ask("setsta " + m_number + " play");
    EXPECT_TRUE(m_room->Hears(1000, 0.3));
    EXPECT_EQ(m_room->Heard().Order({500, 1000}), std::vector<int>{1000});
}

TEST_F(Seeking, AStartIsForItsMediaOnly) {
    Listen();
    EXPECT_EQ(m_watcher->Try(StartAt(m_stream, Song("b.wav"), 12000)), "done");
    Play(Song());
    EXPECT_TRUE(m_room->Hears(500, 0.3));
    Play(Song("b.wav"));
    EXPECT_TRUE(m_watcher->Sees(
        m_stream, [](const json& now) { return now["serial"] == 2 && now["state"] == "playing"; }));
    EXPECT_NEAR(Told(), 0, 50) << "another came between";
}

TEST_F(Seeking, AStartBehindTheEndIsTheBeginning) {
    Listen();
    const std::string song = Song();
    EXPECT_EQ(m_watcher->Try(StartAt(m_stream, song, 20000)), "done");
    Play(song);
    EXPECT_TRUE(m_room->Hears(500, 0.3));
}

} // namespace
} // namespace korvel::tests
