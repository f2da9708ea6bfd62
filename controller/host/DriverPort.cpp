#include "host/DriverPort.h"

#include <exception>

#include "host/Ids.h"

namespace korvel::controller {

template <class Body>
void DriverPort::Enter(const char* entry, Body&& body) {
    if (!m_driver)
        return;
    if (m_inside) {
        m_log.Error(std::string("dropped ") + entry + ": the driver was inside another entry");
        return;
    }
    m_inside = true;
    try {
        body(*m_driver);
    } catch (const std::exception& error) {
        m_log.Error(std::string("the driver let an exception out of ") + entry + ": " + error.what());
    }
    m_inside = false;
}

void DriverPort::BindingChanged(std::uint32_t bindingId) {
    Enter("OnBindingChanged", [&](IDriver& driver) { driver.OnBindingChanged(bindingId, "", true); });
}

void DriverPort::BoundCall(std::uint32_t bindingId, const std::string& name, const std::string& data) {
    Enter("BoundCall", [&](IDriver& driver) {
        const kv::BindMessage message("", kv::CreateCmdMessage(name), data);
        driver.BoundCall(bindingId, kServerBindingType, "", message, nullptr);
    });
}

void DriverPort::Execute(const ICmdMessage& command, ICmdReturn& answer) {
    Enter("ExecuteCommand", [&](IDriver& driver) { driver.ExecuteCommand(command, &answer, 0); });
}

kv::auto_com<KVXML::INode> DriverPort::Request(const ICmdMessage& request) {
    kv::auto_com<KVXML::INode> reply;
    Enter("UIRequest", [&](IDriver& driver) { reply = driver.UIRequest(request); });
    return reply;
}

void DriverPort::Select(const AVParams& params, const AVLocationInfo& location) {
    Enter("OnAVSelected", [&](IDriver& driver) {
        const AV_Class output{kAvClassDigitalAudio, 0};
        const AV_Class input{kAvClassRoomEndpoint, 0}; // binding 0: the local audio server
        AVReturn result;
        driver.OnAVSelected(params, output, input, location, nullptr, result);
    });
}

void DriverPort::Deselect(std::uint32_t roomId) {
    Enter("OnAVDeselected", [&](IDriver& driver) {
        AVParams params;
        params.roomId = roomId;
        params.sourceDeviceId = kDriverDeviceId;
        driver.OnAVDeselected(params, {kAvClassDigitalAudio, 0}, {kAvClassRoomEndpoint, 0});
    });
}

void DriverPort::RoomOff(std::uint32_t roomId) {
    Enter("OnAVRoomOff", [&](IDriver& driver) { driver.OnAVRoomOff(roomId); });
}

void DriverPort::TimerExpired(std::uint32_t timerId) {
    Enter("OnTimerExpired", [&](IDriver& driver) { driver.OnTimerExpired(timerId, 0); });
}

kv::auto_com<KVXML::INode> DriverPort::PersistState() {
    kv::auto_com<KVXML::INode> state;
    Enter("GetPersistState", [&](IDriver& driver) { state = driver.GetPersistState(0); });
    return state;
}

template <class Body>
void DriverPort::Announce(const char* entry, Body&& body) {
    if (m_announcements)
        Enter(entry, [&](IDriver&) { body(*m_announcements); });
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
