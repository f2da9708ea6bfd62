#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "common/Log.h"
#include "driver/rooms/RoomTable.h"
#include "platform/Services.h"

namespace korvel::controller {

// Each room as something that takes its audio from a device. Whatever that device is, a line input of an
// audio server or the library, its sound reaches the room through the driver alone.
class AnalogSources {
public:
    AnalogSources(RoomTable& rooms, const common::Log& log);
    AnalogSources(const AnalogSources&) = delete;
    AnalogSources& operator=(const AnalogSources&) = delete;

    // Null when there is no such room.
    IAnalogSource* Find(std::uint32_t roomId);

private:
    class Source final : public IAnalogSource {
    public:
        Source(Room& room, const common::Log& log) : m_room(room), m_log(log) {}

        void TakeSourceDevice(std::uint32_t deviceId) override { m_room.sourceDeviceId = deviceId; }
        std::vector<std::uint32_t> GetDevicesInAnalogSource() override;
        void SelectDevice(std::uint32_t deviceId) override;

    private:
        Room& m_room;
        const common::Log& m_log;
    };

    std::map<std::uint32_t, Source> m_sources;
};

} // namespace korvel::controller
