#include "app/Core.h"

#include <chrono>

#include "driver/Ids.h"

namespace korvel::controller {

namespace {

std::vector<HouseRoom> RoomsOf(const Config& config) {
    std::vector<HouseRoom> rooms;
    for (const RoomConfig& room : config.rooms)
        rooms.push_back({room.id, room.name, {}, {}});
    return rooms;
}

// Numbers that no run before this one has given: it would have taken a change in each microsecond.
House::Numbers NumbersOfNow() {
    const auto now = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::system_clock::now().time_since_epoch());
    const auto number = static_cast<std::uint64_t>(now.count());
    return {number, number, number};
}

} // namespace

Core::Core(asio::io_context& loop, const Config& config, const common::Log& log)
    : m_config(config),
      m_log(log),
      m_folder(config.stateFolder),
      m_storage(m_events, log),
      m_system(log),
      m_driver(log),
      m_timers(loop, m_driver),
      m_rooms(config.rooms),
      m_house(RoomsOf(config), NumbersOfNow()),
      m_follower({m_house, m_driver, m_rooms, [this](std::uint32_t device) { return InputName(device); }}),
      m_sources(m_rooms, log),
      m_variables(m_events),
      m_devices(m_rooms, m_events, log),
      m_library(loop, config, m_events, m_storage, log),
      m_houseEvents(loop, m_house, m_library.Database(), m_events),
      m_helper(m_sources, m_library.StorageDevices()),
      m_host({m_variables, m_timers, m_devices, m_helper, m_driver, m_events, log, &m_library.Database()}),
      m_bindings({loop, m_driver, m_system, m_events, log}, config.servers),
      m_router({loop, m_driver, m_rooms, m_events, log, [this] { return m_bindings.WhyNotReady(); },
                [this] { return m_bindings.ActiveBinding(); }}),
      m_announcements({loop, m_driver, m_rooms, m_timers, m_events, log,
                       [this] { return m_bindings.WhyNotReady(); },
                       [this] { return m_bindings.ActiveBinding(); }}),
      m_failures(m_events, log),
      m_stateFile(config.stateFolder + "/driver-state.xml", m_storage),
      m_state(
          loop, [this] { return FetchState(); }, m_stateFile, m_storage),
      m_commands({m_driver, m_host, m_bindings, m_router, m_rooms, m_variables, m_library, m_state}),
      m_rhapsody(loop, log, m_driver, config.catalogAddress),
      m_stringX(CreateStandardStringX()),
      m_message(CreateStandardKVMessage()) {
    m_devices.SetRoomListener([this](Room& room, const ICmdMessage& message) {
        m_router.OnMessage(room, message);
        m_follower.OnMessage(room, message);
    });
    m_variables.SetListener(
        [this](std::uint32_t id, const std::string& text) { m_follower.OnVariable(id, text); });
    m_host.SetBindingOffered([this](std::uint32_t id) { m_bindings.OnBindingOffered(id); });
    m_host.SetStateInvalid([this] { m_state.SaveSoon(); });
    m_bindings.SetServerLost([this](std::uint32_t binding) {
        m_router.OnServerLost(binding);
        m_announcements.OnServerLost(binding);
        m_follower.OnServerLost();
    });
    m_bindings.SetLineListener([this](std::uint32_t binding, const std::string& line) {
        m_announcements.OnServerLine(binding, line);
        m_failures.OnServerLine(line);
        m_follower.OnServerLine(line);
    });
    m_router.SetRoomOffListener([this] { m_announcements.OnRoomOff(); });
    OfferServices();
    StartDriver();
}

std::optional<std::string> Core::InputName(std::uint32_t device) const {
    const std::uint32_t index = device - kFirstInputDevice;
    return index < m_config.inputs.size() ? std::optional(m_config.inputs[index]) : std::nullopt;
}

void Core::StartDriver() {
    const auto persist = m_stateFile.Load();
    std::int32_t result = LoadDriver(persist.get());
    if (result < 0 && persist) {
        // Whatever stands there must not keep the house from playing.
        EndDriver();
        result = LoadDriver(nullptr);
        if (result >= 0)
            m_stateFile.SetAside("the driver cannot run with it");
    }
    if (result < 0) {
        EndDriver();
        throw PluginError("the driver of " + m_config.plugin + " cannot run: its initialisation returned " +
                          std::to_string(result));
    }
}

std::int32_t Core::LoadDriver(KVXML::INode* persist) {
    m_plugin = std::make_unique<Plugin>(m_config.plugin, m_instances);
    m_driver.Attach(m_plugin->GetDriver(), kv::GetService<IDigitalAudio>(m_instances));
    const auto settings = KVXML::CreateXmlNode("config");
    return m_driver.Initialize(kDriverDeviceId, *settings, persist);
}

std::optional<std::string> Core::FetchState() {
    const auto state = m_driver.PersistState();
    return state ? std::optional(state->ToText()) : std::nullopt;
}

void Core::EndDriver() {
    m_driver.Enter("its end", [this] { m_plugin.reset(); });
    m_driver.Detach();
    m_timers.CancelAll();
}

Core::~Core() {
    Stop();
}

void Core::OfferServices() {
    m_instances.Offer<kv::ISystem>(m_system);
    m_instances.Offer<IDriverHost>(m_host);
    m_instances.Offer<ITimerManager>(m_timers);
    m_instances.Offer<IDeviceMessaging>(m_devices);
    m_instances.Offer<IUINotifier>(m_devices);
    m_instances.Offer<IRoomService>(m_devices);
    m_instances.Offer<IAnnouncementNotifier>(m_announcements);
    m_instances.Offer<IBindMessageSender>(m_bindings);
    m_instances.Offer<IVariableService>(m_variables);
    m_instances.Offer<KVRhapsodyClient::IRhapsodyClientFactory>(m_rhapsody);
    m_instances.Offer<IMediaManager>(m_library.Database());
    m_instances.Offer<IStringX>(*m_stringX);
    m_instances.Offer<IKVMessage>(*m_message);
}

void Core::Start() {
    m_bindings.Start();
    m_library.StartScan();
}

void Core::Stop() {
    if (!m_plugin)
        return;
    m_library.CancelScan();
    m_state.SaveNow();
    m_bindings.Stop();
    EndDriver();
}

} // namespace korvel::controller
