#include <gtest/gtest.h>

#include "Songs.h"
#include "house/Session.h"

namespace korvel::controller {

// In words that a failed test shows.
static void PrintTo(SessionState state, std::ostream* out) {
    static constexpr const char* kNames[] = {"Stopped",   "Playing",      "Paused",  "Ended",
                                             "Buffering", "Reconnecting", "Sleeping"};
    *out << kNames[static_cast<std::size_t>(state)];
}

namespace {

using State = StreamWord::State;

Session Playing() {
    Session session;
    session.presence = Presence::Live;
    session.transport = Transport::Playing;
    session.entries = Queue("ab");
    return session;
}

TEST(SessionState, IsTheDriversWhereItDoesNotPlay) {
    Session session = Playing();
    session.transport = Transport::Paused;
    EXPECT_EQ(session.GetState(), SessionState::Paused);
    session.transport = Transport::Stopped;
    EXPECT_EQ(session.GetState(), SessionState::Stopped);
    session.transport = Transport::Ended;
    EXPECT_EQ(session.GetState(), SessionState::Ended);
}

TEST(SessionState, PlayingNeedsTheAudioServersWord) {
    Session session = Playing();
    EXPECT_EQ(session.GetState(), SessionState::Playing) << "no audio server tells";
    session.stream = StreamWord{.state = State::Buffering};
    EXPECT_EQ(session.GetState(), SessionState::Buffering);
    session.stream->state = State::Playing;
    EXPECT_EQ(session.GetState(), SessionState::Playing);
    session.stream->state = State::Reconnecting;
    EXPECT_EQ(session.GetState(), SessionState::Reconnecting);
    session.stream->state = State::Idle;
    EXPECT_EQ(session.GetState(), SessionState::Stopped);
}

TEST(SessionState, SleepsAndWaitsWhateverTheDriverSaid) {
    Session session = Playing();
    session.presence = Presence::Asleep;
    EXPECT_EQ(session.GetState(), SessionState::Sleeping);
    session.presence = Presence::Waiting;
    EXPECT_EQ(session.GetState(), SessionState::Reconnecting);
}

TEST(SessionAbilities, ASongCanBePausedAndSkipped) {
    Session session = Playing();
    EXPECT_EQ(session.GetAbilities(), (Abilities{.canPause = true, .canSeek = false, .canSkip = true}));
    session.stream = StreamWord{.state = State::Playing, .canSeek = true};
    EXPECT_EQ(session.GetAbilities(), (Abilities{.canPause = true, .canSeek = true, .canSkip = true}));
}

TEST(SessionAbilities, APausedSongCanBeSoughtIn) {
    Session session = Playing();
    session.transport = Transport::Paused;
    session.stream = StreamWord{.state = State::Paused, .canSeek = true};
    EXPECT_EQ(session.GetAbilities(), (Abilities{.canPause = false, .canSeek = true, .canSkip = true}));
}

TEST(SessionAbilities, WhatIsLiveCanOnlyBeStopped) {
    Session session = Playing();
    session.entries = {{EntryId(1), {MediaKind::Station, "7"}, {}}};
    session.stream = StreamWord{.state = State::Playing, .live = true, .canSeek = true};
    EXPECT_EQ(session.GetAbilities(), Abilities());
}

TEST(SessionAbilities, ASleepingSessionCanOnlyBeWoken) {
    Session session = Playing();
    session.presence = Presence::Asleep;
    EXPECT_EQ(session.GetAbilities(), Abilities());
}

TEST(Playhead, RunsWithTheClockUnlessItStands) {
    const Playhead runs{.clock = Milliseconds(1000), .position = Milliseconds(60000), .runs = true};
    EXPECT_EQ(runs.At(Milliseconds(3500)), Milliseconds(62500));
    const Playhead stands{.clock = Milliseconds(1000), .position = Milliseconds(60000), .runs = false};
    EXPECT_EQ(stands.At(Milliseconds(3500)), Milliseconds(60000));
}

} // namespace
} // namespace korvel::controller
