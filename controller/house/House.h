// How the house is: its rooms and its sessions.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "house/Changes.h"
#include "house/Follow.h"
#include "house/Room.h"
#include "house/Session.h"

namespace korvel::controller {

// How many ended sessions are remembered for those who ask what they missed.
inline constexpr std::size_t kMaxEndedRemembered = 256;

// The one place that knows how the house is. It decides nothing: who reads the driver, and the actions, say what they
// found or did, and each part that is really another gets a new revision. A room is in one session that is not asleep at
// most. One thread. Operations on a session that is not there do nothing.
class House {
public:
    // Where the numbers go on; greater than any that was given before, over restarts, too.
    struct Numbers {
        std::uint64_t revision = 1;
        std::uint64_t session = 1;
        std::uint64_t entry = 1;
    };

    House(std::vector<HouseRoom> rooms, Numbers next);

    // `listener` is called, from within an operation, with the first change after TakeChanges(); it must change nothing.
    void SetListener(std::function<void()> listener) { m_listener = std::move(listener); }
    Changes TakeChanges();

    const std::map<RoomId, HouseRoom>& GetRooms() const { return m_rooms; }
    const std::map<SessionId, Session>& GetSessions() const { return m_sessions; }
    // Null when there is none.
    const Session* FindSession(SessionId id) const;
    // The session that the room hears or waits for; null when there is none. Sleeping ones do not count.
    const Session* SessionOf(RoomId room) const;
    Revision GetRevision() const { return m_revision; }
    // None when it is not known any more, or never was: then all of the house is new.
    std::optional<Since> GetSince(Revision known) const;
    // For what an action is about to put into a queue.
    EntryId NewEntry() { return static_cast<EntryId>(m_nextEntry++); }
    Numbers GetNumbers() const;

    // A new one without rooms and entries, asleep.
    SessionId Begin();
    // One that was kept; its ids are older than the numbers that the house began with. It comes back asleep.
    void Restore(Session session);
    void End(SessionId id);

    // A session that falls asleep keeps its place; nothing of it plays.
    void SetPresence(SessionId id, Presence presence, Milliseconds now);
    void SetRooms(SessionId id, std::vector<RoomId> rooms);
    void SetTransport(SessionId id, Transport transport);
    void SetStream(SessionId id, std::optional<StreamWord> stream);
    void SetPlayhead(SessionId id, const Playhead& playhead);
    void SetModes(SessionId id, bool shuffle, bool repeat);
    void SetProblem(SessionId id, std::optional<Problem> problem);
    // The next list that the driver shows, if it says this, has these entries. For an action that knows better than
    // Follow() which entry goes where; forgotten with the next list.
    void Expect(SessionId id, Entries entries);
    // The driver's list.
    void SetMedia(SessionId id, std::span<const MediaRef> media);
    // An entry that is not there is none.
    void SetCurrent(SessionId id, EntryId current);
    // Of a session that is asleep, or of entries that the driver has just let go of.
    void SetEntries(SessionId id, Entries entries);
    void SetRoomProblem(RoomId id, std::optional<Problem> problem);

private:
    Session* Find(SessionId id);
    void Changed(Session& session, ChangeMask what);
    void Changed(HouseRoom& room, ChangeMask what);
    void RoomsChanged(const std::vector<RoomId>& before, const std::vector<RoomId>& after);
    void TakeRooms(const Session& from, const std::vector<RoomId>& rooms);
    void Tell();
    // Sets `member` and notes the change, if it is one.
    template <class Value>
    void Set(SessionId id, Value Session::*member, Value value, ChangeMask what);

    std::map<RoomId, HouseRoom> m_rooms;
    std::map<SessionId, Session> m_sessions;
    std::map<SessionId, Entries> m_expected;
    std::deque<std::pair<Revision, SessionId>> m_ended;
    Revision m_oldestEnded; // what was before it is not known
    Revision m_revision;
    std::uint64_t m_nextSession;
    std::uint64_t m_nextEntry;
    Changes m_changes;
    std::function<void()> m_listener;
};

} // namespace korvel::controller
