// The services that carry messages and notes out of the driver.
#pragma once

#include <cstdint>
#include <string>

#include "platform/Services.h"
#include "replay/World.h"

namespace korvel::replay {

class DeviceMessagingService final : public IDeviceMessaging {
public:
    explicit DeviceMessagingService(World& world) : m_world(world) {}

    std::string GetDeviceName(std::uint32_t deviceId) override;
    void SendMessage(std::uint32_t deviceId, const ICmdMessage& message, std::string* reply) override;

private:
    World& m_world;
};

class UINotifierService final : public IUINotifier {
public:
    explicit UINotifierService(World& world) : m_world(world) {}
    void SendToUIs(std::uint32_t fromDeviceId, const KVXML::INode& data) override;

private:
    World& m_world;
};

class BindMessageService final : public IBindMessageSender {
public:
    explicit BindMessageService(World& world) : m_world(world) {}
    void SendBindMessage(std::uint32_t fromDeviceId, std::uint32_t bindingId,
                         const IOutboundBindMessage& message) override;

private:
    World& m_world;
};

class VariableService final : public IVariableService {
public:
    explicit VariableService(World& world) : m_world(world) {}
    void SetVariable(std::uint32_t deviceId, std::uint32_t fromDeviceId, std::uint32_t id,
                     const std::string& text, bool notify) override;

private:
    World& m_world;
};

class RoomService final : public IRoomService {
public:
    explicit RoomService(World& world) : m_world(world) {}
    void QueueEnded(std::uint32_t code, std::uint32_t roomCode) override;

private:
    World& m_world;
};

class AnnouncementService final : public IAnnouncementNotifier {
public:
    explicit AnnouncementService(World& world) : m_world(world) {}
    void AnnouncementStreamReady() override;
    void AnnouncementComplete() override;

private:
    World& m_world;
};

} // namespace korvel::replay
