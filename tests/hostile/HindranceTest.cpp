// What the server waits for and does not come.
#include <sys/resource.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "StationBed.h"

namespace korvel::tests {
namespace {

// Nothing of it is cut short by a busy machine.
constexpr const char* kPatient = "60000";
// For an event that may not come.
constexpr std::chrono::milliseconds kMoment{100};

class HostileHindrance : public StationBed {
protected:
    void SetUp() override {
        m_serverProgram = KORVEL_HINDERED_AUDIOSERVER;
        ::setenv("KORVEL_HINDRANCES", PathOf("").c_str(), 1);
    }
    void TearDown() override { ::unsetenv("KORVEL_HINDRANCES"); }

    // What: see HinderedServer.cpp.
    void Hinder(const std::string& what) { WriteFile(PathOf(what), ""); }
    void Clear(const std::string& what) { std::filesystem::remove(PathOf(what)); }
    std::string LongFile() { return FileMedia(ToneFile("long.wav", {{500, 10}})); }
    std::size_t TimesLogged(const std::string& text) {
        const std::string log = Server().Errors();
        std::size_t times = 0;
        for (auto at = log.find(text); at != std::string::npos; at = log.find(text, at + 1))
            ++times;
        return times;
    }

    const Station m_radio{[](const Visit& visit) {
        visit.Send(Head("audio/x-wav", kRadio) + WavOf({{500, 0.25}}));
    }};
};

TEST_F(HostileHindrance, ALostStationIsConnectedToWhenItsSourceHasEnded) {
    m_serverOptions = {"--first-retry", "100", "--end-patience", kPatient};
    const auto room = AddRoom();
    Listen();
    m_driver->Ask("addcli " + m_stream + " " + room->Client());
    Hinder("source");
    Play(m_radio.Url() + "/");
    EventsUntil(Status("reconnecting in 1 s"));
    EXPECT_TRUE(room->Hears(0, 0.5));
    EXPECT_EQ(m_radio.Visits(), 1U);
    Clear("source");
    for (const std::string& event : EventsUntil(Status("playing")))
        EXPECT_FALSE(event.starts_with("* addmed")) << event;
}

TEST_F(HostileHindrance, ALostStationWhoseSourceDoesNotEndIsBad) {
    m_serverOptions = {"--first-retry", "100", "--end-patience", "3000"};
    Listen();
    Hinder("source");
    Play(m_radio.Url() + "/");
    EventsUntil(Status("reconnecting in 1 s"));
    EXPECT_TRUE(IsBad(m_driver->NextEvent(), "the source does not end"));
    EXPECT_TRUE(StillPlays());
    Clear("source");
    EXPECT_TRUE(IsLogged("a source that was abandoned has ended, 0 hang now"));
}

TEST_F(HostileHindrance, AStationThatBreaksBeforeItsLengthIsFoundIsConnectedToAgain) {
    m_serverOptions = {"--first-retry", kPatient, "--end-patience", kPatient};
    const auto room = AddRoom();
    Listen();
    m_driver->Ask("addcli " + m_stream + " " + room->Client());
    Hinder("length");
    Play(m_radio.Url() + "/");
    EventsUntil(Status("playing"));
    EXPECT_TRUE(WaitUntil([&] { return room->Heard().Seconds(500) > 0.15; }));
    EXPECT_TRUE(room->Hears(0, 0.2)) << "it is over";
    Clear("length");
    EXPECT_EQ(m_driver->NextEvent(), "* SYS STREAM=" + m_stream + " streamCaps:NO-PAUSE");
    EXPECT_EQ(m_driver->NextEvent(), Status("reconnecting in 60 s"));
}

TEST_F(HostileHindrance, AMediaWhoseLengthIsNotFoundEnds) {
    m_serverOptions = {"--end-patience", "300"};
    Listen();
    Hinder("length");
    Play(m_radio.Url() + "/");
    EXPECT_EQ(Failure(), "* addmed EOM=" + m_stream);
    Clear("length");
    EXPECT_TRUE(StillPlays());
}

TEST_F(HostileHindrance, FilesThatHangKeepNoStationFromPlaying) {
    m_serverOptions = {"--end-patience", "200"};
    const std::string file = LongFile();
    Listen();
    Hinder("source");
    EXPECT_TRUE(WaitUntil([&] {
        m_driver->Ask("addmed " + m_stream + " " + file);
        return IsBad(m_driver->NextEvent(kMoment), "too many sources hang");
    }));
    Play(m_radio.Url() + "/");
    EventsUntil(Status("playing"));
    Clear("source");
    EXPECT_TRUE(WaitUntil([this] { return StillPlays(); }));
}

TEST_F(HostileHindrance, WhatIsUnderWayToItsEndIsBounded) {
    constexpr unsigned kMaxThatEnd = 256;
    constexpr rlim_t kDescriptorsForThem = 9000;
    rlimit descriptors{};
    ::getrlimit(RLIMIT_NOFILE, &descriptors);
    const bool hasDescriptors = descriptors.rlim_max >= kDescriptorsForThem;
    m_serverOptions = {"--end-patience", kPatient};
    const std::string file = LongFile();
    Listen();
    Hinder("source");
    std::string lines;
    for (unsigned count = 0; count < kMaxThatEnd + 2; ++count)
        lines += "1 addmed " + m_stream + " " + file + "\r\n";
    m_driver->SendRaw(lines);
    EXPECT_TRUE(IsBad(Failure(), hasDescriptors ? "too many sources hang" : "too many files are open"));
    if (hasDescriptors) {
        Play(m_radio.Url() + "/");
        EventsUntil(Status("playing"));
    }
    Clear("source");
    EXPECT_TRUE(WaitUntil([this] { return StillPlays(); }));
}

TEST_F(HostileHindrance, AnInputThatWaitedForItsDeviceInVainIsNotOpened) {
    m_serverOptions = {"--end-patience", kPatient, "--input", "tone=audiotestsrc is-live=true freq=500"};
    const auto room = AddRoom();
    Listen();
    Hinder("source");
    m_driver->Ask("addmed " + m_stream + " tone");
    EXPECT_TRUE(IsLogged("a source is opened"));
    m_driver->Ask("addmed " + m_stream + " tone");
    EXPECT_EQ(m_driver->Ask("remmed " + m_stream), "OK remmed " + m_stream);
    m_driver->Ask("addcli " + m_stream + " " + room->Client());
    m_driver->Ask("addmed " + m_stream + " tone");
    Clear("source");
    EXPECT_TRUE(room->Hears(500, 0.2)) << "the last one, which has waited for both";
    EXPECT_EQ(TimesLogged("a source is opened"), 2U);
}

TEST_F(HostileHindrance, AnErrorOfTheProgramEndsNoMusic) {
    m_serverOptions = {"--first-retry", "3000"};
    Listen();
    Play(m_radio.Url() + "/");
    EventsUntil(Status("reconnecting in 3 s"));
    Hinder("internal");
    EXPECT_TRUE(IsLogged("internal error: an error of this program"));
    Clear("internal");
    EXPECT_TRUE(StillPlays());
}

TEST_F(HostileHindrance, AConnectionWhoseRequestMeetsAnErrorOfTheProgramEnds) {
    Listen();
    const auto other = Connect();
    EXPECT_EQ(other->Ask("reset"), "OK reset");
    Hinder("internal");
    m_driver->SendRaw("1 addmed " + m_stream + " " + LongFile() + "\r\n");
    EXPECT_TRUE(m_driver->IsClosedByServer());
    Clear("internal");
    EXPECT_EQ(other->Ask("reset"), "OK reset");
    Listen();
    EXPECT_TRUE(StillPlays());
}

} // namespace
} // namespace korvel::tests
