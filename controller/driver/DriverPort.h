#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "common/Log.h"
#include "korvel_digitalaudio/IDigitalAudio.h"
#include "platform/IDriver.h"

namespace korvel::controller {

// The one way into the driver: through its entries and through what it handed out to be called back, from its
// initialisation to its end. Entries come from handlers of the loop, never from within a service that the
// driver is calling: whoever has something to tell the driver then posts it. An entry that comes all the same
// is logged and dropped; every entry is dropped while no driver is attached. No exception comes out.
class DriverPort {
public:
    // Told of what is asked of the driver, and that a call of it is over; may then ask it something itself, of which it is
    // told nothing.
    class Listener {
    public:
        virtual void OnCommand(const ICmdMessage& command) = 0;
        virtual void AfterEntry() = 0;

    protected:
        ~Listener() = default;
    };

    explicit DriverPort(const common::Log& log) : m_log(log) {}

    // The driver stays owned by the caller and attached until Detach(). `announcements` is null for a driver
    // that makes none.
    void Attach(IDriver& driver, IDigitalAudio* announcements = nullptr) {
        m_driver = &driver;
        m_announcements = announcements;
    }
    void Detach() {
        m_driver = nullptr;
        m_announcements = nullptr;
    }
    // Null for none; used until then.
    void SetListener(Listener* listener) { m_listener = listener; }
    bool MakesAnnouncements() const { return m_announcements != nullptr; }

    // Runs `call`, which enters the driver by a callback or ends it. False when it was dropped or let an
    // exception out.
    bool Enter(const char* entry, const std::function<void()>& call);
    // What the driver returned; -1 when it failed to.
    std::int32_t Initialize(std::uint32_t deviceId, KVXML::INode& config, KVXML::INode* persist);
    void BindingChanged(std::uint32_t bindingId);
    // The bound call `name` with `data` over an audio server's binding.
    void BoundCall(std::uint32_t bindingId, const std::string& name, const std::string& data);
    void Execute(const ICmdMessage& command, ICmdReturn& answer);
    kv::auto_com<KVXML::INode> Request(const ICmdMessage& request);
    void Select(const AVParams& params, const AVLocationInfo& location);
    void Deselect(std::uint32_t roomId);
    void RoomOff(std::uint32_t roomId);
    void TimerExpired(std::uint32_t timerId);
    kv::auto_com<KVXML::INode> PersistState();
    void CreateAnnouncementStream();
    void PlayAnnouncement(const std::string& file);
    void RemoveAnnouncementStream();

private:
    bool RunInside(const char* entry, const std::function<void()>& call);
    void TellCommand(const ICmdMessage& command);
    void Announce(const char* entry, const std::function<void(IDigitalAudio&)>& call);

    const common::Log& m_log;
    IDriver* m_driver = nullptr;
    IDigitalAudio* m_announcements = nullptr;
    Listener* m_listener = nullptr;
    bool m_inside = false;
    bool m_telling = false; // the listener of an entry that is over
};

} // namespace korvel::controller
