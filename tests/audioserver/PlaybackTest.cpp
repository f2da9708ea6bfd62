// What a room hears of one stream.
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>

#include <thread>

#include "Bed.h"

namespace korvel::tests {
namespace {

class Playback : public Bed {
protected:
    // A stream with the room as its client.
    std::string StreamTo(LineClient& driver, const Room& room) {
        const std::string stream = std::to_string(driver.AddStream());
        EXPECT_EQ(driver.Ask("addcli " + stream + " " + room.Client()), "OK addcli " + stream);
        return stream;
    }
};

TEST_F(Playback, PlaysASongAndReportsItsEnd) {
    const auto room = AddRoom();
    const auto driver = Connect();
    EXPECT_EQ(driver->Ask("reset"), "OK reset");
    const std::string stream = StreamTo(*driver, *room);
    EXPECT_EQ(driver->Ask("addmed " + stream + " " + FileMedia(ToneFile("a.wav", {{500, 0.8}}))),
              "OK addmed " + stream);
    EXPECT_EQ(driver->NextEvent(), "* addmed EOM=" + stream);
    EXPECT_TRUE(room->Hears(0, 0.2));
    EXPECT_TRUE(room->Stop());
    EXPECT_NEAR(room->Heard().Seconds(500), 0.8, 0.1);
    EXPECT_EQ(room->Heard().Order({0, 500}), (std::vector<int>{500, 0}));
}

// Whether the system lets a thread of this test come before ordinary work, as it may those of the programs.
bool IsRealTimeAllowed() {
    bool allowed = false;
    std::jthread([&allowed] {
        rlimit limit{};
        ::getrlimit(RLIMIT_RTPRIO, &limit);
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_RTPRIO, &limit);
        const sched_param priority{1};
        allowed = ::pthread_setschedparam(::pthread_self(), SCHED_RR, &priority) == 0;
    }).join();
    return allowed;
}

TEST_F(Playback, WhatCarriesSoundComesBeforeOrdinaryWorkWhereTheSystemAllowsIt) {
    const bool allowed = IsRealTimeAllowed();
    const auto room = AddRoom();
    const auto driver = Connect();
    const std::string stream = StreamTo(*driver, *room);
    driver->Ask("addmed " + stream + " " + FileMedia(ToneFile("long.wav", {{500, 20}})));
    EXPECT_TRUE(room->Hears(500, 0.1));
    // The sender and what hands the sound over to it, and no decoder.
    EXPECT_EQ(Server().RealTimeThreads(), allowed ? 2U : 0U);
    EXPECT_TRUE(!allowed || room->RealTimeThreads() > 5);
    for (const std::string& log : {Server().Errors(), room->Log()})
        EXPECT_EQ(log.find("no real-time priority") == std::string::npos, allowed) << log;
    // A thread that has sent decodes as any other.
    EXPECT_EQ(driver->Ask("remstr " + stream), "OK remstr " + stream);
    EXPECT_TRUE(WaitUntil([&] { return Server().RealTimeThreads() == 0; }));
}

TEST_F(Playback, GoesOnAfterAPauseAtTheSamePlace) {
    const auto room = AddRoom();
    const auto driver = Connect();
    const std::string stream = StreamTo(*driver, *room);
    const std::string song = ToneFile("a.wav", {{500, 0.8}, {1000, 0.4}});
    driver->Ask("addmed " + stream + " " + FileMedia(song));
    EXPECT_TRUE(room->Hears(500, 0.2));
    EXPECT_EQ(driver->Ask("setsta " + stream + " pause"), "OK setsta " + stream);
    EXPECT_TRUE(room->Hears(0, 0.6));
    EXPECT_EQ(driver->Ask("setsta " + stream + " play"), "OK setsta " + stream);
    EXPECT_EQ(driver->NextEvent(), "* addmed EOM=" + stream);
    EXPECT_TRUE(room->Hears(0, 0.2));
    EXPECT_EQ(room->Heard().Order({0, 500, 1000}), (std::vector<int>{500, 0, 500, 1000, 0}));
    EXPECT_NEAR(room->Heard().Seconds(500), 0.8, 0.12);
    EXPECT_NEAR(room->Heard().Seconds(1000), 0.4, 0.1);
}

TEST_F(Playback, ANewMediaTakesOverAtOnceAndTheOldOneIsNeverHeardOfAgain) {
    const auto room = AddRoom();
    const auto driver = Connect();
    const std::string stream = StreamTo(*driver, *room);
    driver->Ask("addmed " + stream + " " + FileMedia(ToneFile("long.wav", {{500, 20}})));
    EXPECT_TRUE(room->Hears(500, 0.2));
    driver->Ask("addmed " + stream + " " + FileMedia(PathOf("missing.wav")));
    driver->Ask("addmed " + stream + " " + FileMedia(ToneFile("next.wav", {{1000, 0.4}})));
    const std::string event = driver->NextEvent();
    // The missing one may have failed before it was replaced, never after.
    EXPECT_EQ(event.starts_with("* addmed BAD=") ? driver->NextEvent() : event, "* addmed EOM=" + stream);
    EXPECT_TRUE(room->Hears(0, 0.2));
    EXPECT_EQ(room->Heard().Order({500, 1000}), (std::vector<int>{500, 1000}));
    EXPECT_EQ(driver->Ask("reset"), "OK reset");
    EXPECT_EQ(driver->NextEvent(std::chrono::milliseconds(0)), "");
}

TEST_F(Playback, ANewMediaPlaysAlsoWhenTheOldOneWasPaused) {
    const auto room = AddRoom();
    const auto driver = Connect();
    const std::string stream = StreamTo(*driver, *room);
    driver->Ask("addmed " + stream + " " + FileMedia(ToneFile("long.wav", {{500, 20}})));
    driver->Ask("setsta " + stream + " pause");
    driver->Ask("addmed " + stream + " " + FileMedia(ToneFile("next.wav", {{1000, 0.3}})));
    EXPECT_EQ(driver->NextEvent(), "* addmed EOM=" + stream);
    EXPECT_TRUE(room->Hears(0, 0.2));
    EXPECT_NEAR(room->Heard().Seconds(1000), 0.3, 0.1);
}

TEST_F(Playback, EveryWayToEndAMediaSilencesTheRoomWithoutAnEvent) {
    const auto room = AddRoom();
    const auto driver = Connect();
    const std::string stream = StreamTo(*driver, *room);
    const std::string song = FileMedia(ToneFile("long.wav", {{500, 20}}));
    for (const std::string& end : {"remmed " + stream, "eos " + stream, "setsta " + stream + " stop"}) {
        driver->Ask("addmed " + stream + " " + song);
        EXPECT_TRUE(room->Hears(500, 0.1)) << end;
        EXPECT_EQ(driver->Ask(end), "OK " + end.substr(0, end.find(' ')) + " " + stream);
        EXPECT_TRUE(room->Hears(0, 0.2)) << end;
        EXPECT_EQ(driver->NextEvent(std::chrono::milliseconds(0)), "");
        EXPECT_EQ(driver->Ask("setsta " + stream + " play"), "OK setsta " + stream);
    }
}

TEST_F(Playback, PlaysAfterALongIdleTime) {
    const auto room = AddRoom();
    const auto driver = Connect();
    const std::string stream = StreamTo(*driver, *room);
    const std::string song = FileMedia(ToneFile("a.wav", {{500, 0.3}}));
    driver->Ask("addmed " + stream + " " + song);
    EXPECT_EQ(driver->NextEvent(), "* addmed EOM=" + stream);
    // Longer than the stream goes on sending silence.
    EXPECT_TRUE(room->Hears(0, 1.4));
    driver->Ask("addmed " + stream + " " + song);
    EXPECT_EQ(driver->NextEvent(), "* addmed EOM=" + stream);
    EXPECT_TRUE(room->Hears(0, 0.2));
    EXPECT_NEAR(room->Heard().Seconds(500), 0.6, 0.15);
}

} // namespace
} // namespace korvel::tests
