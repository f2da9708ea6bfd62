#include "house/House.h"

#include <algorithm>
#include <iterator>

namespace korvel::controller {

namespace {

Revision After(Revision revision) {
    return static_cast<Revision>(static_cast<std::uint64_t>(revision) + 1);
}

std::vector<RoomId> Without(const std::vector<RoomId>& rooms, const std::vector<RoomId>& others) {
    std::vector<RoomId> left;
    std::set_difference(rooms.begin(), rooms.end(), others.begin(), others.end(), std::back_inserter(left));
    return left;
}

} // namespace

House::House(std::vector<HouseRoom> rooms, Numbers next)
    : m_oldestEnded(static_cast<Revision>(next.revision)),
      m_revision(m_oldestEnded),
      m_nextSession(next.session),
      m_nextEntry(next.entry) {
    for (HouseRoom& room : rooms) {
        room.revision = m_revision;
        m_rooms.emplace(room.id, std::move(room));
    }
}

Changes House::TakeChanges() {
    Changes taken = std::exchange(m_changes, {});
    taken.revision = m_revision;
    return taken;
}

const Session* House::FindSession(SessionId id) const {
    const auto found = m_sessions.find(id);
    return found == m_sessions.end() ? nullptr : &found->second;
}

const Session* House::SessionOf(RoomId room) const {
    for (const auto& [id, session] : m_sessions)
        if (session.presence != Presence::Asleep &&
            std::binary_search(session.rooms.begin(), session.rooms.end(), room))
            return &session;
    return nullptr;
}

std::optional<Since> House::GetSince(Revision known) const {
    if (known < m_oldestEnded || known > m_revision)
        return {};
    Since since;
    for (const auto& [id, session] : m_sessions)
        if (session.revision > known)
            since.sessions.push_back(id);
    for (const auto& [id, room] : m_rooms)
        if (room.revision > known)
            since.rooms.push_back(id);
    for (const auto& [revision, id] : m_ended)
        if (revision > known)
            since.ended.push_back(id);
    return since;
}

House::Numbers House::GetNumbers() const {
    return {static_cast<std::uint64_t>(m_revision), m_nextSession, m_nextEntry};
}

SessionId House::Begin() {
    const auto id = static_cast<SessionId>(m_nextSession++);
    Session& session = m_sessions[id];
    session.id = id;
    Changed(session, kBegun);
    return id;
}

void House::Restore(Session session) {
    session.presence = Presence::Asleep;
    session.playhead = {.clock = {}, .position = session.playhead.position, .runs = false};
    const SessionId id = session.id;
    Session& kept = m_sessions.insert_or_assign(id, std::move(session)).first->second;
    Changed(kept, kBegun | kChangedEntries);
}

void House::End(SessionId id) {
    Session* const session = Find(id);
    if (!session)
        return;
    if (session->presence != Presence::Asleep)
        RoomsChanged(session->rooms, {});
    Changed(*session, kEnded);
    m_ended.emplace_back(m_revision, id);
    if (m_ended.size() > kMaxEndedRemembered) {
        m_oldestEnded = m_ended.front().first;
        m_ended.pop_front();
    }
    m_expected.erase(id);
    m_sessions.erase(id);
}

void House::SetPresence(SessionId id, Presence presence, Milliseconds now) {
    Session* const session = Find(id);
    if (!session || session->presence == presence)
        return;
    const bool wasHeard = session->presence != Presence::Asleep;
    const bool isHeard = presence != Presence::Asleep;
    if (isHeard && !wasHeard)
        TakeRooms(*session, session->rooms);
    session->presence = presence;
    if (presence != Presence::Live) {
        session->playhead = {.clock = now, .position = session->playhead.At(now), .runs = false};
        session->stream.reset();
    }
    if (isHeard != wasHeard)
        RoomsChanged(isHeard ? std::vector<RoomId>() : session->rooms,
                     isHeard ? session->rooms : std::vector<RoomId>());
    Changed(*session, kChangedState | kChangedPlayhead);
}

void House::SetRooms(SessionId id, std::vector<RoomId> rooms) {
    std::sort(rooms.begin(), rooms.end());
    rooms.erase(std::unique(rooms.begin(), rooms.end()), rooms.end());
    Session* const session = Find(id);
    if (!session || session->rooms == rooms)
        return;
    if (session->presence != Presence::Asleep) {
        TakeRooms(*session, rooms);
        RoomsChanged(session->rooms, rooms);
    }
    session->rooms = std::move(rooms);
    Changed(*session, kChangedRooms);
}

void House::SetTransport(SessionId id, Transport transport) {
    Set(id, &Session::transport, transport, kChangedState);
}

void House::SetStream(SessionId id, std::optional<StreamWord> stream) {
    Set(id, &Session::stream, stream, kChangedState);
}

void House::SetPlayhead(SessionId id, const Playhead& playhead) {
    Set(id, &Session::playhead, playhead, kChangedPlayhead);
}

void House::SetModes(SessionId id, bool shuffle, bool repeat) {
    Set(id, &Session::shuffle, shuffle, kChangedModes);
    Set(id, &Session::repeat, repeat, kChangedModes);
}

void House::SetProblem(SessionId id, std::optional<Problem> problem) {
    Set(id, &Session::problem, std::move(problem), kChangedProblem);
}

void House::Expect(SessionId id, Entries entries) {
    if (Find(id))
        m_expected[id] = std::move(entries);
}

void House::SetMedia(SessionId id, std::span<const MediaRef> media) {
    const Session* const session = FindSession(id);
    if (!session)
        return;
    const auto expected = m_expected.extract(id);
    if (!expected.empty() && Says(media, expected.mapped()))
        SetEntries(id, std::move(expected.mapped()));
    else if (!Says(media, session->entries))
        SetEntries(id, Follow(session->entries, media, [this] { return NewEntry(); }));
}

void House::SetCurrent(SessionId id, EntryId current) {
    const Session* const session = FindSession(id);
    if (session && !session->FindEntry(current))
        current = EntryId::None;
    Set(id, &Session::current, current, kChangedCurrent);
}

void House::SetEntries(SessionId id, Entries entries) {
    Session* const session = Find(id);
    if (!session || session->entries == entries)
        return;
    session->entries = std::move(entries);
    Changed(*session, kChangedEntries);
    session->entriesRevision = session->revision;
    SetCurrent(id, session->current);
}

void House::SetRoomProblem(RoomId id, std::optional<Problem> problem) {
    const auto room = m_rooms.find(id);
    if (room == m_rooms.end() || room->second.problem == problem)
        return;
    room->second.problem = std::move(problem);
    Changed(room->second, kChangedProblem);
}

Session* House::Find(SessionId id) {
    const auto found = m_sessions.find(id);
    return found == m_sessions.end() ? nullptr : &found->second;
}

void House::Changed(Session& session, ChangeMask what) {
    session.revision = m_revision = After(m_revision);
    if (what & kBegun)
        session.entriesRevision = session.revision;
    const bool first = m_changes.IsEmpty();
    m_changes.sessions[session.id] |= what;
    if (first)
        Tell();
}

void House::Changed(HouseRoom& room, ChangeMask what) {
    room.revision = m_revision = After(m_revision);
    const bool first = m_changes.IsEmpty();
    m_changes.rooms[room.id] |= what;
    if (first)
        Tell();
}

// Both ascending.
void House::RoomsChanged(const std::vector<RoomId>& before, const std::vector<RoomId>& after) {
    std::vector<RoomId> changed;
    std::set_symmetric_difference(before.begin(), before.end(), after.begin(), after.end(),
                                  std::back_inserter(changed));
    for (const RoomId id : changed)
        if (const auto room = m_rooms.find(id); room != m_rooms.end())
            Changed(room->second, kChangedSession);
}

// A room hears one session: the others that are heard lose it.
void House::TakeRooms(const Session& to, const std::vector<RoomId>& rooms) {
    for (auto& [id, other] : m_sessions) {
        if (id == to.id || other.presence == Presence::Asleep)
            continue;
        std::vector<RoomId> left = Without(other.rooms, rooms);
        if (left.size() == other.rooms.size())
            continue;
        RoomsChanged(other.rooms, left);
        other.rooms = std::move(left);
        Changed(other, kChangedRooms);
    }
}

void House::Tell() {
    if (m_listener)
        m_listener();
}

template <class Value>
void House::Set(SessionId id, Value Session::*member, Value value, ChangeMask what) {
    Session* const session = Find(id);
    if (!session || session->*member == value)
        return;
    session->*member = std::move(value);
    Changed(*session, what);
}

} // namespace korvel::controller
