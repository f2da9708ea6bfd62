#include "replay/HostService.h"

namespace korvel::replay {

std::uint32_t TimerService::StartTimer(std::uint32_t milliseconds, std::uint32_t count,
                                       ITimerManagerCallback* callback) {
    if (!callback || count == 0)
        m_world.recorder.Fault("a timer without a callback, or that never expires");
    if (m_world.Fails(kFailStartTimer))
        return 0;
    return Start(milliseconds, count == 0 ? 1 : count, callback);
}

std::uint32_t TimerService::StartDriverTimer(std::uint32_t milliseconds, std::uint32_t count) {
    return Start(milliseconds, count, nullptr);
}

std::uint32_t TimerService::Start(std::uint32_t milliseconds, std::uint32_t count,
                                  ITimerManagerCallback* callback) {
    const std::uint32_t id = m_world.timers.Start(m_world.clock.GetElapsed(), milliseconds, count, callback);
    m_world.recorder.Output(OutputLine("timer").Number(id).Number(milliseconds));
    return id;
}

// The call is part of the transcript even when the timer has expired already.
void TimerService::CancelTimer(std::uint32_t timerId) {
    if (timerId == 0)
        return;
    m_world.recorder.Output(OutputLine("timer-stop").Number(timerId));
    m_world.timers.Stop(timerId);
}

void TimerService::RemoveCallback(ITimerManagerCallback* callback) {
    if (!callback)
        return;
    for (const std::uint32_t id : m_world.timers.StopAllOf(*callback))
        m_world.recorder.Output(OutputLine("timer-stop").Number(id));
}

kv::auto_com<ICmdMessage> HelperService::CreateMessage(const std::string& name) {
    if (m_world.Fails(kFailCreateMessage))
        return nullptr;
    return kv::CreateCmdMessage(name);
}

kv::auto_com<IOutboundBindMessage> HelperService::CreateBindMessage(std::uint32_t kind,
                                                                    const std::string& name,
                                                                    const std::string& data) {
    if (m_world.Fails(kFailCreateBindMessage))
        return nullptr;
    return kv::CreateOutboundBindMessage(kind, name, data);
}

void* HelperService::GetDeviceInterface(std::uint32_t deviceId, const std::string& interfaceId) {
    if (interfaceId == IAnalogSource::kInterfaceId && m_world.analogSources.contains(deviceId))
        return static_cast<IAnalogSource*>(
            &m_analogSources.try_emplace(deviceId, m_world, deviceId).first->second);
    const auto devices = m_world.mp3Devices.find(deviceId);
    if (interfaceId != IMp3Storage::kInterfaceId || devices == m_world.mp3Devices.end())
        return nullptr;
    m_storage.devices = devices->second;
    return static_cast<IMp3Storage*>(&m_storage);
}

void HelperService::AnalogSource::TakeSourceDevice(std::uint32_t deviceId) {
    m_world.recorder.Output(OutputLine("analog").Number(m_room).Value("TakeSourceDevice").Number(deviceId));
}

std::vector<std::uint32_t> HelperService::AnalogSource::GetDevicesInAnalogSource() {
    m_world.recorder.Output(OutputLine("analog").Number(m_room).Value("GetDevicesInAnalogSource"));
    return m_world.analogSources.at(m_room);
}

void HelperService::AnalogSource::SelectDevice(std::uint32_t deviceId) {
    m_world.recorder.Output(OutputLine("analog").Number(m_room).Value("SelectDevice").Number(deviceId));
}

void HostService::VmAdd(std::uint32_t id, const std::string& name, std::uint32_t type,
                        const std::string& value, std::int32_t a, std::int32_t b, const std::string&) {
    m_world.recorder.Output(
        OutputLine("vmadd").Number(id).Value(name).Number(type).Number(a).Number(b).Text(value));
}

void HostService::VmRemove(std::uint32_t id) {
    m_world.recorder.Output(OutputLine("vmremove").Number(id));
}

void HostService::ChangeVariable(std::uint32_t id, const std::string& text) {
    m_world.recorder.Output(OutputLine("set").Number(id).Text(text));
}

void HostService::FireEvent(std::uint32_t id) {
    m_world.recorder.Output(OutputLine("event").Number(id));
}

std::uint32_t HostService::AddTimer(std::uint32_t milliseconds, std::uint32_t flags) {
    return m_timers.StartDriverTimer(milliseconds,
                                     (flags & kTimerFlagPeriodic) != 0 ? TimerQueue::kEndless : 1);
}

void HostService::AddDynamicBinding(std::uint32_t id, BindingType type, bool flag1, const std::string& name,
                                    const std::string& bindingClass, bool flag2, bool flag3) {
    m_world.recorder.Output(OutputLine("binding")
                                .Number(id)
                                .Number(type)
                                .Flag(flag1)
                                .Value(name)
                                .Value(bindingClass)
                                .Flag(flag2)
                                .Flag(flag3));
}

void HostService::InvalidateState() {
    m_world.recorder.Output(OutputLine("invalidate"));
}

// Rooms and devices hear messages and commands alike; only the way back differs.
std::int32_t HostService::SendCommand(std::uint32_t deviceId, const ICmdMessage& message, ICmdReturn* ret) {
    std::string reply;
    m_messaging.SendMessage(deviceId, message, &reply);
    if (ret && !reply.empty())
        ret->SetValue(reply);
    return 0;
}

void HostService::SendDataToUI(const KVXML::INode& data) {
    m_world.recorder.Output(OutputLine("ui").Text(data.ToText()));
}

void HostService::SendDataToDevice(std::uint32_t deviceId, const KVXML::INode& data) {
    m_world.recorder.Output(OutputLine("ui-device").Number(deviceId).Text(data.ToText()));
}

void HostService::Log(int level, const std::string& text) {
    m_world.recorder.Output(OutputLine("log").Number(level).Text(MaskAddresses(text)));
}

void HostService::LogDebug(const std::string& text) {
    m_world.recorder.Output(OutputLine("debug").Text(MaskAddresses(text)));
}

void HostService::CommandRegistered(const std::string& name) {
    m_world.recorder.Output(OutputLine("register").Value(name));
}

void HostService::UIRequestRegistered(const std::string& name) {
    m_world.recorder.Output(OutputLine("register-ui").Value(name));
}

} // namespace korvel::replay
