#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "base/EventBus.h"
#include "base/Refused.h"
#include "base/Worker.h"
#include "common/Log.h"
#include "driver/DriverPort.h"
#include "driver/rooms/AnnouncementWire.h"
#include "driver/rooms/RoomTable.h"
#include "driver/services/TimerService.h"
#include "library/FileReader.h"
#include "platform/Services.h"

namespace korvel::controller {

// Makes one announcement at a time: has the driver open a stream beside the queues, plays the file to the
// rooms and gives the stream up. The queues go on meanwhile; a room's player hears what started last, so each
// room hears the announcement and then again what it heard before.
//
// Each step is an event {"type":"announcement","id","state","rooms","file"} with a state of "started",
// "playing" and at last "complete", "failed" (the file could not be played) or "abandoned" (something else
// ended it). The last two have a "reason", one line.
class Announcements final : public IAnnouncementNotifier {
public:
    struct Parts {
        asio::io_context& loop;
        DriverPort& driver;
        const RoomTable& rooms;
        TimerService& timers;
        EventBus& events;
        const common::Log& log;
        std::function<std::string()> whyNotReady;     // "" while an audio server can play
        std::function<std::uint32_t()> activeBinding; // of that audio server
    };
    // How long the driver may take before an announcement is abandoned.
    struct Patience {
        // A line that gets no answer holds the next one up for five seconds.
        std::chrono::milliseconds stream = std::chrono::seconds(20);
        std::chrono::milliseconds play = std::chrono::minutes(10);
    };

    explicit Announcements(const Parts& parts) : Announcements(parts, Patience{}) {}
    Announcements(const Parts& parts, Patience patience)
        : m_parts(parts), m_patience(patience), m_poster(parts.loop), m_worker(parts.loop) {}
    // Does not wait for a file that hangs.
    ~Announcements() { m_reader.Cancel(); }

    // Why an announcement was refused; none when it has started.
    using Answer = std::function<void(const std::optional<Refused>&)>;

    // Throws Refused for a room that is not there or a bad path, while another announcement is made, and when
    // no audio server can play. Otherwise has the file looked at on another thread and calls `answer` once,
    // on the loop. `file` is absolute: the audio server reads it.
    void Start(std::vector<std::uint32_t> rooms, const std::string& file, Answer answer);
    // A room that is switched off ends the driver's announcement for every room.
    void OnRoomOff();
    // The announcement went with its audio server.
    void OnServerLost(std::uint32_t bindingId);

    // A line of an audio server, before the driver hears it.
    void OnServerLine(std::uint32_t bindingId, const std::string& line);

    // {"id","state","rooms","file"}, or null while there is none.
    nlohmann::json ToJson() const;

    // Inside the driver's calls.
    void AnnouncementStreamReady() override;
    void AnnouncementComplete() override;

private:
    // For a file to be looked at: a person waits for the answer.
    static constexpr std::chrono::seconds kFilePatience{5};

    struct Current {
        std::uint32_t id = 0;
        std::vector<std::uint32_t> rooms;
        std::string file;
        std::uint32_t bindingId = 0;
        std::uint32_t timer = 0;
        const char* state = "started";
        std::string reason = ""; // while nothing is wrong
    };

    void CheckRooms(std::vector<std::uint32_t>& rooms) const;
    void RequireFree() const;
    void Begin(const std::vector<std::uint32_t>& rooms, const std::string& file);
    void Play();
    void End(const char* state, const std::string& why);
    void Forget(const char* state, const std::string& why);
    void Wait(std::chrono::milliseconds patience, const char* what);
    void SelectInRooms(const std::vector<std::uint32_t>& rooms, const char* kind);
    void Publish() const;

    Parts m_parts;
    Patience m_patience;
    Poster m_poster;
    std::optional<Current> m_current;
    std::uint32_t m_lastId = 0;
    AnnouncementWire m_wire;
    media::FileReader m_reader{media::FileReader::DefaultProgram(), kFilePatience}; // the worker's
    Worker m_worker; // last: its thread ends before the rest goes
};

} // namespace korvel::controller
