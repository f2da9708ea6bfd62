#include "platform/KVBaseDriver.h"

#include <stdexcept>
#include <utility>

namespace {

template <class Interface>
Interface& Require(IInstanceManager& instances) {
    auto* service = kv::GetService<Interface>(instances);
    if (!service)
        throw std::runtime_error(std::string("the core offers no service ") + Interface::kInterfaceId);
    return *service;
}

} // namespace

// The driver model has one version so far, and no flags.
KVBaseDriver::KVBaseDriver(IInstanceManager& instances, int, int)
    : m_instances(instances),
      m_system(Require<kv::ISystem>(instances)),
      m_host(Require<IDriverHost>(instances)) {
    kv::InstallSystem(&m_system);
}

KVBaseDriver::~KVBaseDriver() {
    kv::UninstallSystem(&m_system);
}

std::int32_t KVBaseDriver::Initialize(std::uint32_t, KVXML::INode&, KVXML::INode*) {
    return 0;
}

std::int32_t KVBaseDriver::BoundCall(std::uint32_t, BindingType, const std::string&, const IBindMessage&,
                                     ICmdReturn*) {
    return 0;
}

void KVBaseDriver::OnBindingChanged(std::uint32_t, const std::string&, bool) {}
void KVBaseDriver::OnAVRoomOff(std::uint32_t) {}
void KVBaseDriver::OnAVSelected(const AVParams&, const AV_Class&, const AV_Class&, const AVLocationInfo&,
                                const AVDriverLocationInfo*, AVReturn&) {}
void KVBaseDriver::OnAVDeselected(const AVParams&, const AV_Class&, const AV_Class&) {}
void KVBaseDriver::OnAVAddLocationInfo(const AVParams&, const AV_Class&, const AV_Class&, AVLocationInfo&,
                                       AVDriverLocationInfo**) {}
bool KVBaseDriver::IsAVOutputToInputValid(const AVParams&, const AV_Class&, const AV_Class&) {
    return false;
}
kv::auto_com<KVXML::INode> KVBaseDriver::GetPersistState(std::uint32_t) {
    return nullptr;
}

std::int32_t KVBaseDriver::ExecuteCommand(const ICmdMessage& message, ICmdReturn* ret, std::uint32_t) {
    return CmdDispatcher::Dispatch(message, ret) ? 0 : -1;
}

bool KVBaseDriver::TestCondition(const ICondMessage&, std::uint32_t*) {
    return false;
}
kv::auto_com<KVXML::INode> KVBaseDriver::UIRequest(const ICmdMessage& message) {
    return UICmdDispatcher::Dispatch(message);
}

void KVBaseDriver::VmAdd(std::uint32_t id, const std::string& name, std::uint32_t type,
                         const std::string& value, std::int32_t a, std::int32_t b, const std::string& extra) {
    m_host.VmAdd(id, name, type, value, a, b, extra);
}

void KVBaseDriver::VmRemove(std::uint32_t id) {
    m_host.VmRemove(id);
}
void KVBaseDriver::ChangeMyVariable(std::uint32_t id, const std::string& text) {
    m_host.ChangeVariable(id, text);
}
void KVBaseDriver::FireEvent(std::uint32_t id) {
    m_host.FireEvent(id);
}
std::uint32_t KVBaseDriver::AddTimer(std::uint32_t milliseconds, std::uint32_t flags) {
    return m_host.AddTimer(milliseconds, flags);
}

void KVBaseDriver::KillTimer(std::uint32_t& id) {
    m_host.KillTimer(id);
    id = 0;
}

void KVBaseDriver::AddDynamicBinding(std::uint32_t id, BindingType type, bool flag1, const std::string& name,
                                     const std::string& bindingClass, bool flag2, bool flag3) {
    m_host.AddDynamicBinding(id, type, flag1, name, bindingClass, flag2, flag3);
}

void KVBaseDriver::DmInvalidateState() {
    m_host.InvalidateState();
}

std::int32_t KVBaseDriver::SendCommand(std::uint32_t deviceId, const ICmdMessage& message, ICmdReturn* ret) {
    return m_host.SendCommand(deviceId, message, ret);
}

kv::auto_com<ICmdMessage> KVBaseDriver::CreateCommandMessageFromName(const std::string& name) {
    return GetHelper().CreateMessage(name);
}

kv::auto_com<ICmdMessage> KVBaseDriver::CreateCommandMessageFromXml(const KVXML::INode& element) {
    return kv::CmdMessageFromXml(element);
}

void KVBaseDriver::setReturnValue(ICmdReturn* ret, const std::string& text) {
    if (ret)
        ret->SetValue(text);
}

void KVBaseDriver::ConSendDataToUI(const KVXML::INode& data) {
    m_host.SendDataToUI(data);
}
void KVBaseDriver::SendDataToDevice(std::uint32_t deviceId, const KVXML::INode& data) {
    m_host.SendDataToDevice(deviceId, data);
}

void KVBaseDriver::LogMessage(int level, const std::string& text) {
    m_host.Log(level, text);
}

void KVBaseDriver::RegisterCmd(const std::string& name, CmdDispatcher::Handler handler) {
    CmdDispatcher::RegisterCmd(name, std::move(handler));
    m_host.CommandRegistered(name);
}

void KVBaseDriver::RegisterUICmd(const std::string& name, UICmdDispatcher::Handler handler) {
    UICmdDispatcher::RegisterUICmd(name, std::move(handler));
    m_host.UIRequestRegistered(name);
}
