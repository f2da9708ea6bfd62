#pragma once

#include <functional>

#include "base/EventBus.h"
#include "common/Log.h"
#include "driver/rooms/RoomTable.h"
#include "platform/Services.h"

namespace korvel::controller {

// Delivers the driver's messages to rooms, each an event {"type":"message","room","name","parameters"}, and
// its data for user interfaces, each an event {"type":"ui","xml"}, or for one device, each an event
// {"type":"data","device","xml"}. Storage devices have no answers: the
// locations in the media database are complete paths.
class DeviceMessaging final : public IDeviceMessaging, public IUINotifier, public IRoomService {
public:
    using RoomListener = std::function<void(Room&, const ICmdMessage&)>;

    DeviceMessaging(RoomTable& rooms, EventBus& events, const common::Log& log)
        : m_rooms(rooms), m_events(events), m_log(log) {}

    // `listener` hears every message to a room. It is called inside the driver's call, so it must not call
    // the driver.
    void SetRoomListener(RoomListener listener) { m_listener = std::move(listener); }

    std::string GetDeviceName(std::uint32_t deviceId) override;
    void SendMessage(std::uint32_t deviceId, const ICmdMessage& message, std::string* reply) override;
    void SendToUIs(std::uint32_t fromDeviceId, const KVXML::INode& data) override;
    void QueueEnded(std::uint32_t code, std::uint32_t roomCode) override;

    void SendToDevice(std::uint32_t deviceId, const KVXML::INode& data);
    // False when there is no such room.
    bool Deliver(std::uint32_t deviceId, const ICmdMessage& message);

private:
    RoomTable& m_rooms;
    EventBus& m_events;
    const common::Log& m_log;
    RoomListener m_listener;
};

} // namespace korvel::controller
