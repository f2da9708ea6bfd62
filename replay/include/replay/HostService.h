// The services that are one driver's own: its host, its helper and the timer manager.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/DriverHelper.h"
#include "platform/IDriverHost.h"
#include "platform/Services.h"
#include "platform/TimerManager.h"
#include "replay/World.h"

namespace korvel::replay {

class TimerService final : public ITimerManager {
public:
    explicit TimerService(World& world) : m_world(world) {}

    std::uint32_t StartTimer(std::uint32_t milliseconds, std::uint32_t count,
                             ITimerManagerCallback* callback) override;
    void CancelTimer(std::uint32_t timerId) override;
    void RemoveCallback(ITimerManagerCallback* callback) override;

    // A timer of the driver itself.
    std::uint32_t StartDriverTimer(std::uint32_t milliseconds, std::uint32_t count);

private:
    std::uint32_t Start(std::uint32_t milliseconds, std::uint32_t count, ITimerManagerCallback* callback);

    World& m_world;
};

class HelperService final : public IDriverHelperV2 {
public:
    explicit HelperService(World& world) : m_world(world) {}

    kv::auto_com<ICmdMessage> CreateMessage(const std::string& name) override;
    kv::auto_com<IOutboundBindMessage> CreateBindMessage(std::uint32_t kind, const std::string& name,
                                                         const std::string& data) override;
    std::uint32_t GetDeviceId() override { return kDriverDeviceId; }
    void* GetDeviceInterface(std::uint32_t deviceId, const std::string& interfaceId) override;

private:
    // Stands for whichever device was asked for last: an interface is only valid during the present call.
    class Mp3Storage final : public IMp3Storage {
    public:
        std::vector<std::uint32_t> GetMp3Devices() override { return devices; }
        std::vector<std::uint32_t> devices;
    };

    // One for each room: a call may come back in, and another room's interface be asked for, before it returns.
    class AnalogSource final : public IAnalogSource {
    public:
        AnalogSource(World& world, std::uint32_t room) : m_world(world), m_room(room) {}

        void TakeSourceDevice(std::uint32_t deviceId) override;
        std::vector<std::uint32_t> GetDevicesInAnalogSource() override;
        void SelectDevice(std::uint32_t deviceId) override;

    private:
        World& m_world;
        std::uint32_t m_room;
    };

    World& m_world;
    Mp3Storage m_storage;
    std::map<std::uint32_t, AnalogSource> m_analogSources;
};

class HostService final : public IDriverHost {
public:
    HostService(World& world, IDeviceMessaging& messaging, TimerService& timers, IDriverHelperV2& helper,
                IMediaManager& media)
        : m_world(world), m_messaging(messaging), m_timers(timers), m_helper(helper), m_media(media) {}

    void VmAdd(std::uint32_t id, const std::string& name, std::uint32_t type, const std::string& value,
               std::int32_t a, std::int32_t b, const std::string& extra) override;
    void VmRemove(std::uint32_t id) override;
    void ChangeVariable(std::uint32_t id, const std::string& text) override;
    void FireEvent(std::uint32_t id) override;
    std::uint32_t AddTimer(std::uint32_t milliseconds, std::uint32_t flags) override;
    void KillTimer(std::uint32_t id) override { m_timers.CancelTimer(id); }
    void AddDynamicBinding(std::uint32_t id, BindingType type, bool flag1, const std::string& name,
                           const std::string& bindingClass, bool flag2, bool flag3) override;
    void InvalidateState() override;
    std::int32_t SendCommand(std::uint32_t deviceId, const ICmdMessage& message, ICmdReturn* ret) override;
    void SendDataToUI(const KVXML::INode& data) override;
    void SendDataToDevice(std::uint32_t deviceId, const KVXML::INode& data) override;
    void Log(int level, const std::string& text) override;
    void LogDebug(const std::string& text) override;
    void CommandRegistered(const std::string& name) override;
    void UIRequestRegistered(const std::string& name) override;
    IMediaManager* GetMediaManager() override { return &m_media; }
    ITimerManager& GetTimerManager() override { return m_timers; }
    IDriverHelperV2& GetHelper() override { return m_helper; }
    std::string GetBrandingText() override { return ""; }

private:
    World& m_world;
    IDeviceMessaging& m_messaging;
    TimerService& m_timers;
    IDriverHelperV2& m_helper;
    IMediaManager& m_media;
};

} // namespace korvel::replay
