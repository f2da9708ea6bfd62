#include "host/DriverHelper.h"

#include "host/Ids.h"

namespace korvel::controller {

std::uint32_t DriverHelper::GetDeviceId() {
    return kDriverDeviceId;
}

void* DriverHelper::GetDeviceInterface(std::uint32_t deviceId, const std::string& interfaceId) {
    if (interfaceId != IMp3Storage::kInterfaceId || !m_rooms.Find(deviceId))
        return nullptr;
    return static_cast<IMp3Storage*>(&m_storage);
}

} // namespace korvel::controller
