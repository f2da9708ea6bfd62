// The entries from the core, each inside the guard; those of commands are in Commands.cpp.
#include "basics/LogLevels.h"
#include "driver/SourceSelection.h"
#include "driver/korvel_digitalaudio.h"

using NodePtr = kv::auto_com<KVXML::INode>;

void korvel_digitalaudio::LeaveEntry() noexcept {
    if (--m_entryDepth != 0)
        return;
    kv::GuardEntry("LeaveEntry", [&] {
        ReleaseRetiredServers();
        for (const auto& entry : m_servers)
            entry.second->ReleaseRemovedQueues();
    });
}

std::int32_t korvel_digitalaudio::Initialize(std::uint32_t id, KVXML::INode& config, KVXML::INode* persist) {
    return Enter("Initialize", std::int32_t{-1}, [&] { return Start(id, config, persist); });
}

std::int32_t korvel_digitalaudio::BoundCall(std::uint32_t id, BindingType type, const std::string& text,
                                            const IBindMessage& message, ICmdReturn* ret) {
    Enter("BoundCall", [&] {
        KVBaseDriver::BoundCall(id, type, text, message, ret);
        HandleBoundCall(id, message, ret);
    });
    return 0;
}

void korvel_digitalaudio::OnBindingChanged(std::uint32_t id, const std::string&, bool bound) {
    Enter("OnBindingChanged", [&] {
        if (bound)
            ExtendBindings(id);
    });
}

void korvel_digitalaudio::OnAVRoomOff(std::uint32_t roomId) {
    Enter("OnAVRoomOff", [&] { SwitchRoomOff(roomId); });
}

void korvel_digitalaudio::OnAVSelected(const AVParams& params, const AV_Class& output, const AV_Class& input,
                                       const AVLocationInfo& location,
                                       const AVDriverLocationInfo* driverLocation, AVReturn& result) {
    Enter("OnAVSelected", [&] {
        KVBaseDriver::OnAVSelected(params, output, input, location, driverLocation, result);
        SourceSelection(*this, params, input, location, result).Run();
    });
}

void korvel_digitalaudio::OnAVDeselected(const AVParams& params, const AV_Class& output,
                                         const AV_Class& input) {
    Enter("OnAVDeselected", [&] {
        KVBaseDriver::OnAVDeselected(params, output, input);
        DeselectRoom(params.roomId);
    });
}

void korvel_digitalaudio::OnAVAddLocationInfo(const AVParams& params, const AV_Class&, const AV_Class&,
                                              AVLocationInfo& location, AVDriverLocationInfo**) {
    Enter("OnAVAddLocationInfo", [&] { AddLocationInfo(params, location); });
}

bool korvel_digitalaudio::IsAVOutputToInputValid(const AVParams& params, const AV_Class& output,
                                                 const AV_Class& input) {
    return Enter("IsAVOutputToInputValid", false, [&] {
        return (input.classType == kAvClassRoomEndpoint && output.classType == kAvClassDigitalAudio) ||
               KVBaseDriver::IsAVOutputToInputValid(params, output, input);
    });
}

NodePtr korvel_digitalaudio::GetPersistState(std::uint32_t) {
    return Enter("GetPersistState", NodePtr(), [&] { return PersistedState(); });
}

void korvel_digitalaudio::OnTimerExpired(std::uint32_t timerId, std::int32_t) {
    Enter("OnTimerExpired", [&] { HandleTimer(timerId); });
}

void korvel_digitalaudio::RC_ErrorHandler(RC_Error code) {
    Enter("RC_ErrorHandler", [&] {
        LogXMessage(log_levels::kOutside, "Error " + std::to_string(code) + " from rhapsody call");
    });
}

void korvel_digitalaudio::RC_Completed(std::vector<DataPlaylistLite>& playlists) {
    Enter("RC_Completed playlists", [&] { SendMemberPlaylists(playlists); });
}

void korvel_digitalaudio::RC_Completed(unsigned int, std::vector<DataTrackInfo>& tracks) {
    Enter("RC_Completed playlist tracks", [&] { FillWithPlaylistTracks(tracks); });
}

void korvel_digitalaudio::RC_Completed(std::vector<DataTrackFull>& tracks) {
    Enter("RC_Completed track", [&] {
        if (!tracks.empty())
            ShowTrack(tracks.front());
    });
}

void korvel_digitalaudio::CreateAnnouncementStream() {
    Enter("CreateAnnouncementStream", [&] {
        if (m_activeServerBinding != 0)
            AudioServer_Create(m_activeServerBinding, false)->CreateAnnouncement();
    });
}

void korvel_digitalaudio::RemoveAnnouncementStream() {
    Enter("RemoveAnnouncementStream", [&] {
        if (AudioServer* server = GetServer(m_activeServerBinding))
            server->CancelAnnouncement();
    });
}

void korvel_digitalaudio::PlayAnnouncement(const std::string& path) {
    Enter("PlayAnnouncement", [&] {
        if (path.empty() || m_activeServerBinding == 0)
            return;
        AudioServer_Create(m_activeServerBinding, false)->PlayAnnouncement(path);
        UpdateRoomMapInfoVar();
    });
}
