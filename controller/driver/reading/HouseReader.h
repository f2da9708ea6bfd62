// Keeps the house as the driver's documents say it is.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "driver/reading/Documents.h"
#include "driver/reading/RoomModes.h"
#include "house/House.h"

namespace korvel::controller {

// Sessions that sleep; the one that has slept for longest ends when there is another.
inline constexpr std::size_t kMaxAsleep = 100;
// Entries of a session with those that cannot be played, of which the first goes.
inline constexpr std::size_t kMaxEntries = 4095;

// Inside a call of the driver it only notes what has changed; after it Read() looks at those queues and tells the house.
// Each queue of the driver is a session that is live. A queue that goes leaves its session asleep, or, when it was empty,
// ends it. When what plays alone (a station, an input) comes into the place of songs, or the other way round, the session
// before falls asleep and another begins. One thread.
class HouseReader {
public:
    struct Parts {
        House& house;
        // Asks the driver for the list of a queue; null when it has none.
        std::function<kv::auto_com<KVXML::INode>(std::uint32_t queueId)> list;
        // The name of the line input that the room hears; none when it hears something else.
        std::function<std::optional<std::string>(RoomId)> input;
        std::function<Milliseconds()> now;
    };

    explicit HouseReader(const Parts& parts) : m_parts(parts) {}

    // What the driver publishes: ROOM_MAP_INFO, QUEUE_INFO_V2, ROOM_QUEUE_SETTINGS, and the end of what a room hears.
    void OnRoomMap(const std::string& document) { m_roomMap = document; }
    void OnList(const std::string& document);
    void OnRoomSettings(const std::string& document) { m_modes.OnSettings(document); }
    void OnEnded(RoomId room) { m_ended.insert(room); }
    // An audio server is lost: the driver forgets its queues without a word.
    void OnServerLost() { m_serverLost = true; }
    // A command is about to be executed. The driver shows neither shuffle nor repeat of a queue, nor which station one
    // plays.
    void OnCommand(const ICmdMessage& command);
    // An audio server could not play something, which the driver is about to take out of its list.
    void OnRefused(const std::string& reason) { m_refused = reason; }
    // The next queue that the driver makes for this room is that session's, which is asleep.
    void Expect(RoomId room, SessionId session) { m_expected[room] = session; }

    // After the driver's call; may ask the driver.
    void Read();

    // Of a live session; 0 for any other.
    std::uint32_t QueueOf(SessionId session) const;
    // None when the driver has no such queue.
    SessionId SessionOf(std::uint32_t queueId) const;

private:
    struct Queue {
        SessionId session = SessionId::None;
        std::string piece;                  // of ROOM_MAP_INFO, as it was read
        MediaRef station = kUnnamedStation; // the one that it plays, which its list does not name
        std::string input;                  // the same of a line input, "" for none
        bool ended = false;
    };

    void TakeRoomMap(std::set<std::uint32_t>& changed);
    template <class Gone>
    void ForgetIf(Gone gone);
    void ReadQueue(std::uint32_t queueId, bool listChanged);
    SessionId SessionFor(const QueueStatus& status);
    std::string InputOf(const QueueStatus& status, Queue& queue) const;
    std::vector<MediaRef> MediaOf(const QueueStatus& status, Queue& queue) const;
    void ReadMedia(Queue& queue, const std::vector<MediaRef>& media);
    void KeepRefused(const Session& session, const std::vector<MediaRef>& media);
    void Forget(const Queue& queue);
    void LetSleep(SessionId session);
    std::uint32_t QueueIn(RoomId room) const;

    Parts m_parts;
    RoomModes m_modes;
    std::map<std::uint32_t, Queue> m_queues;
    std::map<RoomId, SessionId> m_expected;
    std::map<RoomId, MediaRef> m_stations; // that commands have just put into the room's queue
    std::optional<std::string> m_roomMap;  // published since the last Read()
    std::set<std::uint32_t> m_lists;       // so were the lists of these
    std::set<RoomId> m_ended;
    std::set<RoomId> m_edited; // rooms whose queue's list a command is to change
    std::optional<std::string> m_refused;
    bool m_serverLost = false;
};

} // namespace korvel::controller
