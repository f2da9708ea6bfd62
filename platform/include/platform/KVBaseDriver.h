#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/CmdDispatcher.h"
#include "platform/IDriver.h"
#include "platform/IDriverHost.h"
#include "platform/InstanceManager.h"
#include "platform/System.h"

// The base of a driver: turns its members into calls of the core's services and gives every entry of IDriver
// a default. A core implements IDriverHost and the other services, never this class.
class KVBaseDriver : public IDriver, public CmdDispatcher, public UICmdDispatcher {
public:
    std::int32_t Initialize(std::uint32_t id, KVXML::INode& config, KVXML::INode* persist) override;
    void RemovedFromProject() override {}
    std::int32_t BoundCall(std::uint32_t id, BindingType type, const std::string& text,
                           const IBindMessage& message, ICmdReturn* ret) override;
    void OnBindingChanged(std::uint32_t id, const std::string& name, bool bound) override;
    void OnAVRoomOff(std::uint32_t roomId) override;
    void OnAVSelected(const AVParams& params, const AV_Class& output, const AV_Class& input,
                      const AVLocationInfo& location, const AVDriverLocationInfo* driverLocation,
                      AVReturn& result) override;
    void OnAVDeselected(const AVParams& params, const AV_Class& output, const AV_Class& input) override;
    void OnAVAddLocationInfo(const AVParams& params, const AV_Class& output, const AV_Class& input,
                             AVLocationInfo& location, AVDriverLocationInfo** driverLocation) override;
    bool IsAVOutputToInputValid(const AVParams& params, const AV_Class& output,
                                const AV_Class& input) override;
    kv::auto_com<KVXML::INode> GetPersistState(std::uint32_t) override;
    // Runs the registered handler; -1 when there is none.
    std::int32_t ExecuteCommand(const ICmdMessage& message, ICmdReturn* ret, std::uint32_t source) override;
    bool TestCondition(const ICondMessage& condition, std::uint32_t* value) override;
    // Serves the registered requests; null for any other.
    kv::auto_com<KVXML::INode> UIRequest(const ICmdMessage& message) override;
    KVXML::INode* GetDeviceCommon() override { return nullptr; }
    KVXML::INode* GetDeviceIP() override { return nullptr; }
    std::string GetEventLabel(std::uint32_t) override { return ""; }
    void OnConnectionStatusChanged(std::uint32_t, bool) override {}
    void OnDataIn(std::uint32_t, const std::vector<std::uint8_t>&) override {}
    void OnDataIn(std::uint32_t, const KVXML::INode&) override {}
    void OnPoll() override {}
    void OnEventFired(std::uint32_t, std::uint32_t) override {}
    void OnTimerExpired(std::uint32_t, std::int32_t) override {}

protected:
    // `model` is the version of the driver model (3), `flags` the core's own (0). The services "DriverHost"
    // and "System" must be there: a core without them cannot create drivers, and std::runtime_error says
    // which one is missing.
    KVBaseDriver(IInstanceManager& instances, int model, int flags);
    ~KVBaseDriver() override;
    KVBaseDriver(const KVBaseDriver&) = delete;
    KVBaseDriver& operator=(const KVBaseDriver&) = delete;

    void VmAdd(std::uint32_t id, const std::string& name, std::uint32_t type, const std::string& value,
               std::int32_t a, std::int32_t b, const std::string& extra);
    void VmRemove(std::uint32_t id);
    void ChangeMyVariable(std::uint32_t id, const std::string& text);
    void FireEvent(std::uint32_t id);
    std::uint32_t AddTimer(std::uint32_t milliseconds, std::uint32_t flags);
    // Zeroes the id.
    void KillTimer(std::uint32_t& id);
    void AddDynamicBinding(std::uint32_t id, BindingType type, bool flag1, const std::string& name,
                           const std::string& bindingClass, bool flag2, bool flag3);
    void DmInvalidateState();
    std::int32_t SendCommand(std::uint32_t deviceId, const ICmdMessage& message, ICmdReturn* ret);
    // Null when the core cannot make one.
    kv::auto_com<ICmdMessage> CreateCommandMessageFromName(const std::string& name);
    // Null when the element is not a command.
    kv::auto_com<ICmdMessage> CreateCommandMessageFromXml(const KVXML::INode& element);
    // Nothing happens for a null return.
    static void setReturnValue(ICmdReturn* ret, const std::string& text);
    void ConSendDataToUI(const KVXML::INode& data);
    void SendDataToDevice(std::uint32_t deviceId, const KVXML::INode& data);

    void LogMessage(int level, const std::string& text);
    // Two to five pieces that make one line.
    template <class... Pieces>
    void LogDebugMessage(const Pieces&... pieces) {
        static_assert(sizeof...(Pieces) >= 2 && sizeof...(Pieces) <= 5);
        std::string line;
        (line.append(pieces), ...);
        m_host.LogDebug(line);
    }

    // Registering also tells the core what the driver answers.
    void RegisterCmd(const std::string& name, CmdDispatcher::Handler handler);
    void RegisterUICmd(const std::string& name, UICmdDispatcher::Handler handler);

    IInstanceManager& GetInstanceManager() { return m_instances; }
    // Null in a core without a media database.
    IMediaManager* GetMediaManager() { return m_host.GetMediaManager(); }
    ITimerManager& GetTimerManager() { return m_host.GetTimerManager(); }
    IDriverHelperV2& GetHelper() { return m_host.GetHelper(); }
    std::uint32_t GetDeviceId() { return GetHelper().GetDeviceId(); }
    std::string GetBrandingText() { return m_host.GetBrandingText(); }

private:
    IInstanceManager& m_instances;
    kv::ISystem& m_system;
    IDriverHost& m_host;
};
