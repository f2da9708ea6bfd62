#include "driver/DriverPort.h"

#include <exception>

#include "driver/Ids.h"

namespace korvel::controller {
namespace {

// Ends with its block, whatever is thrown there.
class Inside {
public:
    explicit Inside(bool& flag) : m_flag(flag) { m_flag = true; }
    ~Inside() { m_flag = false; }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

private:
    bool& m_flag;
};

} // namespace

bool DriverPort::Enter(const char* entry, const std::function<void()>& call) {
    if (!m_driver)
        return false;
    if (m_inside) {
        m_log.Error(std::string("dropped ") + entry + ": the driver was inside another entry");
        return false;
    }
    const bool done = RunInside(entry, call);
    if (m_listener && !m_telling) {
        const Inside telling(m_telling);
        m_listener->AfterEntry();
    }
    return done;
}

bool DriverPort::RunInside(const char* entry, const std::function<void()>& call) {
    const Inside inside(m_inside);
    const auto failed = [&](const std::string& what) {
        m_log.Error(std::string("the driver let an exception out of ") + entry + ": " + what);
        return false;
    };
    try {
        call();
        return true;
    } catch (const std::exception& error) {
        return failed(error.what());
    } catch (...) {
        return failed("of no known kind");
    }
}

std::int32_t DriverPort::Initialize(std::uint32_t deviceId, KVXML::INode& config, KVXML::INode* persist) {
    std::int32_t result = -1;
    Enter("Initialize", [&] { result = m_driver->Initialize(deviceId, config, persist); });
    return result;
}

void DriverPort::BindingChanged(std::uint32_t bindingId) {
    Enter("OnBindingChanged", [&] { m_driver->OnBindingChanged(bindingId, "", true); });
}

void DriverPort::BoundCall(std::uint32_t bindingId, const std::string& name, const std::string& data) {
    Enter("BoundCall", [&] {
        const kv::BindMessage message("", kv::CreateCmdMessage(name), data);
        m_driver->BoundCall(bindingId, kServerBindingType, "", message, nullptr);
    });
}

void DriverPort::TellCommand(const ICmdMessage& command) {
    if (m_listener && !m_telling && !m_inside)
        m_listener->OnCommand(command);
}

void DriverPort::Execute(const ICmdMessage& command, ICmdReturn& answer) {
    TellCommand(command);
    Enter("ExecuteCommand", [&] { m_driver->ExecuteCommand(command, &answer, 0); });
}

kv::auto_com<KVXML::INode> DriverPort::Request(const ICmdMessage& request) {
    TellCommand(request);
    kv::auto_com<KVXML::INode> reply;
    Enter("UIRequest", [&] { reply = m_driver->UIRequest(request); });
    return reply;
}

void DriverPort::Select(const AVParams& params, const AVLocationInfo& location) {
    Enter("OnAVSelected", [&] {
        const AV_Class output{kAvClassDigitalAudio, 0};
        const AV_Class input{kAvClassRoomEndpoint, 0}; // binding 0: the local audio server
        AVReturn result;
        m_driver->OnAVSelected(params, output, input, location, nullptr, result);
    });
}

void DriverPort::Deselect(std::uint32_t roomId) {
    Enter("OnAVDeselected", [&] {
        AVParams params;
        params.roomId = roomId;
        params.sourceDeviceId = kDriverDeviceId;
        m_driver->OnAVDeselected(params, {kAvClassDigitalAudio, 0}, {kAvClassRoomEndpoint, 0});
    });
}

void DriverPort::RoomOff(std::uint32_t roomId) {
    Enter("OnAVRoomOff", [&] { m_driver->OnAVRoomOff(roomId); });
}

void DriverPort::TimerExpired(std::uint32_t timerId) {
    Enter("OnTimerExpired", [&] { m_driver->OnTimerExpired(timerId, 0); });
}

kv::auto_com<KVXML::INode> DriverPort::PersistState() {
    kv::auto_com<KVXML::INode> state;
    Enter("GetPersistState", [&] { state = m_driver->GetPersistState(0); });
    return state;
}

void DriverPort::Announce(const char* entry, const std::function<void(IDigitalAudio&)>& call) {
    if (m_announcements)
        Enter(entry, [&] { call(*m_announcements); });
}

void DriverPort::CreateAnnouncementStream() {
    Announce("CreateAnnouncementStream", [](IDigitalAudio& audio) { audio.CreateAnnouncementStream(); });
}

void DriverPort::PlayAnnouncement(const std::string& file) {
    Announce("PlayAnnouncement", [&](IDigitalAudio& audio) { audio.PlayAnnouncement(file); });
}

void DriverPort::RemoveAnnouncementStream() {
    Announce("RemoveAnnouncementStream", [](IDigitalAudio& audio) { audio.RemoveAnnouncementStream(); });
}

} // namespace korvel::controller
