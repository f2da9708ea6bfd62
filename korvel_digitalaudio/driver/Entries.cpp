// Every entry from the core, each inside the guard.
#include "driver/SourceSelection.h"
#include "driver/korvel_digitalaudio.h"
#include "platform/Text.h"

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

std::int32_t korvel_digitalaudio::ExecuteCommand(const ICmdMessage& message, ICmdReturn* ret,
                                                 std::uint32_t source) {
    return Enter("ExecuteCommand", std::int32_t{0}, [&]() -> std::int32_t {
        // There is nothing to play on before the audio server of this controller has come online.
        if (m_activeServerBinding == 0)
            return 0;
        try {
            return KVBaseDriver::ExecuteCommand(message, ret, source);
        } catch (...) {
            if (m_stringX && m_message)
                LogMessage(3, "Command failed: " + m_stringX->OneLine(m_message->Describe(message)));
            throw;
        }
    });
}

// Every command that answers with a document serves as a request as well.
NodePtr korvel_digitalaudio::UIRequest(const ICmdMessage& message) {
    return Enter("UIRequest", NodePtr(), [&]() -> NodePtr {
        if (NodePtr answer = KVBaseDriver::UIRequest(message))
            return answer;
        CR_String collector;
        ExecuteCommand(message, &collector, 0);
        if (collector.GetText().empty())
            return nullptr;
        const auto document = KVXML::CreateXmlDocument(collector.GetText());
        return document ? document->GetRoot() : nullptr;
    });
}

bool korvel_digitalaudio::TestCondition(const ICondMessage& condition, std::uint32_t*) {
    return Enter("TestCondition", false, [&] {
        const std::string room = condition.GetParam("ROOM_ID");
        if (room.empty())
            return false;
        const bool inSession = AudioServer_GetQueueFromRoom(kv::ToULong(room)) != nullptr;
        if (condition.GetName() == "InSession")
            return inSession;
        return condition.GetName() == "NotInSession" && !inSession;
    });
}

void korvel_digitalaudio::OnTimerExpired(std::uint32_t timerId, std::int32_t) {
    Enter("OnTimerExpired", [&] { HandleTimer(timerId); });
}

void korvel_digitalaudio::RC_ErrorHandler(RC_Error code) {
    Enter("RC_ErrorHandler",
          [&] { LogXMessage(7, "Error " + std::to_string(code) + " from rhapsody call"); });
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
