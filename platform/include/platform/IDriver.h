#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/AvRouting.h"
#include "platform/CmdMessage.h"
#include "platform/InstanceManager.h"
#include "platform/Xml.h"

// The code of a binding's type, as drivers pass it to AddDynamicBinding.
using BindingType = std::uint32_t;

// What a core calls on a driver. All calls come on the driver thread, one at a time, except that the core may
// call in again while the driver is inside a call to a service. No exception leaves any of them. Plug-ins are
// built apart from the core: the operations keep their order.
class IDriver {
public:
    virtual std::int32_t BoundCall(std::uint32_t id, BindingType type, const std::string& text,
                                   const IBindMessage& message, ICmdReturn* ret) = 0;
    virtual void OnBindingChanged(std::uint32_t id, const std::string& name, bool bound) = 0;

    virtual ~IDriver() = default;

    // Called once, before anything else. 0 on success; a negative value means that the driver cannot run.
    virtual std::int32_t Initialize(std::uint32_t id, KVXML::INode& config, KVXML::INode* persist) = 0;
    virtual void RemovedFromProject() = 0;

    virtual void OnAVRoomOff(std::uint32_t roomId) = 0;
    // The element to persist; the core hands it back to Initialize at the next start.
    virtual kv::auto_com<KVXML::INode> GetPersistState(std::uint32_t) = 0;
    // 0 when the command was run or deliberately ignored, negative for an unknown one. `source` is the device
    // or binding that sent it.
    virtual std::int32_t ExecuteCommand(const ICmdMessage& message, ICmdReturn* ret,
                                        std::uint32_t source) = 0;
    virtual bool TestCondition(const ICondMessage& condition, std::uint32_t* value) = 0;
    virtual kv::auto_com<KVXML::INode> UIRequest(const ICmdMessage& message) = 0;

    virtual void OnAVSelected(const AVParams& params, const AV_Class& output, const AV_Class& input,
                              const AVLocationInfo& location, const AVDriverLocationInfo* driverLocation,
                              AVReturn& result) = 0;
    virtual void OnAVDeselected(const AVParams& params, const AV_Class& output, const AV_Class& input) = 0;
    virtual void OnAVAddLocationInfo(const AVParams& params, const AV_Class& output, const AV_Class& input,
                                     AVLocationInfo& location, AVDriverLocationInfo** driverLocation) = 0;
    virtual bool IsAVOutputToInputValid(const AVParams& params, const AV_Class& output,
                                        const AV_Class& input) = 0;

    virtual KVXML::INode* GetDeviceCommon() = 0;
    virtual KVXML::INode* GetDeviceIP() = 0;
    virtual std::string GetEventLabel(std::uint32_t eventId) = 0;
    virtual void OnConnectionStatusChanged(std::uint32_t bindingId, bool connected) = 0;
    virtual void OnDataIn(std::uint32_t bindingId, const std::vector<std::uint8_t>& bytes) = 0;
    virtual void OnDataIn(std::uint32_t bindingId, const KVXML::INode& packet) = 0;
    virtual void OnPoll() = 0;
    virtual void OnEventFired(std::uint32_t deviceId, std::uint32_t eventId) = 0;
    // A timer of IDriverHost::AddTimer expired.
    virtual void OnTimerExpired(std::uint32_t timerId, std::int32_t) = 0;
};

// What a plug-in's exported, extern "C" function GetCreationFunc returns. The driver that a CreationFunc
// makes belongs to the core, which deletes it; a second call with the same instance manager while it lives
// yields the same driver.
using CreationFunc = IDriver* (*)(IInstanceManager&);
using GetCreationFuncType = CreationFunc (*)();
inline constexpr const char* kGetCreationFuncName = "GetCreationFunc";
