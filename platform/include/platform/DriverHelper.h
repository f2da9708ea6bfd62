#pragma once

#include <cstdint>
#include <string>

#include "platform/CmdMessage.h"

// Makes messages for a driver. Implemented by the core, obtained from KVBaseDriver::GetHelper(), lives as
// long as the driver.
class IDriverHelper {
public:
    // A command or event of that name without parameters. Null when the core cannot make one.
    virtual kv::auto_com<ICmdMessage> CreateMessage(const std::string& name) = 0;
    virtual kv::auto_com<IOutboundBindMessage> CreateBindMessage(std::uint32_t kind, const std::string& name,
                                                                 const std::string& data) = 0;

protected:
    ~IDriverHelper() = default;
};

class IDriverHelperV2 : public IDriverHelper {
public:
    // The driver's own device id.
    virtual std::uint32_t GetDeviceId() = 0;
    // The interface `interfaceId` of a device or room, owned by it and valid during the present call only;
    // null when it has none.
    virtual void* GetDeviceInterface(std::uint32_t deviceId, const std::string& interfaceId) = 0;

protected:
    ~IDriverHelperV2() = default;
};

namespace kv {

template <class Interface>
Interface* GetDeviceService(IDriverHelperV2& helper, std::uint32_t deviceId) {
    return static_cast<Interface*>(helper.GetDeviceInterface(deviceId, Interface::kInterfaceId));
}

} // namespace kv
