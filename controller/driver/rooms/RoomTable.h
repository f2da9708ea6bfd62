#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "config/Config.h"
#include "platform/AvRouting.h"

namespace korvel::controller {

// A room as it is now.
struct Room {
    RoomConfig config;
    std::uint32_t queueId = 0;   // the queue that the room hears; 0: it is not routed to the driver
    std::uint32_t bindingId = 0; // of the audio server that plays for it, while it is routed
    // The device that it hears through the driver: a line input, or the driver itself; 0 while it is not
    // routed.
    std::uint32_t sourceDeviceId = 0;
    std::string mediaInfo; // the last description of what plays, as the driver sent it; "" when nothing does

    bool IsRouted() const { return queueId != 0; }
};

// The rooms of the house, in the configuration's order. They stay the same as long as the controller runs.
class RoomTable {
public:
    explicit RoomTable(const std::vector<RoomConfig>& configs);

    // Null when there is no such room.
    Room* Find(std::uint32_t id);
    const Room* Find(std::uint32_t id) const;

    std::vector<Room>& All() { return m_rooms; }
    const std::vector<Room>& All() const { return m_rooms; }

private:
    std::vector<Room> m_rooms;
};

// Where the room plays, for a selection.
AVLocationInfo EndpointOf(const Room& room);

// {"id","name","routed","queue","source","media": {"title": ..., ...} or null, "mediaInfo": xml, "endpoint":
// ...}
nlohmann::json ToJson(const Room& room);

// The children of a "mediainfo" text by name, with the values that travel in base64 (genre and img) decoded.
// Empty for a text that is none.
std::map<std::string, std::string> ParseMediaInfo(const std::string& xml);

} // namespace korvel::controller
