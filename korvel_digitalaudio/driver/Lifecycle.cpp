#include "basics/Ids.h"
#include "basics/Variables.h"
#include "driver/QueueIds.h"
#include "driver/korvel_digitalaudio.h"

const std::string korvel_digitalaudio::s_DigitalAudioPersistTag = "korvel_digital_audio";
const std::string korvel_digitalaudio::s_DA_LastServerIDTag = "lastserverid";
const std::string korvel_digitalaudio::s_DA_LastMediaIDTag = "lastmediaid";
const std::string korvel_digitalaudio::s_DA_PlayPreferenceTag = "PlayPreference";
const std::string korvel_digitalaudio::s_DigitalAudioSettingsTag = "DigitalAudioSettings";
const std::string korvel_digitalaudio::s_DAClearPlaylistTag = "ClearPlayList";
const std::string korvel_digitalaudio::s_DAClearPlaylistDelayTag = "ClearPlayListDelay";
const bool korvel_digitalaudio::s_DefClearPlaylistFlag = true;
const std::uint16_t korvel_digitalaudio::s_DefClearPlaylistDelayMinutes = 5;
const DigitalAudioPlayPref korvel_digitalaudio::s_DefPlayPreference{};

namespace {

constexpr int kDriverModel = 3;
constexpr int kDriverFlags = 0;
constexpr std::uint32_t kPollIntervalMs = 10000;
constexpr std::uint32_t kPollTimerFlags = 17;
constexpr std::int32_t kNoUtilities = -2;
constexpr BindingType kMediaBinding = 5;
constexpr const char* kRhapsodyAddress = "127.0.0.1:5555";
constexpr const char* kEmptyInfo = "<info></info>";
constexpr const char* kEmptyStatus = "<status></status>";

} // namespace

IDriver* korvel_digitalaudio::Create(IInstanceManager& instances) {
    return kv::GuardEntry("Create", static_cast<IDriver*>(nullptr), [&]() -> IDriver* {
        void* registered = nullptr;
        if (instances.GetInstance(IDigitalAudio::kInterfaceId, &registered))
            return static_cast<korvel_digitalaudio*>(static_cast<IDigitalAudio*>(registered));
        return new korvel_digitalaudio(instances);
    });
}

korvel_digitalaudio::korvel_digitalaudio(IInstanceManager& instances)
    : KVBaseDriver(instances, kDriverModel, kDriverFlags),
      m_instanceA(kv::GetService<IUINotifier>(instances)),
      m_instanceB(kv::GetService<IDeviceMessaging>(instances)),
      m_lastServerBinding(bindings::kFirstServer),
      m_lastMediaBinding(bindings::kFirstStorage) {
    instances.RegisterInstance(IDigitalAudio::kInterfaceId, static_cast<IDigitalAudio*>(this));
    try {
        RegisterCommands();
        m_periodicTimer = AddTimer(kPollIntervalMs, kPollTimerFlags);
    } catch (...) {
        instances.RevokeInstance(IDigitalAudio::kInterfaceId); // nobody may find what is not there
        throw;
    }
}

std::int32_t korvel_digitalaudio::Start(std::uint32_t id, KVXML::INode& config, KVXML::INode* persist) {
    KVBaseDriver::Initialize(id, config, persist);
    kv::SeedRandom(kv::Time());
    m_lastMediaBinding = bindings::kFirstStorage;
    m_lastServerBinding = bindings::kFirstServer;
    m_stringX = StringX::Create(GetInstanceManager());
    if (!m_stringX)
        return kNoUtilities;
    m_message = KVMessage::Create(GetInstanceManager());
    if (!m_message)
        return kNoUtilities;
    m_activeServerBinding = 0;
    m_nextQueueId = kFirstQueueId;

    AddVariables();
    RoomQueueSettingsFromXml(persist);
    ChangeMyVariable(variables::kRoomMapInfo, kEmptyInfo);
    UpdateRoomsQueueSettingsVariable(nullptr);
    CreateRhapsodyClient();
    AddDynamicBinding(bindings::kControllerStorage, kMediaBinding, true, "Digital Media Storage",
                      "DIGITAL_MEDIA_STORAGE", true, true);
    if (persist)
        RestoreSettings(*persist);
    return 0;
}

void korvel_digitalaudio::AddVariables() {
    using namespace variables;
    VmAdd(kRoomHistory, "ROOM_HISTORY", kVariableTypeXml, "", 0, 0, "");
    VmAdd(kRoomQueueSettings, "ROOM_QUEUE_SETTINGS", kVariableTypeXml, "", 0, 0, "");
    VmAdd(kQueueStatus, "QUEUE_STATUS", kVariableTypeXml, "", 1, 1, "");
    VmAdd(kQueueInfo, "QUEUE_INFO", kVariableTypeXml, "", 1, 1, "");
    VmAdd(kQueueStatusV2, "QUEUE_STATUS_V2", kVariableTypeXml, "", 1, 1, "");
    VmAdd(kQueueInfoV2, "QUEUE_INFO_V2", kVariableTypeXml, "", 1, 1, "");
    VmAdd(kPlayPreference, "PLAY_PREFERENCE", kVariableTypeNumber, "0", 0, 1, "");
    VmAdd(kRoomMapInfo, "ROOM_MAP_INFO", kVariableTypeXml, "", 1, 0, "");

    ChangeMyVariable(kRoomHistory, "<histories></histories>");
    ChangeMyVariable(kRoomQueueSettings, "<room_queue_settings></room_queue_settings>");
    ChangeMyVariable(kQueueInfo, kEmptyInfo);
    ChangeMyVariable(kQueueStatus, kEmptyStatus);
    ChangeMyVariable(kQueueInfoV2, kEmptyInfo);
    ChangeMyVariable(kQueueStatusV2, kEmptyStatus);
    ChangeMyVariable(kPlayPreference, "0");
}

void korvel_digitalaudio::CreateRhapsodyClient() {
    auto* factory = kv::GetService<KVRhapsodyClient::IRhapsodyClientFactory>(GetInstanceManager());
    if (!factory)
        return;
    m_rhapsody = factory->CreateClient(KVRhapsodyClient::GetRhapsodyBranding(GetBrandingText()),
                                       GetTimerManager(), this);
    if (!m_rhapsody)
        return;
    m_rhapsody->Connect(kRhapsodyAddress);
    m_rhapsody->DisableOfflineMode();
}

// Each step has a guard of its own: a core that fails in one of them must not be left with timers or a
// registration that lead into a plug-in that is gone.
korvel_digitalaudio::~korvel_digitalaudio() {
    m_ending = true; // what the core calls back with now must neither free anything nor make anything new
    using namespace variables;
    for (const std::uint32_t id : {kRoomHistory, kRoomQueueSettings, kQueueInfo, kQueueStatus, kQueueInfoV2,
                                   kQueueStatusV2, kPlayPreference, kRoomMapInfo})
        kv::GuardEntry("Destroy variables", [&] { VmRemove(id); });
    for (const auto& entry : std::exchange(m_clearTimers, {})) {
        std::uint32_t timerId = entry.first;
        kv::GuardEntry("Destroy timers", [&] { KillTimer(timerId); });
    }
    while (!m_servers.empty()) {
        kv::GuardEntry("Destroy servers", [&] { EndServer(m_servers.begin()->first); });
        m_retiredServers.clear(); // with its link, whose timer stops, before the next one ends
    }
    m_rhapsody.reset();
    m_goneServers.clear();
    kv::GuardEntry("Destroy", [&] { GetInstanceManager().RevokeInstance(IDigitalAudio::kInterfaceId); });
}
