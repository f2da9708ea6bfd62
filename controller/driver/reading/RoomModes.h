// Shuffle and repeat, which no document of the driver shows for a queue.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "house/Ids.h"
#include "platform/CmdMessage.h"

namespace korvel::controller {

struct Modes {
    bool shuffle = false;
    bool repeat = false;
};

// What the driver remembers for each room, and gives a queue that it makes for it. Repeat alone is in no document of the
// driver's either, so the commands that set it are read.
class RoomModes {
public:
    // ROOM_QUEUE_SETTINGS as it is now. A text that is none changes nothing.
    void OnSettings(const std::string& document);
    // The command has run. `queue` are the modes of the room's queue before it, none without one; they are what it has
    // now when the command is one of these, else none is returned.
    std::optional<Modes> OnCommand(const ICmdMessage& command, const std::optional<Modes>& queue);

    Modes Of(RoomId room) const;

private:
    std::map<RoomId, Modes> m_rooms;
};

} // namespace korvel::controller
