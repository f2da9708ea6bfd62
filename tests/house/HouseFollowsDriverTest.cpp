// Whatever is wished of a house, in whatever order and by whom: it shows what the driver does, and loses nothing.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "RandomWishes.h"

namespace korvel::controller {
namespace {

constexpr unsigned kSeed = 1009;
constexpr int kWishes = 20000;
// Of sessions that sleep; people clear those that they do not want.
constexpr std::size_t kMaxSleepers = 20;

using Counted = std::map<std::pair<MediaKind, std::string>, std::size_t>;

Counted Count(const Entries& entries) {
    Counted counted;
    for (const Entry& entry : entries)
        if (!entry.unplayable)
            ++counted[{entry.media.kind, entry.media.id}];
    return counted;
}

std::size_t CountCommon(const Counted& one, const Counted& other) {
    std::size_t common = 0;
    for (const auto& [media, count] : one)
        if (const auto found = other.find(media); found != other.end())
            common += std::min(count, found->second);
    return common;
}

class HouseFollowsDriver : public testing::Test {
protected:
    // A station's name is in no list of the driver, nor is an input.
    static bool Same(const MediaRef& listed, const MediaRef& shown) {
        return listed == shown || (listed.kind == MediaKind::Station && shown.kind == MediaKind::Station);
    }

    void CheckQueue(const QueueStatus& status) {
        const Session* const session =
            m_house.GetHouse().FindSession(m_house.GetReader().SessionOf(status.queueId));
        ASSERT_TRUE(session);
        EXPECT_EQ(session->presence, Presence::Live);
        EXPECT_EQ(session->rooms, status.rooms);
        const Transport shown =
            session->transport == Transport::Ended ? Transport::Stopped : session->transport;
        EXPECT_EQ(shown, status.transport);

        std::vector<MediaRef> listed = m_house.ListOf(status.queueId);
        std::vector<const Entry*> playable;
        for (const Entry& entry : session->entries)
            if (!entry.unplayable)
                playable.push_back(&entry);
        if (listed.empty() && playable.size() == 1 && playable.front()->media.kind == MediaKind::Input)
            return;
        ASSERT_EQ(playable.size(), listed.size());
        for (std::size_t i = 0; i < listed.size(); ++i)
            EXPECT_TRUE(Same(listed[i], playable[i]->media)) << i << ": " << playable[i]->media.id;
        CheckCurrent(*session, status, listed);
    }

    static void CheckCurrent(const Session& session, const QueueStatus& status,
                             const std::vector<MediaRef>& listed) {
        if (session.PlaysAlone())
            return;
        const Entry* const current = session.FindEntry(session.current);
        if (current) {
            EXPECT_EQ(current->media, status.song);
            EXPECT_FALSE(current->unplayable);
        } else {
            const bool shown = status.index < listed.size() && listed[status.index] == status.song;
            EXPECT_FALSE(shown) << "the driver shows one at " << status.index;
        }
    }

    void CheckHouse() {
        const House& house = m_house.GetHouse();
        const std::vector<QueueStatus> statuses = m_house.Statuses();
        for (const QueueStatus& status : statuses)
            CheckQueue(status);
        std::size_t live = 0;
        std::set<EntryId> entries;
        std::size_t count = 0;
        std::set<RoomId> heard;
        for (const auto& [id, session] : house.GetSessions()) {
            for (const Entry& entry : session.entries)
                entries.insert(entry.id);
            count += session.entries.size();
            if (session.presence == Presence::Asleep)
                continue;
            ++live;
            for (const RoomId room : session.rooms)
                EXPECT_TRUE(heard.insert(room).second) << "room " << room << " hears two sessions";
        }
        EXPECT_EQ(live, statuses.size());
        EXPECT_EQ(entries.size(), count) << "an id of an entry is there twice";
    }

    // Media that come in the place of what plays alone, or with CLEAR, and edits, may leave an empty queue, which goes.
    static bool MayClear(const std::string& said, const Session& session) {
        return session.PlaysAlone() || said.find("CLEAR=1") != std::string::npos ||
               said.starts_with("EDIT_QUEUE") || said.starts_with("REMOVE_SONG");
    }

    // What was there before `said` is still there, with the same ids, unless the driver's list has lost it.
    void CheckNothingLost(const std::map<SessionId, Session>& before, const std::string& said) {
        for (const auto& [id, old] : before) {
            const Session* const now = m_house.GetHouse().FindSession(id);
            if (!now) {
                EXPECT_TRUE(old.entries.empty() || MayClear(said, old)) << "a session with entries has ended";
                continue;
            }
            std::map<EntryId, const Entry*> entries;
            for (const Entry& entry : now->entries)
                entries[entry.id] = &entry;
            if (now->presence == Presence::Asleep) {
                for (const Entry& entry : old.entries)
                    EXPECT_TRUE(entries.contains(entry.id))
                        << "a sleeping session has lost " << entry.media.id;
                continue;
            }
            std::size_t kept = 0;
            for (const Entry& entry : old.entries) {
                const auto found = entries.find(entry.id);
                EXPECT_TRUE(found != entries.end() || !entry.unplayable) << "a refused entry has gone";
                if (found == entries.end())
                    continue;
                EXPECT_EQ(found->second->media, entry.media);
                kept += !entry.unplayable && !found->second->unplayable;
            }
            EXPECT_EQ(kept, CountCommon(Count(old.entries), Count(now->entries)))
                << "an entry that stayed has another id";
        }
    }

    void ClearSleepers() {
        std::vector<SessionId> asleep;
        for (const auto& [id, session] : m_house.GetHouse().GetSessions())
            if (session.presence == Presence::Asleep)
                asleep.push_back(id);
        if (asleep.size() > kMaxSleepers)
            for (const SessionId id : asleep)
                m_house.GetHouse().End(id);
    }

    DriverHouse m_house;
};

TEST_F(HouseFollowsDriver, WhateverIsWished) {
    RandomWishes wishes(m_house, kSeed);
    std::map<SessionState, int> seen;
    std::string story;
    for (int i = 0; i < kWishes; ++i) {
        const std::map<SessionId, Session> before = m_house.GetHouse().GetSessions();
        story = wishes.Wish();
        CheckHouse();
        CheckNothingLost(before, story);
        ASSERT_FALSE(HasFailure()) << "at wish " << i << " of seed " << kSeed << ": " << story;
        ASSERT_TRUE(m_house.GetFaults().empty()) << m_house.GetFaults().front();
        for (const auto& [id, session] : m_house.GetHouse().GetSessions())
            ++seen[session.GetState()];
        ClearSleepers();
    }
    for (const SessionState state : {SessionState::Stopped, SessionState::Playing, SessionState::Paused,
                                     SessionState::Ended, SessionState::Sleeping})
        EXPECT_GT(seen[state], 0) << "never seen: " << static_cast<int>(state);
}

} // namespace
} // namespace korvel::controller
