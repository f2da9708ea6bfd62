#pragma once

#include <functional>
#include <set>
#include <string>

#include "driver/DriverPort.h"
#include "driver/services/DeviceMessaging.h"
#include "driver/services/DriverHelper.h"
#include "driver/services/TimerService.h"
#include "driver/services/VariableStore.h"
#include "platform/IDriverHost.h"

namespace korvel::controller {

// What the driver's base class calls: passes each call on to the part of the core whose business it is.
class DriverHost final : public IDriverHost {
public:
    struct Parts {
        VariableStore& variables;
        TimerService& timers;
        DeviceMessaging& devices;
        DriverHelper& helper;
        DriverPort& driver;
        EventBus& events;
        const common::Log& log;
        IMediaManager* media; // may be null
    };

    explicit DriverHost(const Parts& parts) : m_parts(parts) {}

    // Both are called inside a call of the driver, so they must not call it.
    void SetBindingOffered(std::function<void(std::uint32_t)> offered) {
        m_bindingOffered = std::move(offered);
    }
    void SetStateInvalid(std::function<void()> invalid) { m_stateInvalid = std::move(invalid); }

    bool HasCommand(const std::string& name) const { return m_commands.contains(name); }
    bool HasUIRequest(const std::string& name) const { return m_requests.contains(name); }

    void VmAdd(std::uint32_t id, const std::string& name, std::uint32_t type, const std::string& value,
               std::int32_t a, std::int32_t b, const std::string& extra) override;
    void VmRemove(std::uint32_t id) override { m_parts.variables.Remove(id); }
    void ChangeVariable(std::uint32_t id, const std::string& text) override {
        m_parts.variables.Change(id, text);
    }
    void FireEvent(std::uint32_t id) override;
    std::uint32_t AddTimer(std::uint32_t milliseconds, std::uint32_t flags) override;
    void KillTimer(std::uint32_t id) override { m_parts.timers.CancelTimer(id); }
    void AddDynamicBinding(std::uint32_t id, BindingType type, bool flag1, const std::string& name,
                           const std::string& bindingClass, bool flag2, bool flag3) override;
    void InvalidateState() override;
    std::int32_t SendCommand(std::uint32_t deviceId, const ICmdMessage& message, ICmdReturn* ret) override;
    void SendDataToUI(const KVXML::INode& data) override;
    void SendDataToDevice(std::uint32_t deviceId, const KVXML::INode& data) override;
    void Log(int level, const std::string& text) override;
    void LogDebug(const std::string& text) override { m_parts.log.Debug("driver " + text); }
    void CommandRegistered(const std::string& name) override { m_commands.insert(name); }
    void UIRequestRegistered(const std::string& name) override { m_requests.insert(name); }
    IMediaManager* GetMediaManager() override { return m_parts.media; }
    ITimerManager& GetTimerManager() override { return m_parts.timers; }
    IDriverHelperV2& GetHelper() override { return m_parts.helper; }
    std::string GetBrandingText() override { return ""; }

private:
    Parts m_parts;
    std::function<void(std::uint32_t)> m_bindingOffered;
    std::function<void()> m_stateInvalid;
    std::set<std::string> m_commands;
    std::set<std::string> m_requests;
};

} // namespace korvel::controller
