#include "FuzzCore.h"

#include <cstdlib>
#include <iostream>
#include <stdexcept>

#include "Entries.h"
#include "driver/korvel_digitalaudio.h"

namespace fuzz {

namespace {

// Calls into the driver from within a call, and from within those; beyond that a core only waits.
constexpr int kMaxDepth = 3;
constexpr int kMaxInterruptions = 400;

class Client final : public KVRhapsodyClient::RhapsodyClient {
public:
    explicit Client(FuzzCore& core) : m_core(core) {}
    void Connect(const std::string&) override { m_core.Interrupt(); }
    void DisableOfflineMode() override { m_core.Interrupt(); }
    void GetMemberPlaylists(IRhapsodyCallback*) override { m_core.Interrupt(); }
    void GetTracksForPlaylist(const std::string&, unsigned int, unsigned int, unsigned int,
                              IRhapsodyCallback*) override {
        m_core.Interrupt();
    }
    void GetCurrentSongInfo(const std::string&, std::int32_t, IRhapsodyCallback*) override {
        m_core.Interrupt();
    }

private:
    FuzzCore& m_core;
};

[[noreturn]] void Violation(const char* what) {
    std::cerr << "broken rule: " << what << std::endl;
    std::abort();
}

} // namespace

FuzzCore::FuzzCore(FuzzedDataProvider& data, const Manner& manner)
    : m_data(data),
      m_manner(manner),
      m_stringX(CreateStandardStringX()),
      m_message(CreateStandardKVMessage()) {
    m_instances = {
        {IDriverHost::kInterfaceId, static_cast<IDriverHost*>(this)},
        {IMediaManager::kInterfaceId, static_cast<IMediaManager*>(this)},
        {ITimerManager::kInterfaceId, static_cast<ITimerManager*>(this)},
        {IDeviceMessaging::kInterfaceId, static_cast<IDeviceMessaging*>(this)},
        {IUINotifier::kInterfaceId, static_cast<IUINotifier*>(this)},
        {IBindMessageSender::kInterfaceId, static_cast<IBindMessageSender*>(this)},
        {IVariableService::kInterfaceId, static_cast<IVariableService*>(this)},
        {IRoomService::kInterfaceId, static_cast<IRoomService*>(this)},
        {IAnnouncementNotifier::kInterfaceId, static_cast<IAnnouncementNotifier*>(this)},
        {kv::ISystem::kInterfaceId, static_cast<kv::ISystem*>(this)},
        {IStringX::kInterfaceId, m_stringX.get()},
        {IKVMessage::kInterfaceId, m_message.get()},
        {IRhapsodyClientFactory::kInterfaceId, static_cast<IRhapsodyClientFactory*>(this)},
    };
}

FuzzCore::~FuzzCore() {
    delete m_driver;
    m_driver = nullptr;
    if (m_instances.count(IDigitalAudio::kInterfaceId) != 0)
        Violation("the driver is gone and still registered");
    for (const auto& [id, timer] : m_timers) {
        if (timer.callback)
            Violation("a timer of the driver's would call into it");
    }
}

bool FuzzCore::Start(KVXML::INode* persist) {
    IDriver* driver = korvel_digitalaudio::Create(*this);
    if (!driver)
        return false;
    m_driver = driver;
    m_driver->Initialize(GetDeviceId(), *KVXML::CreateXmlNode("config"), persist);
    return true;
}

void FuzzCore::Interrupt() {
    if (!m_driver || !(m_manner.callsBack || m_manner.throws) || m_data.remaining_bytes() == 0 ||
        ++m_interruptions > kMaxInterruptions)
        return;
    const auto choice = m_data.ConsumeIntegralInRange<std::uint8_t>(0, 31);
    if (m_manner.throws && choice == 31)
        throw std::runtime_error("the service fails");
    if (m_manner.throws && choice == 30)
        throw 30;
    if (m_manner.callsBack && choice >= 24 && m_depth < kMaxDepth) {
        ++m_depth;
        RunEntry(*this, m_inTimers);
        --m_depth;
    }
}

bool FuzzCore::Fails() {
    return m_manner.fails && m_data.remaining_bytes() != 0 &&
           m_data.ConsumeIntegralInRange<std::uint8_t>(0, 7) == 7;
}

void FuzzCore::Command(const std::string& name, const std::vector<CmdParam>& params) {
    const auto message = kv::CreateCmdMessage(name);
    for (const CmdParam& param : params)
        message->AddParam(param.name, param.type, param.value);
    CR_String ret;
    m_driver->ExecuteCommand(*message, &ret, 0);
}

void FuzzCore::Bound(std::uint32_t binding, const std::string& name, const std::string& data) {
    m_driver->BoundCall(binding, 6, "", kv::BindMessage("EVENT", kv::CreateCmdMessage(name), data), nullptr);
}

void FuzzCore::Select(std::uint32_t roomId, std::uint32_t queueId, const std::string& kind,
                      const std::string& inputName) {
    const AVParams params{roomId, queueId, kind, 0};
    AVLocationInfo location;
    location.endpointAddress = "10.0.0." + std::to_string(roomId);
    location.endpointPort = 6200;
    location.inputName = inputName;
    location.targetDeviceId = roomId;
    AVReturn result;
    m_driver->OnAVSelected(params, {}, {kAvClassRoomEndpoint, 3000}, location, nullptr, result);
}

void FuzzCore::Deselect(std::uint32_t roomId) {
    AVParams params;
    params.roomId = roomId;
    m_driver->OnAVDeselected(params, {}, {});
}

IDigitalAudio* FuzzCore::Announcements() {
    return kv::GetService<IDigitalAudio>(*this);
}

void FuzzCore::ExpireTimer(std::size_t index) {
    if (m_timers.empty())
        return;
    auto found = std::next(m_timers.begin(), static_cast<std::ptrdiff_t>(index % m_timers.size()));
    const std::uint32_t id = found->first;
    const Timer timer = found->second;
    PassTime(timer.milliseconds);
    if (!timer.repeats)
        m_timers.erase(found);
    if (timer.callback)
        timer.callback->OnTimerExpired(id, 0);
    else
        m_driver->OnTimerExpired(id, 0);
}

bool FuzzCore::GetInstance(const std::string& id, void** instance) {
    const auto found = m_instances.find(id);
    *instance = found == m_instances.end() ? nullptr : found->second;
    return found != m_instances.end();
}

// Services

void FuzzCore::VmAdd(std::uint32_t, const std::string&, std::uint32_t, const std::string&, std::int32_t,
                     std::int32_t, const std::string&) {
    Interrupt();
}
void FuzzCore::VmRemove(std::uint32_t) {
    Interrupt();
}
void FuzzCore::FireEvent(std::uint32_t) {
    Interrupt();
}

// A variable that holds a document holds one that can be read.
void FuzzCore::ChangeVariable(std::uint32_t, const std::string& text) {
    if (text.starts_with('<') && !KVXML::CreateXmlDocument(text))
        Violation("a variable's document cannot be read");
    Interrupt();
}

std::uint32_t FuzzCore::AddTimer(std::uint32_t milliseconds, std::uint32_t flags) {
    Interrupt();
    m_timers[++m_lastTimer] = {milliseconds, (flags & kTimerFlagPeriodic) != 0, nullptr};
    return m_lastTimer;
}
void FuzzCore::KillTimer(std::uint32_t id) {
    m_timers.erase(id);
    Interrupt();
}
void FuzzCore::AddDynamicBinding(std::uint32_t, BindingType, bool, const std::string&, const std::string&,
                                 bool, bool) {
    Interrupt();
}
void FuzzCore::InvalidateState() {
    Interrupt();
}

std::int32_t FuzzCore::SendCommand(std::uint32_t deviceId, const ICmdMessage& message, ICmdReturn* ret) {
    AnswerRoom(deviceId, message);
    if (ret && !Fails())
        ret->SetValue("<path>/media</path>");
    Interrupt();
    return Fails() ? -1 : 0;
}
void FuzzCore::SendDataToUI(const KVXML::INode&) {
    Interrupt();
}
void FuzzCore::SendDataToDevice(std::uint32_t, const KVXML::INode&) {
    Interrupt();
}
void FuzzCore::Log(int, const std::string&) {}
void FuzzCore::LogDebug(const std::string&) {}
std::string FuzzCore::GetBrandingText() {
    return "";
}

kv::auto_com<ICmdMessage> FuzzCore::CreateMessage(const std::string& name) {
    return Fails() ? nullptr : kv::CreateCmdMessage(name);
}
kv::auto_com<IOutboundBindMessage> FuzzCore::CreateBindMessage(std::uint32_t kind, const std::string& name,
                                                               const std::string& data) {
    return Fails() ? nullptr : kv::CreateOutboundBindMessage(kind, name, data);
}

void* FuzzCore::GetDeviceInterface(std::uint32_t, const std::string& interfaceId) {
    if (Fails())
        return nullptr;
    if (interfaceId == IMp3Storage::kInterfaceId)
        return static_cast<IMp3Storage*>(this);
    return interfaceId == IAnalogSource::kInterfaceId ? static_cast<IAnalogSource*>(this) : nullptr;
}

std::uint32_t FuzzCore::StartTimer(std::uint32_t milliseconds, std::uint32_t count,
                                   ITimerManagerCallback* callback) {
    InTimers inside(*this);
    Interrupt();
    m_timers[++m_lastTimer] = {milliseconds, count > 1, callback};
    return m_lastTimer;
}
void FuzzCore::CancelTimer(std::uint32_t timerId) {
    InTimers inside(*this);
    m_timers.erase(timerId);
    Interrupt();
}
void FuzzCore::RemoveCallback(ITimerManagerCallback* callback) {
    InTimers inside(*this);
    std::erase_if(m_timers, [&](const auto& entry) { return entry.second.callback == callback; });
    Interrupt();
}

std::string FuzzCore::GetDeviceName(std::uint32_t) {
    Interrupt();
    return "Room";
}

void FuzzCore::SendMessage(std::uint32_t deviceId, const ICmdMessage& message, std::string* reply) {
    static const char* const kReplies[] = {"", "<reply handled=\"true\"/>", "<reply handled=\"0\"/>",
                                           "<broken"};
    AnswerRoom(deviceId, message);
    if (reply)
        *reply = m_data.PickValueInArray(kReplies);
    Interrupt();
}
void FuzzCore::SendToUIs(std::uint32_t, const KVXML::INode&) {
    Interrupt();
}

void FuzzCore::SendBindMessage(std::uint32_t, std::uint32_t bindingId, const IOutboundBindMessage& message) {
    if (m_manner.serverAnswersAtOnce && m_driver && m_depth < kMaxDepth) {
        ++m_depth;
        AnswerLine(bindingId, message.GetData());
        --m_depth;
    }
    Interrupt();
}

// As an audio server would: a stream for who asks for one, and approval.
void FuzzCore::AnswerLine(std::uint32_t bindingId, const std::string& line) {
    const std::size_t blank = line.find(' ');
    const std::string number = line.substr(0, blank);
    const std::string command = line.substr(blank + 1);
    const bool wantsStream = command.starts_with("addstr") || command.starts_with("addann");
    const std::string answer = wantsStream ? number + " " + command.substr(0, 6) +
                                                 " stream=" + std::to_string(++m_lastStream) + "\r\n"
                                           : number + " OK " + command;
    Bound(bindingId, "DATA_RECEIVED", answer);
}

void FuzzCore::AnswerRoom(std::uint32_t roomId, const ICmdMessage& message) {
    if (!m_manner.roomsAnswerAtOnce || !m_driver || m_depth >= kMaxDepth)
        return;
    ++m_depth;
    if (message.GetName() == "DESELECT_AUDIO_PATH")
        Deselect(roomId);
    else if (message.GetName() == "SELECT_AUDIO_DEVICE")
        Select(roomId, message.GetNumber("queueid"), "QUEUE");
    --m_depth;
}

void FuzzCore::SetVariable(std::uint32_t, std::uint32_t, std::uint32_t, const std::string& text, bool) {
    ChangeVariable(0, text);
}
void FuzzCore::QueueEnded(std::uint32_t, std::uint32_t) {
    Interrupt();
}
void FuzzCore::AnnouncementStreamReady() {
    Interrupt();
}
void FuzzCore::AnnouncementComplete() {
    Interrupt();
}
std::vector<std::uint32_t> FuzzCore::GetMp3Devices() {
    Interrupt();
    return {1, 2};
}
void FuzzCore::TakeSourceDevice(std::uint32_t) {
    Interrupt();
}
std::vector<std::uint32_t> FuzzCore::GetDevicesInAnalogSource() {
    Interrupt();
    return {5, 6, GetDeviceId()};
}
void FuzzCore::SelectDevice(std::uint32_t) {
    Interrupt();
}

void FuzzCore::MonotonicTime(timespec& now) {
    now = {static_cast<time_t>(m_now / 1000), static_cast<long>(m_now % 1000) * 1000000};
}
std::int32_t FuzzCore::Random() {
    return m_data.ConsumeIntegralInRange<std::int32_t>(0, 2147483647);
}
std::uint32_t FuzzCore::SystemType() {
    return Fails() ? 24 : 0;
}

std::unique_ptr<KVRhapsodyClient::RhapsodyClient> FuzzCore::CreateClient(KVRhapsodyClient::RhapsodyBranding,
                                                                         ITimerManager&,
                                                                         IRhapsodyCallback* callback) {
    if (Fails())
        return nullptr;
    m_rhapsodyCallback = callback;
    return std::make_unique<Client>(*this);
}

} // namespace fuzz
