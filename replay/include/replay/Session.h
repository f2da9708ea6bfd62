// One run of a driver in its simulated world.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/AutoCom.h"
#include "platform/IDriver.h"
#include "platform/Utilities.h"
#include "replay/HostService.h"
#include "replay/InstanceRegistry.h"
#include "replay/MediaService.h"
#include "replay/MessagingServices.h"
#include "replay/RhapsodyService.h"
#include "replay/SystemService.h"
#include "replay/World.h"

namespace korvel::replay {

// More expiries than these in one step of time are a timer that starts itself for ever.
inline constexpr std::size_t kMaxExpiries = 500000;

class Session {
public:
    // `create` makes the driver at Start(). `echo` may be null: see Recorder.
    explicit Session(CreationFunc create, std::ostream* echo = nullptr);
    // Destroys a driver that still runs without taking anything down.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Runs one input line, then the answers of the live world. FormatError when the line cannot be run.
    void Execute(std::string_view line);

    World& GetWorld() { return m_world; }
    InstanceRegistry& GetInstances() { return m_instances; }
    RhapsodyService& GetRhapsody() { return m_rhapsody; }
    bool HasDriver() const { return m_driver != nullptr; }
    // FormatError when none runs.
    IDriver& GetDriver();

    // Calls into the driver; an exception that comes out is taken down as a fault.
    template <class Body>
    void Enter(Body&& body) {
        try {
            std::forward<Body>(body)();
        } catch (const std::exception& error) {
            m_world.recorder.Fault(error.what());
        } catch (...) {
            m_world.recorder.Fault("unknown exception");
        }
    }

    // FormatError when a driver runs already. `persist` may be null.
    void Start(KVXML::INode* persist);
    void CreateAgain();
    // Destroys the driver; its own timers and pending answers go with it. A timer of the timer manager that
    // it leaves behind is taken down as a fault.
    void Stop();
    // Lets time pass; every expiry, and the answers that it causes, happen at their own time.
    void Advance(std::uint32_t milliseconds);

private:
    void Dispatch(std::string_view line);
    void RunInside(std::string_view output);
    void DeliverAnswers();
    void Expire(const TimerQueue::Expiry& expiry);

    CreationFunc m_create;
    World m_world;
    std::exception_ptr m_insideError; // of an input that a call of the driver could not let through
    SystemService m_system{m_world};
    TimerService m_timers{m_world};
    HelperService m_helper{m_world};
    MediaService m_media{m_world};
    DeviceMessagingService m_messaging{m_world};
    HostService m_host{m_world, m_messaging, m_timers, m_helper, m_media};
    UINotifierService m_uiNotifier{m_world};
    BindMessageService m_bindMessages{m_world};
    VariableService m_variables{m_world};
    RoomService m_rooms{m_world};
    AnnouncementService m_announcements{m_world};
    RhapsodyService m_rhapsody{m_world};
    kv::auto_com<IStringX> m_stringX = CreateStandardStringX();
    kv::auto_com<IKVMessage> m_message = CreateStandardKVMessage();
    InstanceRegistry m_instances;
    std::unique_ptr<IDriver> m_driver;
};

} // namespace korvel::replay
