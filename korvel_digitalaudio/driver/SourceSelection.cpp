#include "driver/SourceSelection.h"

#include "basics/Asserts.h"
#include "basics/Ids.h"
#include "basics/LogLevels.h"
#include "driver/korvel_digitalaudio.h"

namespace {

// In an input's address it marks the port of an announcing source, which is never kept.
constexpr const char* kAnnouncingPort = ":6330";

} // namespace

SourceSelection::SourceSelection(korvel_digitalaudio& driver, const AVParams& params, const AV_Class& input,
                                 const AVLocationInfo& location, AVReturn& result)
    : m_driver(driver),
      m_params(params),
      m_input(input),
      m_location(location),
      m_result(result),
      m_room(params.roomId),
      m_requested(params.queueId),
      m_kind(params.mediaKind),
      m_inputName(location.inputName) {}

SourceSelection::~SourceSelection() {
    if (m_returned && !m_driver.IsThere(*m_returned))
        ReturnNothing();
}

void SourceSelection::Run() {
    if (m_kind == "DIGITAL_MEDIA")
        return;
    if (m_kind == "ANNOUNCEMENT") {
        JoinAnnouncement();
        return;
    }
    if (m_kind == "ANNOUNCEMENT_COMPLETE") {
        m_driver.UpdateRoomMapInfoVar();
        return;
    }
    if (m_location.locationKind != "GENERIC_MEDIA") {
        if (!FindBinding()) {
            m_driver.LogMessage(log_levels::kOutside, "Default binding for audio server is invalid");
            return;
        }
        if (SelectQueue())
            m_driver.UpdateQueueStatusVariable();
    }
    SendMediaSelected();
}

void SourceSelection::JoinAnnouncement() {
    const std::uint32_t active = m_driver.m_activeServerBinding;
    if (active != 0)
        m_driver.AudioServer_Create(active, false)
            ->AddClientToAnnouncement(m_room, m_location.endpointAddress, m_location.endpointPort);
}

// Library media plays on this controller's own server; a local input plays where it is, in a queue of its
// own. While the own server is not online, library media that names another server gets binding 0, which no
// server has: the selection is confirmed, and nothing else happens or is logged.
bool SourceSelection::FindBinding() {
    const std::uint32_t active = m_driver.m_activeServerBinding;
    m_binding = m_input.bindingId;
    if (m_binding == 0 || m_binding > bindings::kLastServer)
        m_binding = active;
    if (m_binding == 0)
        return false;
    if (m_inputName.empty())
        m_binding = active;
    else
        m_kind = "QUEUE";
    return true;
}

bool SourceSelection::IsComplete() const {
    if (m_location.endpointAddress.empty() || m_room == 0 || m_location.endpointPort == 0)
        return false;
    const bool needsQueue = m_kind == "SONG" || m_kind == "PLAYLIST" || m_kind == "BROADCAST_AUDIO";
    return !needsQueue || m_requested != 0;
}

bool SourceSelection::SelectQueue() {
    if (!IsComplete() || m_binding == 0)
        return false;
    m_driver.AudioServer_Create(m_binding, false);
    const AudioServer* inUse = m_driver.AudioServer_GetInUseServer(
        m_location.endpointAddress, m_location.endpointChannel, m_location.endpointPort);
    m_inUseBinding = inUse ? inUse->GetBindingId() : 0;
    LeaveOtherServer();
    FreeEndpoint();
    FreeInput();

    AudioQueue* queue = ChooseQueue();
    if (!queue || !Enter(*queue))
        return false;
    if (m_requested == 0) {
        FillResult(*queue, false);
    } else if (m_kind == "QUEUE") {
        if (m_inputName.empty())
            PlayQueue(*queue);
        else
            PlayInput(*queue);
    } else if (m_kind == "PLAYLIST") {
        PlayPlaylist(*queue);
    } else if (m_kind == "BROADCAST_AUDIO") {
        PlayBroadcast(*queue);
    } else if (m_kind == "SONGS" || m_kind == "ALBUM" || m_kind == "SONG") {
        PlayMedia(*queue);
    }
    return true;
}

AudioServer* SourceSelection::Server() const {
    return m_driver.GetServer(m_binding);
}

AudioServer* SourceSelection::InUseServer() const {
    return m_driver.GetServer(m_inUseBinding);
}

void SourceSelection::LeaveOtherServer() {
    AudioServer* current = m_driver.AudioServer_GetServerFromRoom(m_room);
    if (!current || current->GetBindingId() == m_binding)
        return;
    AudioQueue* queue = current->GetAudioQueueFromRoom(m_room);
    m_driver.RoomClient_Remove(m_room, current, &queue);
}

// Decides whether the queue that already plays to the room's endpoint goes on doing so.
void SourceSelection::FreeEndpoint() {
    AudioServer* inUse = InUseServer();
    if (!inUse)
        return;
    const std::string& address = m_location.endpointAddress;
    const std::uint32_t channel = m_location.endpointChannel;
    const std::uint32_t port = m_location.endpointPort;
    AudioQueue* queue = inUse->GetInUseClientQueue(address, channel, port);
    if (!queue || KeepsEndpoint(*inUse, *queue))
        return;
    m_driver.RoomClient_Remove(m_room, inUse, &queue);
    m_driver.AudioQueue_DeselectClients(queue, address, channel, port);
}

void SourceSelection::FreeInput() {
    AudioServer* server = Server();
    if (server && !m_inputName.empty() && !server->AllowMultipleStreamingInputs())
        m_driver.AudioServer_DeselectIfDifferntInput(server, m_room, m_inputName);
}

bool SourceSelection::KeepsEndpoint(const AudioServer& inUse, const AudioQueue& queue) const {
    const bool isRequested = queue.GetQueueId() == m_requested;
    const bool broadcast = m_kind == "BROADCAST_AUDIO";
    const std::string inputFile = queue.GetInputFile();
    if (m_requested != 0 && !inUse.GetAudioQueue(m_requested))
        return false;
    if (inUse.GetBindingId() != m_binding)
        return m_requested != 0 && isRequested;
    if (!m_inputName.empty())
        return m_inputName == inputFile;
    if (!inputFile.empty())
        return inputFile.find(kAnnouncingPort) == std::string::npos && !broadcast &&
               (m_requested == 0 || isRequested);
    if (m_requested != 0)
        return isRequested;
    return !broadcast || queue.ContainsRoom(m_room);
}

AudioQueue* SourceSelection::ChooseQueue() {
    AudioQueue* queue = m_requested != 0 && m_kind == "QUEUE" ? RequestedQueue() : nullptr;
    const AudioServer* server = Server();
    if (!queue && server)
        queue = server->GetAudioQueueFromRoom(m_room);
    if (queue)
        queue = CheckQueue(queue);
    return queue ? queue : NewQueue();
}

// The requested queue, if it exists; the room leaves another one that it hears now.
AudioQueue* SourceSelection::RequestedQueue() {
    AudioServer* server = Server();
    AudioQueue* present = server ? server->GetAudioQueueFromRoom(m_room) : nullptr;
    if (present && present->GetQueueId() != m_requested && !present->GetWaitingForAddResponse() &&
        present->GetStreamId() != protocol::kNoStream) {
        m_driver.RoomClient_Remove(m_room, server, &present);
        server = Server();
    }
    return server ? server->GetAudioQueue(m_requested) : nullptr;
}

// The queue, or null when the room had to leave it. A queue with an input makes that the input of this
// selection.
AudioQueue* SourceSelection::CheckQueue(AudioQueue* queue) {
    if (!queue->GetInputFile().empty())
        m_inputName = queue->GetInputFile();
    if (!m_inputName.empty() || !queue->IsSongListEmpty())
        return queue;
    AudioServer* server = Server(); // which has the queue
    if (m_location.inputName == queue->GetInputFile() && server->ContainsRoom(m_room)) {
        m_driver.LogMessage(log_levels::kQueue,
                            "Not removing room on reselect due to same source and server");
        return queue;
    }
    m_driver.RoomClient_Remove(m_room, server, &queue);
    return nullptr;
}

AudioQueue* SourceSelection::NewQueue() {
    const AudioServer* inUse = InUseServer();
    AudioQueue* requested = inUse && m_requested != 0 ? inUse->GetAudioQueue(m_requested) : nullptr;
    if (requested)
        return requested;
    AudioServer* server = Server();
    return server ? m_driver.AudioServer_CreateQueue(server, m_room) : nullptr;
}

// Adds the room to the chosen queue; false when the queue has gone in the end.
bool SourceSelection::Enter(AudioQueue& queue) {
    if (m_driver.IsThere(queue))
        AddRoom(queue);
    if (m_driver.IsThere(queue))
        TakeSourceDevice(queue);
    return m_driver.IsThere(queue);
}

void SourceSelection::AddRoom(AudioQueue& queue) {
    queue.AddRoomClient(m_room, m_location.endpointAddress, m_location.endpointPort,
                        m_location.endpointChannel);
    m_driver.FireEvent(1);
    m_driver.UpdateRoomMapInfoVar();
}

// A queue that plays the input of another device makes the room listen to that device, and so does everything
// on the way there up to this driver.
void SourceSelection::TakeSourceDevice(AudioQueue& queue) {
    if (queue.GetStreamId() == protocol::kNoStream || queue.GetInputFile().empty() ||
        queue.GetSourceDevice() == m_params.sourceDeviceId)
        return;
    auto* room = kv::GetDeviceService<IAnalogSource>(m_driver.GetHelper(), m_room);
    if (!room)
        return;
    room->TakeSourceDevice(queue.GetSourceDevice());
    for (const std::uint32_t deviceId : queue.GetDevicesInAnalogSource()) {
        if (deviceId == m_driver.GetDeviceId() || !m_driver.IsThere(queue))
            break;
        room->SelectDevice(deviceId);
    }
}

void SourceSelection::PlayInput(AudioQueue& queue) {
    queue.SetSourceDevice(m_params.sourceDeviceId);
    ReturnQueue(queue);
    if (queue.GetRoomCount() == 1) {
        if (auto* room = kv::GetDeviceService<IAnalogSource>(m_driver.GetHelper(), m_room))
            queue.SetDevicesInAnalogSource(room->GetDevicesInAnalogSource());
    }
    if (!m_driver.IsThere(queue))
        return;
    if (queue.GetStreamId() == protocol::kNoStream)
        StartInput(queue);
    else if (queue.GetQueueState() == END)
        queue.PlayNextSong(true, false);
}

// Two queues of a server never play the same input: the room moves to the one that has it.
void SourceSelection::StartInput(AudioQueue& queue) {
    AudioServer* server = Server();
    if (!server)
        return;
    AudioQueue* playing = server->GetAudioQueue(m_inputName);
    if (playing && playing != &queue) {
        LeaveQueue(&queue);
        if (!m_driver.IsThere(*playing)) {
            ReturnNothing();
            return;
        }
        AddRoom(*playing);
        ReturnQueue(*playing);
        return;
    }
    server->SetInUseInput(m_inputName, &queue);
    queue.SetInputFile(m_inputName);
    if (!queue.GetWaitingForAddResponse())
        queue.CreateStream();
}

void SourceSelection::PlayQueue(AudioQueue& queue) {
    if (queue.IsSongListEmpty() && queue.GetInputFile().empty()) {
        LeaveQueue(&queue);
        return;
    }
    queue.SetSourceDevice(m_params.sourceDeviceId);
    FillResult(queue, false);
    Start(queue);
}

void SourceSelection::PlayPlaylist(AudioQueue& queue) {
    const std::uint32_t playlistId = m_location.mediaIds.empty() ? 0 : m_location.mediaIds.front();
    m_driver.Playlist_Load(m_room, playlistId, &queue, 0);
    if (queue.IsSongListEmpty() && queue.GetInputFile().empty()) {
        LeaveQueue(&queue); // the playlist had nothing to hear
        return;
    }
    Start(queue);
    FillResult(queue, true);
}

void SourceSelection::PlayBroadcast(AudioQueue& queue) {
    ReturnQueue(queue);
    queue.ClearNotifications();
    queue.SetIsInternetRadio(true);
    queue.AddSongList(m_location.mediaIds);
    if (queue.GetStreamId() != protocol::kNoStream)
        queue.PlayFirstSong();
    else
        queue.CreateStream();
}

void SourceSelection::PlayMedia(AudioQueue& queue) {
    if (m_location.mediaIds.empty()) {
        LeaveQueue(&queue);
        return;
    }
    ReturnQueue(queue);
    queue.AddSongList(m_location.mediaIds);
    Start(queue);
}

void SourceSelection::Start(AudioQueue& queue) {
    if (queue.GetStreamId() == protocol::kNoStream && !queue.GetWaitingForAddResponse())
        queue.CreateStream();
    if (queue.GetQueueState() == END)
        queue.PlayNextSong(true, false);
}

void SourceSelection::LeaveQueue(AudioQueue* queue) {
    AudioServer* owner = m_driver.AudioServer_GetServerFromId(queue->GetQueueId());
    if (owner)
        m_driver.RoomClient_Remove(m_room, owner, &queue);
}

void SourceSelection::ReturnQueue(const AudioQueue& queue) {
    m_result.handled = true;
    m_result.queueId = queue.GetQueueId();
    m_returned = &queue;
}

void SourceSelection::ReturnNothing() {
    m_result = AVReturn();
    m_returned = nullptr;
}

// What the room hears: the current media or, with `orNext` and nothing current, the next one.
void SourceSelection::FillResult(AudioQueue& queue, bool orNext) {
    ReturnQueue(queue);
    AudioMedia media = queue.GetCurrentMedia();
    if (orNext && media.type == MEDIA_NONE)
        media = queue.PeekNextSong();
    switch (media.type) {
        case MEDIA_DIGITAL:
            m_result.mediaKind = "SONG";
            m_result.mediaId = media.mediaId;
            break;
        case MEDIA_RHAPSODY_TRACK:
            m_result.mediaKind = "RHAPSODY";
            break;
        case MEDIA_RHAPSODY_CHANNEL:
            m_result.mediaKind = "RHAPSODY_CHANNEL";
            break;
        case MEDIA_INTERNET_RADIO:
            // A station is only ever joined by its queue's id.
            if (m_requested == 0)
                kv::AssertWrite(asserts::kDriverPath, asserts::kSelectedRadio, kv::StackTrace());
            else
                m_result.mediaKind = "INTERNET_MEDIA";
            break;
        default:
            break;
    }
}

void SourceSelection::SendMediaSelected() {
    const auto message = m_driver.CreateCommandMessageFromName("MEDIA_SELECTED");
    if (!message)
        return;
    IMediaManager* mediaManager = m_driver.GetMediaManager();
    if (mediaManager && !m_location.mediaIds.empty()) {
        std::string location;
        mediaManager->GetLocation(m_location.mediaIds.front(), m_kind, location);
        message->AddParam("location", "STRING", location);
    }
    message->AddParam("idRoom", "INT", std::to_string(m_room));
    m_driver.SendCommand(m_location.targetDeviceId, *message, nullptr);
}
