#pragma once

#include <cstdint>
#include <string>

#include "platform/CmdMessage.h"
#include "platform/DriverHelper.h"
#include "platform/IDriver.h"
#include "platform/MediaManager.h"
#include "platform/TimerManager.h"
#include "platform/Xml.h"

// Flags of IDriverHost::AddTimer: bit 0 is always set, bit 4 makes the timer repeat until it is killed.
inline constexpr std::uint32_t kTimerFlagPeriodic = 16;

// Types of driver variables.
inline constexpr std::uint32_t kVariableTypeNumber = 2;
inline constexpr std::uint32_t kVariableTypeXml = 13;

// What a core does for one driver. Implemented by the core; a driver reaches it through the members of
// KVBaseDriver. Driver thread; every operation may be called from the driver's constructor on.
class IDriverHost {
public:
    static constexpr const char* kInterfaceId = "DriverHost";

    // Variables: `a` and `b` are the core's own marks (shown to programmers, kept from user interfaces).
    virtual void VmAdd(std::uint32_t id, const std::string& name, std::uint32_t type,
                       const std::string& value, std::int32_t a, std::int32_t b,
                       const std::string& extra) = 0;
    virtual void VmRemove(std::uint32_t id) = 0;
    virtual void ChangeVariable(std::uint32_t id, const std::string& text) = 0;

    virtual void FireEvent(std::uint32_t id) = 0;

    // Starts a timer whose expiry is IDriver::OnTimerExpired. The id is never 0 and never used twice. The
    // core drops the timers of a driver that is destroyed.
    virtual std::uint32_t AddTimer(std::uint32_t milliseconds, std::uint32_t flags) = 0;
    virtual void KillTimer(std::uint32_t id) = 0;

    // Offers a binding: ids, types, names, classes and flags are those of the driver's definition.
    virtual void AddDynamicBinding(std::uint32_t id, BindingType type, bool flag1, const std::string& name,
                                   const std::string& bindingClass, bool flag2, bool flag3) = 0;
    // Asks the core to fetch IDriver::GetPersistState soon, after the present call.
    virtual void InvalidateState() = 0;

    // The receiver may call back into the driver before this returns. `ret` may be null. 0 when delivered.
    virtual std::int32_t SendCommand(std::uint32_t deviceId, const ICmdMessage& message, ICmdReturn* ret) = 0;
    virtual void SendDataToUI(const KVXML::INode& data) = 0;
    virtual void SendDataToDevice(std::uint32_t deviceId, const KVXML::INode& data) = 0;

    virtual void Log(int level, const std::string& text) = 0;
    virtual void LogDebug(const std::string& text) = 0;

    // The driver answers this command, or this request of user interfaces.
    virtual void CommandRegistered(const std::string& name) = 0;
    virtual void UIRequestRegistered(const std::string& name) = 0;

    virtual IMediaManager* GetMediaManager() = 0;
    virtual ITimerManager& GetTimerManager() = 0;
    virtual IDriverHelperV2& GetHelper() = 0;
    // The text of the core's configuration that names the streaming service's brand.
    virtual std::string GetBrandingText() = 0;

protected:
    ~IDriverHost() = default;
};
