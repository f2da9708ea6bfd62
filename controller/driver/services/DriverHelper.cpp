#include "driver/services/DriverHelper.h"

#include "driver/Ids.h"

namespace korvel::controller {

std::uint32_t DriverHelper::GetDeviceId() {
    return kDriverDeviceId;
}

void* DriverHelper::GetDeviceInterface(std::uint32_t deviceId, const std::string& interfaceId) {
    IAnalogSource* room = m_sources.Find(deviceId);
    if (room && interfaceId == IAnalogSource::kInterfaceId)
        return room;
    if (room && interfaceId == IMp3Storage::kInterfaceId)
        return static_cast<IMp3Storage*>(&m_storage);
    return nullptr;
}

} // namespace korvel::controller
