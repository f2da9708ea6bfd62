#include <gtest/gtest.h>

#include "Songs.h"
#include "house/House.h"

namespace korvel::controller {
namespace {

constexpr Milliseconds kNow{5000};

class HouseModelTest : public testing::Test {
protected:
    // A session that is live in those rooms.
    SessionId Live(std::vector<RoomId> rooms, std::string_view songs = "abc") {
        const SessionId id = house.Begin();
        house.SetRooms(id, std::move(rooms));
        house.SetPresence(id, Presence::Live, kNow);
        house.SetMedia(id, Songs(songs));
        return id;
    }
    const Session& Of(SessionId id) const { return *house.FindSession(id); }
    ChangeMask ChangesOf(SessionId id) { return house.TakeChanges().sessions[id]; }

    House house{{{1, "Kitchen", {}, {}}, {2, "Bath", {}, {}}},
                {.revision = 1000, .session = 10, .entry = 500}};
};

TEST_F(HouseModelTest, NumbersGoOnWhereTheyStopped) {
    const SessionId id = Live({1});
    EXPECT_EQ(id, SessionId(10));
    EXPECT_EQ(Text(Of(id).entries), "500:a 501:b 502:c");
    EXPECT_EQ(house.GetNumbers().session, 11U);
    EXPECT_EQ(house.GetNumbers().entry, 503U);
    EXPECT_GT(Of(id).revision, Revision(1000));
}

TEST_F(HouseModelTest, EachChangeHasANewerRevisionAndIsToldOnce) {
    const SessionId id = Live({1});
    house.TakeChanges();
    const Revision before = Of(id).revision;
    house.SetTransport(id, Transport::Playing);
    EXPECT_GT(Of(id).revision, before);
    const Changes changes = house.TakeChanges();
    EXPECT_EQ(changes.sessions.at(id), kChangedState);
    EXPECT_EQ(changes.revision, house.GetRevision());
    EXPECT_TRUE(house.TakeChanges().IsEmpty());
}

TEST_F(HouseModelTest, SayingTheSameAgainIsNoChange) {
    const SessionId id = Live({1});
    house.SetModes(id, true, false);
    house.TakeChanges();
    house.SetModes(id, true, false);
    house.SetRooms(id, {1});
    house.SetMedia(id, Songs("abc"));
    house.SetTransport(id, Transport::Stopped);
    house.SetPresence(id, Presence::Live, kNow);
    house.SetRoomProblem(1, {});
    EXPECT_TRUE(house.TakeChanges().IsEmpty());
}

TEST_F(HouseModelTest, TheListenerIsCalledOnceUntilTheChangesAreTaken) {
    int called = 0;
    house.SetListener([&] { ++called; });
    Live({1, 2});
    EXPECT_EQ(called, 1);
    house.TakeChanges();
    house.SetRoomProblem(1, Problem{"silent", "its player does not answer"});
    EXPECT_EQ(called, 2);
}

TEST_F(HouseModelTest, ARoomHearsOneSession) {
    const SessionId first = Live({1, 2});
    const SessionId second = Live({2});
    EXPECT_EQ(Of(first).rooms, std::vector<RoomId>{1});
    EXPECT_EQ(house.SessionOf(2)->id, second);
    house.SetRooms(second, {2, 1});
    EXPECT_TRUE(Of(first).rooms.empty());
    EXPECT_EQ(house.SessionOf(1)->id, second);
}

TEST_F(HouseModelTest, ARoomChangesWithItsSession) {
    const SessionId id = Live({1});
    house.TakeChanges();
    house.SetRooms(id, {2});
    EXPECT_EQ(house.TakeChanges().rooms,
              (std::map<RoomId, ChangeMask>{{1, kChangedSession}, {2, kChangedSession}}));
    house.SetTransport(id, Transport::Playing);
    EXPECT_TRUE(house.TakeChanges().rooms.empty()) << "what its session does is no change of the room";
    house.SetPresence(id, Presence::Asleep, kNow);
    EXPECT_EQ(house.TakeChanges().rooms, (std::map<RoomId, ChangeMask>{{2, kChangedSession}}));
}

TEST_F(HouseModelTest, ASleepingSessionKeepsItsPlaceAndItsRoomHearsNothing) {
    const SessionId id = Live({1});
    house.SetCurrent(id, EntryId(501));
    house.SetPlayhead(id, {.clock = Milliseconds(1000), .position = Milliseconds(60000), .runs = true});
    house.SetStream(id, StreamWord{.state = StreamWord::State::Playing});
    house.SetPresence(id, Presence::Asleep, Milliseconds(3000));
    EXPECT_EQ(Of(id).current, EntryId(501));
    EXPECT_EQ(Of(id).playhead, (Playhead{Milliseconds(3000), Milliseconds(62000), false}));
    EXPECT_FALSE(Of(id).stream);
    EXPECT_EQ(Of(id).rooms, std::vector<RoomId>{1});
    EXPECT_EQ(house.SessionOf(1), nullptr);
}

TEST_F(HouseModelTest, ASessionThatWakesTakesItsRooms) {
    const SessionId sleeper = Live({1, 2});
    house.SetPresence(sleeper, Presence::Asleep, kNow);
    const SessionId other = Live({2});
    house.SetPresence(sleeper, Presence::Live, kNow);
    EXPECT_TRUE(Of(other).rooms.empty());
    EXPECT_EQ(house.SessionOf(2)->id, sleeper);
}

TEST_F(HouseModelTest, AnExpectedListHasTheEntriesThatTheActionMeant) {
    const SessionId id = Live({1}, "aba");
    Entries moved = Of(id).entries;
    std::swap(moved[0], moved[2]);
    house.Expect(id, moved);
    house.SetMedia(id, Songs("aba"));
    EXPECT_EQ(Text(Of(id).entries), "502:a 501:b 500:a");
}

TEST_F(HouseModelTest, AnotherListThanTheExpectedOneIsFollowed) {
    const SessionId id = Live({1}, "abc");
    Entries moved = Of(id).entries;
    std::swap(moved[0], moved[2]);
    house.Expect(id, moved);
    house.SetMedia(id, Songs("ab"));
    EXPECT_EQ(Text(Of(id).entries), "500:a 501:b");
    house.SetMedia(id, Songs("cba"));
    EXPECT_EQ(Text(Of(id).entries), "503:c 501:b 500:a") << "it is forgotten";
}

TEST_F(HouseModelTest, WhatIsCurrentGoesWithItsEntry) {
    const SessionId id = Live({1});
    house.SetCurrent(id, EntryId(501));
    house.TakeChanges();
    house.SetMedia(id, Songs("ac"));
    EXPECT_EQ(Of(id).current, EntryId::None);
    EXPECT_EQ(ChangesOf(id), kChangedEntries | kChangedCurrent);
    house.SetCurrent(id, EntryId(501));
    EXPECT_EQ(Of(id).current, EntryId::None);
}

TEST_F(HouseModelTest, TheEntriesHaveARevisionOfTheirOwn) {
    const SessionId id = Live({1});
    const Revision before = Of(id).entriesRevision;
    house.SetTransport(id, Transport::Playing);
    EXPECT_EQ(Of(id).entriesRevision, before);
    house.SetMedia(id, Songs("a"));
    EXPECT_GT(Of(id).entriesRevision, before);
}

TEST_F(HouseModelTest, WhoMissedSomethingGetsWhatIsNewer) {
    const SessionId first = Live({1});
    const SessionId second = Live({2});
    const SessionId third = Live({});
    const Revision known = house.GetRevision();
    EXPECT_TRUE(house.GetSince(known)->sessions.empty());
    house.SetTransport(second, Transport::Playing);
    house.End(third);
    const auto since = house.GetSince(known);
    ASSERT_TRUE(since);
    EXPECT_EQ(since->sessions, std::vector<SessionId>{second});
    EXPECT_EQ(since->ended, std::vector<SessionId>{third});
    EXPECT_TRUE(since->rooms.empty());
    (void)first;
}

TEST_F(HouseModelTest, WhoKnowsAnotherRunGetsAllOfIt) {
    EXPECT_FALSE(house.GetSince(Revision(999)));
    EXPECT_FALSE(house.GetSince(static_cast<Revision>(static_cast<std::uint64_t>(house.GetRevision()) + 1)));
    EXPECT_TRUE(house.GetSince(Revision(1000)));
}

TEST_F(HouseModelTest, WhoMissedMoreEndsThanAreRememberedGetsAllOfIt) {
    const Revision known = house.GetRevision();
    Revision later = known;
    for (std::size_t i = 0; i <= kMaxEndedRemembered; ++i) {
        house.End(house.Begin());
        if (i == 0)
            later = house.GetRevision();
    }
    EXPECT_FALSE(house.GetSince(known));
    ASSERT_TRUE(house.GetSince(later));
    EXPECT_EQ(house.GetSince(later)->ended.size(), kMaxEndedRemembered);
}

TEST_F(HouseModelTest, WhatWasKeptComesBackAsleepAndStandsStill) {
    Session kept;
    kept.id = SessionId(3);
    kept.rooms = {1};
    kept.entries = Queue("ab");
    kept.current = EntryId(2);
    kept.playhead = {.clock = Milliseconds(99), .position = Milliseconds(60000), .runs = true};
    kept.presence = Presence::Live;
    house.Restore(kept);
    EXPECT_EQ(Of(SessionId(3)).GetState(), SessionState::Sleeping);
    EXPECT_EQ(Of(SessionId(3)).playhead, (Playhead{Milliseconds(0), Milliseconds(60000), false}));
    EXPECT_EQ(Of(SessionId(3)).current, EntryId(2));
    EXPECT_EQ(house.SessionOf(1), nullptr);
}

TEST_F(HouseModelTest, NothingHappensToASessionThatIsNotThere) {
    const SessionId none = SessionId(77);
    house.End(none);
    house.SetPresence(none, Presence::Live, kNow);
    house.SetRooms(none, {1});
    house.SetMedia(none, Songs("a"));
    house.SetEntries(none, Queue("a"));
    house.SetCurrent(none, EntryId(1));
    house.Expect(none, {});
    house.SetRoomProblem(9, Problem{"silent", "its player does not answer"});
    EXPECT_TRUE(house.TakeChanges().IsEmpty());
}

} // namespace
} // namespace korvel::controller
