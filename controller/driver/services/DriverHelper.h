#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "driver/rooms/AnalogSources.h"
#include "platform/DriverHelper.h"
#include "platform/Services.h"

namespace korvel::controller {

// Makes messages for the driver and shows it the interfaces of rooms: every room can play what any of the
// music folders holds, and has a source.
class DriverHelper final : public IDriverHelperV2 {
public:
    DriverHelper(AnalogSources& sources, std::vector<std::uint32_t> storageDevices)
        : m_sources(sources), m_storage(std::move(storageDevices)) {}

    kv::auto_com<ICmdMessage> CreateMessage(const std::string& name) override {
        return kv::CreateCmdMessage(name);
    }
    kv::auto_com<IOutboundBindMessage> CreateBindMessage(std::uint32_t kind, const std::string& name,
                                                         const std::string& data) override {
        return kv::CreateOutboundBindMessage(kind, name, data);
    }
    std::uint32_t GetDeviceId() override;
    void* GetDeviceInterface(std::uint32_t deviceId, const std::string& interfaceId) override;

private:
    class Storage final : public IMp3Storage {
    public:
        explicit Storage(std::vector<std::uint32_t> devices) : m_devices(std::move(devices)) {}
        std::vector<std::uint32_t> GetMp3Devices() override { return m_devices; }

    private:
        std::vector<std::uint32_t> m_devices;
    };

    AnalogSources& m_sources;
    Storage m_storage;
};

} // namespace korvel::controller
