#include "driver/services/DriverHost.h"

#include <nlohmann/json.hpp>

#include "driver/Ids.h"

namespace korvel::controller {

void DriverHost::VmAdd(std::uint32_t id, const std::string& name, std::uint32_t type,
                       const std::string& value, std::int32_t, std::int32_t, const std::string&) {
    m_parts.variables.Add(id, name, type, value);
}

void DriverHost::FireEvent(std::uint32_t id) {
    m_parts.events.Publish({{"type", "event"}, {"id", id}});
}

std::uint32_t DriverHost::AddTimer(std::uint32_t milliseconds, std::uint32_t flags) {
    const std::uint32_t count = flags & kTimerFlagPeriodic ? TimerService::kForever : 1;
    return m_parts.timers.Start(milliseconds, count,
                                [&driver = m_parts.driver](std::uint32_t id) { driver.TimerExpired(id); });
}

void DriverHost::AddDynamicBinding(std::uint32_t id, BindingType, bool, const std::string& name,
                                   const std::string&, bool, bool) {
    m_parts.log.Debug("driver offers binding " + std::to_string(id) + " (" + name + ")");
    if (m_bindingOffered)
        m_bindingOffered(id);
}

void DriverHost::InvalidateState() {
    if (m_stateInvalid)
        m_stateInvalid();
}

std::int32_t DriverHost::SendCommand(std::uint32_t deviceId, const ICmdMessage& message, ICmdReturn*) {
    return m_parts.devices.Deliver(deviceId, message) ? 0 : -1;
}

void DriverHost::SendDataToUI(const KVXML::INode& data) {
    m_parts.devices.SendToUIs(kDriverDeviceId, data);
}

void DriverHost::SendDataToDevice(std::uint32_t deviceId, const KVXML::INode& data) {
    m_parts.devices.SendToDevice(deviceId, data);
}

void DriverHost::Log(int level, const std::string& text) {
    m_parts.log.WriteFor(text, common::LogLevel::Info, "driver [" + std::to_string(level) + "] " + text);
}

} // namespace korvel::controller
