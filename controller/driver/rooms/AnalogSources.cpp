#include "driver/rooms/AnalogSources.h"

#include "driver/Ids.h"

namespace korvel::controller {

AnalogSources::AnalogSources(RoomTable& rooms, const common::Log& log) {
    for (Room& room : rooms.All())
        m_sources.try_emplace(room.config.id, room, log);
}

IAnalogSource* AnalogSources::Find(std::uint32_t roomId) {
    const auto found = m_sources.find(roomId);
    return found == m_sources.end() ? nullptr : &found->second;
}

std::vector<std::uint32_t> AnalogSources::Source::GetDevicesInAnalogSource() {
    if (m_room.sourceDeviceId == 0)
        return {};
    return {kDriverDeviceId};
}

// The house has no switches between a room's player and the driver.
void AnalogSources::Source::SelectDevice(std::uint32_t deviceId) {
    m_log.Debug(m_room.config.name + ": device " + std::to_string(deviceId) + " has nothing to select");
}

} // namespace korvel::controller
