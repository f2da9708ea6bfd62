// Services of the core that a driver obtains from its instance manager. All are implemented by the core, live
// as long as the driver, and are called on the driver thread in any state of the driver. None of them keeps a
// reference or pointer that it is handed beyond the call.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/CmdMessage.h"
#include "platform/Xml.h"

// Messages and commands to rooms and devices. The receiver may call back into the driver before the call
// returns.
class IDeviceMessaging {
public:
    static constexpr const char* kInterfaceId = "{731E9F66-23F5-4100-AA7B-C3F189BAABFD}";

    // The name of a room or device; "" when it has none.
    virtual std::string GetDeviceName(std::uint32_t deviceId) = 0;
    // Delivers `message`. With a `reply` the receiver's answer is waited for; it stays "" when there is none.
    virtual void SendMessage(std::uint32_t deviceId, const ICmdMessage& message, std::string* reply) = 0;

protected:
    ~IDeviceMessaging() = default;
};

// Data for user interfaces.
class IUINotifier {
public:
    static constexpr const char* kInterfaceId = "{71528B43-B586-4739-8682-4A6FFC09B1BE}";

    // To all user interfaces, in the name of the driver `fromDeviceId`.
    virtual void SendToUIs(std::uint32_t fromDeviceId, const KVXML::INode& data) = 0;

protected:
    ~IUINotifier() = default;
};

// Sends a message over a binding of the driver to what is bound there.
class IBindMessageSender {
public:
    static constexpr const char* kInterfaceId = "{98B95B78-04D0-4612-A173-FF132CAB349E}";

    // A "SEND" message carries one complete line as its data. Delivery is not confirmed.
    virtual void SendBindMessage(std::uint32_t fromDeviceId, std::uint32_t bindingId,
                                 const IOutboundBindMessage& message) = 0;

protected:
    ~IBindMessageSender() = default;
};

// Sets driver variables from code that has no driver at hand.
class IVariableService {
public:
    static constexpr const char* kInterfaceId = "{4D14E6E2-E2A6-4EA8-99B1-A059CE06D8D9}";

    // Sets variable `id` of the driver `deviceId` to `text` in the name of `fromDeviceId`; `notify` tells the
    // subscribers.
    virtual void SetVariable(std::uint32_t deviceId, std::uint32_t fromDeviceId, std::uint32_t id,
                             const std::string& text, bool notify) = 0;

protected:
    ~IVariableService() = default;
};

// Told when the queue that a room hears has come to its end.
class IRoomService {
public:
    static constexpr const char* kInterfaceId = "{6F063745-6325-4F53-89D7-FFE5ED4CC1B0}";

    // `code` is the device id of the driver whose queue ended, `roomCode` the room id plus 20.
    virtual void QueueEnded(std::uint32_t code, std::uint32_t roomCode) = 0;

protected:
    ~IRoomService() = default;
};

// Told how the announcement stream of the driver fares.
class IAnnouncementNotifier {
public:
    static constexpr const char* kInterfaceId = "{E869B37E-23C8-4334-9B26-0A96C0EF981C}";

    virtual void AnnouncementStreamReady() = 0;
    virtual void AnnouncementComplete() = 0;

protected:
    ~IAnnouncementNotifier() = default;
};

// Offered by a device that knows storage devices with playable files; found through
// IDriverHelperV2::GetDeviceInterface.
class IMp3Storage {
public:
    static constexpr const char* kInterfaceId = "{A303F1D2-D6F9-4392-B3C8-589E5B39D23C}";

    virtual std::vector<std::uint32_t> GetMp3Devices() = 0;

protected:
    ~IMp3Storage() = default;
};

// Offered by a room that can take its audio from the analog output of another device; found through
// IDriverHelperV2::GetDeviceInterface.
class IAnalogSource {
public:
    static constexpr const char* kInterfaceId = "{502EBA2A-3137-41b2-8FA0-6671EF1BD447}";

    // The room takes `deviceId` as the source it hears.
    virtual void TakeSourceDevice(std::uint32_t deviceId) = 0;
    // The devices between the room and its source, nearest first.
    virtual std::vector<std::uint32_t> GetDevicesInAnalogSource() = 0;
    // Passes the room's present selection on to a device on the way.
    virtual void SelectDevice(std::uint32_t deviceId) = 0;

protected:
    ~IAnalogSource() = default;
};
