#include "driver/reading/HouseReader.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/Text.h"

namespace korvel::controller {

namespace {

// What the driver publishes as the index of no song.
constexpr std::size_t kNoSong = 4095;

// The first id in a document of one queue is the queue's.
std::uint32_t FirstId(std::string_view document) {
    constexpr std::string_view kTag = "<id>";
    const std::size_t tag = document.find(kTag);
    return tag == std::string_view::npos ? 0 : kv::ToULong(document.substr(tag + kTag.size(), 10));
}

bool ChangesList(const std::string& command) {
    static constexpr std::array<std::string_view, 9> kNames = {
        "ADD_SONG",      "ADD_SONG_LIST", "ADD_ALBUM_MP3", "ADD_ALBUM_LIST", "ADD_PLAYLIST",
        "ADD_IR_STREAM", "QUEUE_ALL",     "EDIT_QUEUE",    "REMOVE_SONG"};
    return std::ranges::find(kNames, command) != kNames.end();
}

bool IsAlone(const std::vector<MediaRef>& media) {
    return !media.empty() && PlaysAlone(media.front().kind);
}

// The entry that the status shows as the one that plays. Its index counts in the driver's list and can be stale after a
// song was removed, so the song itself must be there; of equal ones the one that played before goes on.
EntryId CurrentOf(const Session& session, const QueueStatus& status) {
    std::vector<const Entry*> listed;
    for (const Entry& entry : session.entries)
        if (!entry.unplayable)
            listed.push_back(&entry);
    if (session.PlaysAlone())
        return listed.empty() ? EntryId::None : listed.front()->id;
    if (status.index == kNoSong || (session.shuffle && status.index >= listed.size()))
        return EntryId::None;
    const auto plays = [&](const Entry* entry) { return entry->media == status.song; };
    if (!session.shuffle && status.index < listed.size() && plays(listed[status.index]))
        return listed[status.index]->id;
    const Entry* const before = session.FindEntry(session.current);
    if (before && !before->unplayable && plays(before))
        return before->id;
    const auto first = std::ranges::find_if(listed, plays);
    return first == listed.end() ? EntryId::None : (*first)->id;
}

} // namespace

void HouseReader::OnList(const std::string& document) {
    if (const std::uint32_t queue = FirstId(document); queue != 0)
        m_lists.insert(queue);
}

void HouseReader::OnCommand(const ICmdMessage& command) {
    const RoomId room = command.GetNumber("ROOM_ID");
    if (ChangesList(command.GetName()))
        m_edited.insert(room);
    if (command.GetName() == "ADD_IR_STREAM") {
        const std::string id = command.GetParam("MEDIA_ID");
        m_stations[room] = {MediaKind::Station, id.empty() ? command.GetParam("MEDIA") : id};
    }
    const Session* const session = m_parts.house.SessionOf(room);
    const bool live = session && session->presence == Presence::Live;
    const auto before = live ? std::optional(Modes{session->shuffle, session->repeat}) : std::nullopt;
    if (const auto now = m_modes.OnCommand(command, before))
        m_parts.house.SetModes(session->id, now->shuffle, now->repeat);
}

void HouseReader::Read() {
    std::set<std::uint32_t> changed;
    TakeRoomMap(changed);
    if (std::exchange(m_serverLost, false))
        ForgetIf([this](std::uint32_t queue) {
            const auto info = m_parts.list(queue);
            return !info || !ReadList(*info);
        });
    for (const RoomId room : std::exchange(m_ended, {}))
        if (const std::uint32_t queue = QueueIn(room)) {
            m_queues[queue].ended = true;
            changed.insert(queue);
        }
    std::set<std::uint32_t> lists = std::exchange(m_lists, {});
    // A command that fails half-way has changed the list and published nothing.
    for (const RoomId room : std::exchange(m_edited, {}))
        if (const std::uint32_t queue = QueueIn(room))
            lists.insert(queue);
    for (const std::uint32_t queue : lists)
        if (m_queues.contains(queue))
            changed.insert(queue);
    for (const std::uint32_t queue : changed)
        ReadQueue(queue, lists.contains(queue));
    m_refused.reset();
    m_stations.clear();
}

// Notes the queues whose piece is another, and forgets those that have none any more.
void HouseReader::TakeRoomMap(std::set<std::uint32_t>& changed) {
    const auto roomMap = std::exchange(m_roomMap, {});
    if (!roomMap)
        return;
    std::map<std::uint32_t, std::string_view> pieces;
    for (const std::string_view piece : PiecesOfRoomMap(*roomMap))
        if (const std::uint32_t queue = FirstId(piece); queue != 0)
            pieces.emplace(queue, piece);
    ForgetIf([&](std::uint32_t queue) { return !pieces.contains(queue); });
    for (const auto& [id, piece] : pieces) {
        Queue& queue = m_queues[id];
        const Session* const session = m_parts.house.FindSession(queue.session);
        if (queue.piece == piece && session && !session->entries.empty())
            continue; // an empty one may have got an input, which no document shows
        queue.piece = piece;
        changed.insert(id);
    }
}

template <class Gone>
void HouseReader::ForgetIf(Gone gone) {
    std::erase_if(m_queues, [&](const auto& queue) {
        if (!gone(queue.first))
            return false;
        Forget(queue.second);
        return true;
    });
}

void HouseReader::ReadQueue(std::uint32_t queueId, bool listChanged) {
    Queue& queue = m_queues[queueId];
    const auto status = ReadStatus(queue.piece);
    if (!status)
        return;
    House& house = m_parts.house;
    const bool isNew = !house.FindSession(queue.session);
    if (isNew)
        queue.session = SessionFor(*status);
    // A line input is in no list: it comes with the room.
    if (isNew || listChanged || house.FindSession(queue.session)->entries.empty())
        ReadMedia(queue, MediaOf(*status, queue));
    const SessionId session = queue.session;
    house.SetRooms(session, status->rooms);
    if (status->transport != Transport::Stopped)
        queue.ended = false;
    house.SetTransport(session, queue.ended ? Transport::Ended : status->transport);
    house.SetCurrent(session, CurrentOf(*house.FindSession(session), *status));
}

// The one that an action has announced for a room of the queue, or a new one.
SessionId HouseReader::SessionFor(const QueueStatus& status) {
    House& house = m_parts.house;
    SessionId session = SessionId::None;
    for (const RoomId room : status.rooms)
        if (const auto expected = m_expected.extract(room); !expected.empty())
            session = expected.mapped();
    if (!house.FindSession(session)) {
        session = house.Begin();
        house.SetRooms(session, status.rooms);
    }
    house.SetPresence(session, Presence::Live, m_parts.now());
    if (!status.rooms.empty()) {
        const Modes modes = m_modes.Of(status.rooms.front());
        house.SetModes(session, modes.shuffle, modes.repeat);
    }
    return session;
}

// Known from the room that brought it, which may leave it to others.
std::string HouseReader::InputOf(const QueueStatus& status, Queue& queue) const {
    for (const RoomId room : status.rooms)
        if (const auto input = m_parts.input(room))
            queue.input = *input;
    return queue.input;
}

std::vector<MediaRef> HouseReader::MediaOf(const QueueStatus& status, Queue& queue) const {
    const auto info = m_parts.list(status.queueId);
    auto list = info ? ReadList(*info) : std::nullopt;
    if (!list)
        return {};
    if (!list->media.empty())
        queue.input.clear();
    else if (const std::string input = InputOf(status, queue); !input.empty())
        return {{MediaKind::Input, input}};
    if (list->media != std::vector{kUnnamedStation}) {
        queue.station = kUnnamedStation;
        return std::move(list->media);
    }
    for (const RoomId room : status.rooms)
        if (const auto station = m_stations.find(room); station != m_stations.end())
            queue.station = station->second;
    return {queue.station};
}

void HouseReader::ReadMedia(Queue& queue, const std::vector<MediaRef>& media) {
    House& house = m_parts.house;
    const Session& session = *house.FindSession(queue.session);
    if (!session.entries.empty() && !media.empty() && session.PlaysAlone() != IsAlone(media)) {
        const std::vector<RoomId> rooms = session.rooms;
        LetSleep(session.id);
        queue.session = house.Begin();
        house.SetRooms(queue.session, rooms);
        house.SetPresence(queue.session, Presence::Live, m_parts.now());
    } else if (m_refused) {
        KeepRefused(session, media);
    }
    house.SetMedia(queue.session, media);
}

// The driver takes each song out that is equal to one that was refused. Here they stay, with the reason.
void HouseReader::KeepRefused(const Session& session, const std::vector<MediaRef>& media) {
    Entries entries = session.entries;
    for (Entry& entry : entries)
        if (!entry.unplayable && std::ranges::find(media, entry.media) == media.end())
            entry.unplayable = Problem{"unplayable", *m_refused};
    const auto refused = [](const Entry& entry) { return entry.unplayable.has_value(); };
    while (entries.size() > kMaxEntries && std::ranges::any_of(entries, refused))
        entries.erase(std::ranges::find_if(entries, refused));
    m_parts.house.SetEntries(session.id, std::move(entries));
}

void HouseReader::Forget(const Queue& queue) {
    const Session* const session = m_parts.house.FindSession(queue.session);
    if (!session)
        return;
    if (session->entries.empty())
        m_parts.house.End(session->id);
    else
        LetSleep(session->id);
}

void HouseReader::LetSleep(SessionId session) {
    m_parts.house.SetPresence(session, Presence::Asleep, m_parts.now());
    std::size_t asleep = 0;
    const Session* oldest = nullptr;
    for (const auto& [id, other] : m_parts.house.GetSessions()) {
        if (other.presence != Presence::Asleep)
            continue;
        ++asleep;
        if (!oldest || other.revision < oldest->revision)
            oldest = &other;
    }
    if (asleep > kMaxAsleep)
        m_parts.house.End(oldest->id);
}

std::uint32_t HouseReader::QueueIn(RoomId room) const {
    const Session* const session = m_parts.house.SessionOf(room);
    return session ? QueueOf(session->id) : 0;
}

std::uint32_t HouseReader::QueueOf(SessionId session) const {
    const auto found = std::ranges::find_if(
        m_queues, [session](const auto& queue) { return queue.second.session == session; });
    return found == m_queues.end() ? 0 : found->first;
}

SessionId HouseReader::SessionOf(std::uint32_t queueId) const {
    const auto found = m_queues.find(queueId);
    return found == m_queues.end() ? SessionId::None : found->second.session;
}

} // namespace korvel::controller
