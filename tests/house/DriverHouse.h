// A house that follows the real driver in the deterministic core.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "driver/reading/HouseReader.h"
#include "house/House.h"
#include "replay/Session.h"

namespace korvel::controller {

// Plays the core's part: rooms select and deselect as they are asked to, an audio server answers each line, and the house
// reads what changed after each call of the driver. Rooms are 1 to 4; songs 1 to 6, of which the album 11 has 1 to 3 and the
// playlist 21 has 3 to 5; the album 12 is the line input "turntable"; the station is 31.
class DriverHouse {
public:
    using Parameters = std::vector<std::pair<std::string, std::string>>;

    static constexpr RoomId kRooms = 4;
    static constexpr std::uint32_t kSongs = 6;

    DriverHouse();
    ~DriverHouse();

    // Runs an input line as it stands in a transcript, and all that follows of it.
    void Do(const std::string& line);
    // A command as it comes to the core: a room that got media hears its queue.
    void Command(const std::string& name, const Parameters& parameters);
    // A line of the audio server; one that refuses a media comes with its reason.
    void Say(const std::string& line);
    // Selects a line input in the room.
    void SelectInput(RoomId room, const std::string& input);

    House& GetHouse() { return m_house; }
    HouseReader& GetReader() { return m_reader; }
    // What the driver published last of the queues that it has; and a list, as it is now.
    std::vector<QueueStatus> Statuses();
    std::vector<MediaRef> ListOf(std::uint32_t queueId);
    // The numbers of the streams that the audio server has made.
    std::uint32_t CountStreams() const { return m_streams; }
    // Lines of the driver that must never come.
    const std::vector<std::string>& GetFaults() const { return m_faults; }

    Milliseconds now{0};

private:
    void Enter(const std::string& line);
    void OnOutput(std::string_view line);
    void OnMessage(std::string_view words);
    void Answer(std::string_view words);
    void Select(RoomId room, std::uint32_t queueId, const std::string& input);
    kv::auto_com<KVXML::INode> Info(std::uint32_t queueId);

    House m_house;
    HouseReader m_reader;
    replay::Session m_session;
    std::string m_roomMap;
    std::map<RoomId, std::string> m_inputs;
    std::string m_input;               // that the next command brings, "" for none
    std::deque<std::string> m_waiting; // lines that the world answers with
    std::string m_return;
    std::uint32_t m_streams = 0;
    std::vector<std::string> m_faults;
};

} // namespace korvel::controller
