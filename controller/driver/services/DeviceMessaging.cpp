#include "driver/services/DeviceMessaging.h"

#include <nlohmann/json.hpp>

#include "driver/Ids.h"

namespace korvel::controller {
namespace {

// The room service counts rooms from here.
constexpr std::uint32_t kRoomCodeOffset = 20;

// {"NAME": "value", ...}
nlohmann::json JsonOfParameters(const ICmdMessage& message) {
    nlohmann::json parameters = nlohmann::json::object();
    for (std::size_t i = 0; i < message.GetParamCount(); ++i) {
        const CmdParam& param = message.GetParamAt(i);
        parameters[param.name] = param.value;
    }
    return parameters;
}

} // namespace

std::string DeviceMessaging::GetDeviceName(std::uint32_t deviceId) {
    if (deviceId == kDriverDeviceId)
        return "Digital Audio";
    const Room* room = m_rooms.Find(deviceId);
    return room ? room->config.name : "";
}

void DeviceMessaging::SendMessage(std::uint32_t deviceId, const ICmdMessage& message, std::string*) {
    Deliver(deviceId, message);
}

bool DeviceMessaging::Deliver(std::uint32_t deviceId, const ICmdMessage& message) {
    Room* room = m_rooms.Find(deviceId);
    if (!room) {
        m_log.Debug("message " + message.GetName() + " to device " + std::to_string(deviceId) +
                    ": not a room");
        return false;
    }
    m_events.Publish({{"type", "message"},
                      {"room", deviceId},
                      {"name", message.GetName()},
                      {"parameters", JsonOfParameters(message)}});
    if (m_listener)
        m_listener(*room, message);
    return true;
}

void DeviceMessaging::SendToUIs(std::uint32_t, const KVXML::INode& data) {
    m_events.Publish({{"type", "ui"}, {"xml", data.ToText()}});
}

void DeviceMessaging::SendToDevice(std::uint32_t deviceId, const KVXML::INode& data) {
    m_events.Publish({{"type", "data"}, {"device", deviceId}, {"xml", data.ToText()}});
}

void DeviceMessaging::QueueEnded(std::uint32_t, std::uint32_t roomCode) {
    Deliver(roomCode - kRoomCodeOffset, *kv::CreateCmdMessage("QUEUE_ENDED"));
}

} // namespace korvel::controller
