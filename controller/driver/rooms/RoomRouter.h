#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "base/EventBus.h"
#include "base/Poster.h"
#include "common/Log.h"
#include "driver/DriverPort.h"
#include "driver/rooms/LineInput.h"
#include "driver/rooms/RoomTable.h"

namespace korvel::controller {

// True for the commands that put media into a room's queue, or start it, but leave it to the core to let the
// room hear it.
bool IsMediaCommand(const std::string& name);

// The number in "<queueid>N</queueid>"; 0 for any other text.
std::uint32_t QueueIdOf(const std::string& answer);

// Decides what each room hears: routes rooms to queues of the driver and takes them away again, on the
// driver's word and on the word of people. A change is an event {"type":"room", ...} with the room as
// RoomTable shows it.
class RoomRouter {
public:
    struct Parts {
        asio::io_context& loop;
        DriverPort& driver;
        RoomTable& rooms;
        EventBus& events;
        const common::Log& log;
        std::function<std::string()> whyNotReady;     // "" while an audio server can play
        std::function<std::uint32_t()> activeBinding; // of that audio server
    };

    explicit RoomRouter(const Parts& parts) : m_parts(parts), m_poster(parts.loop) {}

    // `listener` is called when a room has been switched off.
    void SetRoomOffListener(std::function<void()> listener) { m_roomOff = std::move(listener); }

    // A message of the driver to a room, inside the driver's call: what it asks for is done after that call.
    void OnMessage(Room& room, const ICmdMessage& message);
    // The queues of that audio server are gone, and with them what its rooms hear.
    void OnServerLost(std::uint32_t bindingId);
    // A media command for the room has run: once the present call is over, the room hears the queue that the
    // command answered with, or else its queue in the driver. `input` is the line input that it put there.
    void RouteSoon(std::uint32_t roomId, std::uint32_t queueId, std::optional<LineInput> input);

    // These three call the driver. They throw Refused when there is no such room, when no audio server can
    // play, or (the first) when the room does not hear the queue afterwards. Queue 0 stands for the queue
    // that the room has. A room that selects an input may end in another queue that plays it.
    void Select(std::uint32_t roomId, std::uint32_t queueId, const LineInput* input = nullptr);
    void Deselect(std::uint32_t roomId);
    void TurnOff(std::uint32_t roomId);
    // Adds the room to what `other` hears.
    void Join(std::uint32_t roomId, std::uint32_t other);

    // The queue that the room has in the driver; 0 when it has none.
    std::uint32_t QueueOfRoom(std::uint32_t roomId);

private:
    bool HasQueue(std::uint32_t queueId);
    std::uint32_t AskForQueue(const std::string& key, std::uint32_t value);
    Room& Require(std::uint32_t roomId);
    void RequireReady() const;
    std::uint32_t SourceOf(std::uint32_t queueId, const LineInput* input) const;
    void CallSelected(const Room& room, std::uint32_t queueId, const LineInput* input);
    bool HearsTogether(const Room& room) const;
    void AskWhatPlays(const Room& room);
    void SetQueue(Room& room, std::uint32_t queueId);
    void TrySelect(std::uint32_t roomId, std::uint32_t queueId, const LineInput* input = nullptr);
    void PublishRoom(const Room& room);

    Parts m_parts;
    Poster m_poster;
    std::function<void()> m_roomOff;
};

} // namespace korvel::controller
