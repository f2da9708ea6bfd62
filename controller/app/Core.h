#pragma once

#include <memory>
#include <optional>
#include <string>

#include "actions/Commands.h"
#include "actions/Library.h"
#include "driver/Plugin.h"
#include "driver/reading/HouseFollower.h"
#include "driver/rooms/Announcements.h"
#include "driver/services/Instances.h"
#include "driver/services/RealSystem.h"
#include "driver/services/RhapsodyService.h"
#include "front/http/Api.h"
#include "front/http/HouseEvents.h"
#include "links/MediaFailures.h"
#include "platform/Utilities.h"
#include "store/StateFolder.h"

namespace korvel::controller {

inline constexpr const char* kVersion = KORVEL_VERSION;

// A controller core around one driver: makes all services, loads the driver, connects the audio servers.
// Everything runs on the loop given to it, which is the driver's thread and outlives the core.
class Core {
public:
    // Throws std::exception with one clear line when the configuration, the state folder or the plug-in does
    // not serve.
    Core(asio::io_context& loop, const Config& config, const common::Log& log);
    ~Core();
    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    // Connects the audio servers and starts a scan of the music folders.
    void Start();
    // Saves the driver's state, closes the connections and destroys the driver. Nothing happens the second
    // time.
    void Stop();

    Commands& GetCommands() { return m_commands; }
    RoomRouter& GetRouter() { return m_router; }
    RoomTable& GetRooms() { return m_rooms; }
    VariableStore& GetVariables() { return m_variables; }
    ServerBindings& GetBindings() { return m_bindings; }
    Library& GetLibrary() { return m_library; }
    EventBus& GetEvents() { return m_events; }

    // What the HTTP interface is an interface to.
    Api::Parts GetParts() {
        return {m_events,        m_house, m_storage,   m_library,  m_commands, m_router,
                m_announcements, m_rooms, m_variables, m_bindings, kVersion};
    }

private:
    // Of the device of a line input; none for any other.
    std::optional<std::string> InputName(std::uint32_t device) const;
    void OfferServices();
    void StartDriver();
    // What the driver's initialisation returned.
    std::int32_t LoadDriver(KVXML::INode* persist);
    void EndDriver();
    // The text of the driver's state; none when it has none.
    std::optional<std::string> FetchState();

    const Config m_config;
    const common::Log& m_log;
    StateFolder m_folder;
    EventBus m_events;
    StorageStatus m_storage;
    RealSystem m_system;
    DriverPort m_driver;
    TimerService m_timers;
    RoomTable m_rooms;
    House m_house;
    HouseFollower m_follower;
    AnalogSources m_sources;
    VariableStore m_variables;
    DeviceMessaging m_devices;
    Library m_library;
    HouseEvents m_houseEvents;
    DriverHelper m_helper;
    DriverHost m_host;
    ServerBindings m_bindings;
    RoomRouter m_router;
    Announcements m_announcements;
    MediaFailures m_failures;
    StateFile m_stateFile;
    StateKeeper m_state;
    Commands m_commands;
    RhapsodyService m_rhapsody;
    kv::auto_com<IStringX> m_stringX;
    kv::auto_com<IKVMessage> m_message;
    Instances m_instances;
    std::unique_ptr<Plugin> m_plugin;
};

} // namespace korvel::controller
