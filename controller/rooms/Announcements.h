#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "host/DriverPort.h"
#include "host/EventBus.h"
#include "host/Log.h"
#include "host/TimerService.h"
#include "net/Poster.h"
#include "platform/Services.h"
#include "rooms/RoomTable.h"

namespace korvel::controller {

// Makes one announcement at a time: has the driver open a stream beside the queues, plays the file to the
// rooms and gives the stream up. The queues go on meanwhile; a room's player hears what started last, so each
// room hears the announcement and then again what it heard before.
//
// Each step is an event {"type":"announcement","state","rooms","file"} with a state of "started", "playing",
// "complete" or "abandoned".
class Announcements final : public IAnnouncementNotifier {
public:
    struct Parts {
        asio::io_context& loop;
        DriverPort& driver;
        const RoomTable& rooms;
        TimerService& timers;
        EventBus& events;
        const Log& log;
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
        : m_parts(parts), m_patience(patience), m_poster(parts.loop) {}

    // Throws Refused for a room or a file that is not there, while another announcement is made, and when no
    // audio server can play. `file` is absolute: the audio server reads it.
    void Start(std::vector<std::uint32_t> rooms, const std::string& file);
    // A room that is switched off ends the driver's announcement for every room.
    void OnRoomOff();
    // The announcement went with its audio server.
    void OnServerLost(std::uint32_t bindingId);

    // {"state","rooms","file"}, or null while there is none.
    nlohmann::json ToJson() const;

    // Inside the driver's calls.
    void AnnouncementStreamReady() override;
    void AnnouncementComplete() override;

private:
    struct Current {
        std::vector<std::uint32_t> rooms;
        std::string file;
        std::uint32_t bindingId = 0;
        std::uint32_t timer = 0;
        const char* state = "started";
    };

    void CheckRooms(std::vector<std::uint32_t>& rooms) const;
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
};

} // namespace korvel::controller
