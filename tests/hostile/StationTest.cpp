// Stations that mean ill or do badly, and sources that do not end.
#include <cctype>

#include "StationBed.h"

namespace korvel::tests {
namespace {

using HostileStation = StationBed;

constexpr const char* kPlaylistType = "application/vnd.apple.mpegurl";
constexpr const char* kPlaylistStart = "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:5\n";
// Opening it does something.
constexpr const char* kDevice = "/dev/ptmx";

// Half a second of what playlists lead to, which is no WAV: frames of layer III with nothing in them.
std::string SilentMp3() {
    constexpr std::size_t kFrames = 20;
    constexpr std::size_t kFrameBytes = 417; // of 1,152 samples at 44.1 kHz, 128 kbit/s
    std::string frame("\xff\xfb\x90\x00", 4);
    frame.resize(kFrameBytes);
    std::string sound;
    for (std::size_t count = 0; count < kFrames; ++count)
        sound += frame;
    return sound;
}

TEST_F(HostileStation, NoPlaylistOpensAFileOfThisMachine) {
    m_serverOptions = {"--sound-patience", "5000"};
    const Trap trap(PathOf("trap"));
    const std::string address = "file://" + trap.Path();
    const std::string part = "#EXTINF:5,\n";
    const std::vector<std::string> playlists = {
        kPlaylistStart + part + address + "\n",
        kPlaylistStart + part + address + "\n#EXT-X-ENDLIST\n",
        kPlaylistStart + part + "FILE://localhost" + trap.Path() + "\n#EXT-X-ENDLIST\n",
        kPlaylistStart + part + "file://" + kDevice + "\n#EXT-X-ENDLIST\n",
        "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=64000\n" + address + "\n",
        kPlaylistStart + std::string("#EXT-X-KEY:METHOD=AES-128,URI=\"") + address + "\"\n" + part +
            "/part.ts\n#EXT-X-ENDLIST\n",
        "#EXTM3U\n" + address + "\n",
        "[playlist]\nNumberOfEntries=1\nFile1=" + address + "\n",
    };
    const Station station([&](const Visit& visit) {
        if (std::isdigit(static_cast<unsigned char>(visit.Path().at(1))))
            visit.Send(Head(kPlaylistType) + playlists.at(std::stoul(visit.Path().substr(1))));
        else if (visit.Path() == "/good.m3u8")
            visit.Send(Head(kPlaylistType) + kPlaylistStart + part + "good.mp3\n#EXT-X-ENDLIST\n");
        else if (visit.Path() == "/good.mp3")
            visit.Send(Head("audio/mpeg") + SilentMp3());
        else
            visit.Send(Head("video/mp2t") + std::string(1880, 'G'));
    });
    Listen();
    Play(station.Url() + "/good.m3u8");
    ASSERT_EQ(Failure(), "* addmed EOM=" + m_stream) << "playlists are played";
    for (std::size_t number = 0; number < playlists.size(); ++number) {
        Play(station.Url() + "/" + std::to_string(number) + ".m3u8");
        EXPECT_TRUE(IsBad(Failure())) << playlists.at(number);
        EXPECT_FALSE(trap.HasVisitor()) << playlists.at(number);
        EXPECT_FALSE(Server().HasOpen(kDevice)) << playlists.at(number);
    }
    EXPECT_TRUE(StillPlays());
    EXPECT_EQ(Server().Errors().find("abandoned"), std::string::npos);
}

TEST_F(HostileStation, AStationThatNeverPlaysIsBad) {
    m_serverOptions = {"--sound-patience", "5000"};
    const std::string wav = WavOf({{500, 1}});
    const Station station([&](const Visit& visit) {
        if (visit.Path() == "/drips") {
            visit.Send(Head("audio/x-wav"));
            for (std::size_t sent = 0; visit.Send(wav.substr(sent, 1)) && visit.Dawdle(); ++sent) {
            }
        } else if (visit.Path() == "/stalls") {
            visit.Send(Head("audio/x-wav") + wav.substr(0, 100));
            while (visit.Dawdle()) {
            }
        } else if (visit.Path() == "/silent") {
            while (visit.Dawdle()) {
            }
        } else if (visit.Dawdle()) {
            visit.Send("HTTP/1.0 302 Found\r\nLocation: /again" + visit.Path() + "\r\n\r\n");
        }
    });
    Listen();
    for (const char* path : {"/drips", "/stalls", "/silent"}) {
        Play(station.Url() + path);
        EXPECT_TRUE(IsBad(Failure(), "no sound for 5 s")) << path;
    }
    Play(station.Url() + "/redirects");
    EXPECT_TRUE(IsBad(Failure()));
    EXPECT_TRUE(StillPlays());
}

TEST_F(HostileStation, ARedirectLeadsToNoFileOfThisMachine) {
    const Trap trap(PathOf("trap"));
    const Station station([&](const Visit& visit) {
        visit.Send("HTTP/1.0 302 Found\r\nLocation: file://" + trap.Path() + "\r\n\r\n");
    });
    Listen();
    Play(station.Url() + "/");
    EXPECT_TRUE(IsBad(Failure()));
    EXPECT_FALSE(trap.HasVisitor());
}

TEST_F(HostileStation, AStationThatHasPlayedIsConnectedToUntilItIsRemoved) {
    m_serverOptions = {"--first-retry", "100"};
    std::atomic<bool> works{true};
    const Station station([&](const Visit& visit) {
        if (works)
            visit.Send(Head("audio/x-wav", kRadio) + WavOf({{500, 1}}));
    });
    Listen();
    Play(station.Url() + "/");
    EventsUntil(Status("playing"));
    works = false;
    // Whether it closes the connection, as here, or does not answer.
    for (const char* wait : {"1 s", "1 s", "1 s", "1 s", "2 s"})
        for (const std::string& event : EventsUntil(Status("reconnecting in " + std::string(wait))))
            EXPECT_FALSE(event.starts_with("* addmed")) << event;
    works = true;
    EventsUntil(Status("playing"));
    EventsUntil(Status("reconnecting in 1 s"));
    EXPECT_EQ(m_driver->Ask("remmed " + m_stream), "OK remmed " + m_stream);
    EXPECT_TRUE(StillPlays());
}

TEST_F(HostileStation, ALostStationIsConnectedToWhilePausedAndWaits) {
    m_serverOptions = {"--first-retry", "100"};
    std::atomic<bool> works{true};
    std::atomic<unsigned> sent{0};
    const Station station([&](const Visit& visit) {
        if (works && visit.Send(Head("audio/x-wav", kRadio) + WavOf({{500, 1}})))
            ++sent;
    });
    const auto room = AddRoom();
    Listen();
    EXPECT_EQ(m_driver->Ask("addcli " + m_stream + " " + room->Client()), "OK addcli " + m_stream);
    Play(station.Url() + "/");
    EventsUntil(Status("playing"));
    works = false;
    EventsUntil(Status("reconnecting in 1 s"));
    EXPECT_EQ(m_driver->Ask("setsta " + m_stream + " pause"), "OK setsta " + m_stream);
    const unsigned before = sent;
    works = true;
    EXPECT_TRUE(WaitUntil([&] { return sent > before; }));
    const double heard = room->Heard().Seconds(500);
    EXPECT_EQ(m_driver->Ask("setsta " + m_stream + " play"), "OK setsta " + m_stream);
    EventsUntil(Status("playing"));
    EXPECT_TRUE(WaitUntil([&] { return room->Heard().Seconds(500) > heard + 0.5; }));
}

TEST_F(HostileStation, WhatTellsNoLengthAndIsNoStationEnds) {
    const Station station([](const Visit& visit) { visit.Send(Head("audio/x-wav") + WavOf({{500, 0.25}})); });
    Listen();
    Play(station.Url() + "/");
    EXPECT_EQ(Failure(), "* addmed EOM=" + m_stream);
    EXPECT_EQ(station.Visits(), 1U);
}

TEST_F(HostileStation, TitlesAreThrottled) {
    constexpr std::size_t kTitles = 40;
    constexpr std::size_t kBetween = 8192;
    constexpr std::size_t kBefore = 40; // what the reserve takes
    const Station station([&](const Visit& visit) {
        const std::string wav = WavOf({{500, 60}});
        visit.Send(Head("audio/x-wav", "icy-metaint: " + std::to_string(kBetween) + "\r\n"));
        for (std::size_t number = 0; number < wav.size() / kBetween; ++number) {
            std::string title;
            if (number > kBefore && number <= kBefore + kTitles) {
                title = "StreamTitle='Title " + std::to_string(number - kBefore) + "';";
                title.resize((title.size() + 15) / 16 * 16, '\0');
                visit.Dawdle();
            }
            visit.Send(wav.substr(number * kBetween, kBetween) + static_cast<char>(title.size() / 16) +
                       title);
        }
        while (visit.Dawdle()) {
        }
    });
    Listen();
    Play(station.Url() + "/");
    std::size_t told = 0;
    for (const std::string& event : EventsUntil(Info("Title " + std::to_string(kTitles))))
        told += event.starts_with(Info("")) ? 1 : 0;
    EXPECT_LT(told, kTitles / 2);
}

TEST_F(HostileStation, AStationThatSendsTooFastIsReadAsItPlays) {
    // The sound of six minutes, which has no place in the store of six seconds nor in what the system keeps.
    constexpr std::size_t kMost = 64U << 20;
    std::atomic<std::size_t> sent{0};
    const Station station([&](const Visit& visit) {
        const std::string endless = "\xff\xff\xff\x7f";
        const std::string wav = WavOf({{500, 1}});
        visit.Send(Head("audio/x-wav") + wav.substr(0, 40) + endless);
        const std::string second = wav.substr(44);
        while (sent < 2 * kMost && visit.Send(second))
            sent += second.size();
        while (visit.Dawdle()) {
        }
    });
    const auto room = AddRoom();
    Listen();
    EXPECT_EQ(m_driver->Ask("addcli " + m_stream + " " + room->Client()), "OK addcli " + m_stream);
    Play(station.Url() + "/");
    EXPECT_TRUE(room->Hears(500, 1));
    EXPECT_LT(sent, kMost);
}

TEST_F(HostileStation, ASourceThatDoesNotEndIsLeftAlone) {
    const Trap trap(PathOf("trap"));
    m_serverOptions = {"--end-patience", "200",     "--sound-patience",
                       "5000",           "--input", "trap=filesrc location=" + trap.Path()};
    Listen();
    EXPECT_EQ(m_driver->Ask("addmed " + m_stream + " trap"), "OK addmed " + m_stream);
    EXPECT_TRUE(IsBad(Failure(), "no sound for 5 s"));
    EXPECT_TRUE(IsLogged("a source does not end: abandoned, 1 hang now"));
    EXPECT_TRUE(StillPlays());
    EXPECT_TRUE(trap.HasVisitor());
    EXPECT_TRUE(IsLogged("has ended, 0 hang now"));
    EXPECT_TRUE(StillPlays());
}

TEST_F(HostileStation, AServerEndsThoughASourceDoesNot) {
    const Trap trap(PathOf("trap"));
    m_serverOptions = {"--end-patience", "200", "--input", "trap=filesrc location=" + trap.Path()};
    Listen();
    EXPECT_EQ(m_driver->Ask("addmed " + m_stream + " trap"), "OK addmed " + m_stream);
    Server().Signal(SIGTERM);
    EXPECT_EQ(Server().WaitForExit(), 0);
}

} // namespace
} // namespace korvel::tests
