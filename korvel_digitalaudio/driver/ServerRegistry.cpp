// Audio servers and their queues: how they are found and made.
#include "basics/Asserts.h"
#include "driver/QueueIds.h"
#include "driver/korvel_digitalaudio.h"
#include "server/link/ASPackets.h"

AudioServer* korvel_digitalaudio::AudioServer_Create(std::uint32_t id, bool allowMultInput) {
    if (AudioServer* known = GetServer(id))
        return known;
    auto created = std::make_unique<AudioServer>(GetHelper(), GetInstanceManager(), this, id, allowMultInput,
                                                 m_rhapsody.get(), this);
    AudioServer* server = m_servers.emplace(id, std::move(created)).first->second.get();
    server->SetClearPlaylistSettings(m_clearPlaylist);
    server->AddToServerSendQueue(ASResetPacket().str().c_str());
    return server;
}

AudioServer* korvel_digitalaudio::GetServer(std::uint32_t bindingId) const {
    const auto found = m_servers.find(bindingId);
    return found == m_servers.end() ? nullptr : found->second.get();
}

void korvel_digitalaudio::EndServer(std::uint32_t bindingId) {
    const auto found = m_servers.find(bindingId);
    if (found == m_servers.end())
        return;
    auto ended = std::move(found->second);
    m_servers.erase(found);
    AudioServer& server = *m_retiredServers.emplace_back(std::move(ended));
    server.Retire();
}

// Only while nothing up the stack can hold a server. One that left queues behind is kept with them.
void korvel_digitalaudio::ReleaseRetiredServers() {
    for (auto& server : std::exchange(m_retiredServers, {})) {
        if (server->HasQueues())
            m_goneServers.push_back(std::move(server));
    }
}

template <class Predicate>
AudioServer* korvel_digitalaudio::FindServer(Predicate matches) const {
    for (const auto& [id, server] : m_servers) {
        if (matches(*server))
            return server.get();
    }
    return nullptr;
}

// Named after a server's id, though the key is a queue's.
AudioServer* korvel_digitalaudio::AudioServer_GetServerFromId(std::uint32_t queueId) const {
    return FindServer([&](const AudioServer& server) { return server.GetAudioQueue(queueId) != nullptr; });
}

AudioServer* korvel_digitalaudio::AudioServer_GetInUseServer(const std::string& ip, std::uint32_t channel,
                                                             std::uint32_t port) const {
    return FindServer(
        [&](const AudioServer& server) { return server.GetInUseClientQueue(ip, channel, port) != nullptr; });
}

AudioServer* korvel_digitalaudio::AudioServer_GetServerFromRoom(std::uint32_t roomId) const {
    return FindServer([&](const AudioServer& server) { return server.ContainsRoom(roomId); });
}

AudioQueue* korvel_digitalaudio::AudioServer_GetQueueFromRoom(std::uint32_t roomId) const {
    const AudioServer* server = AudioServer_GetServerFromRoom(roomId);
    return server ? server->GetAudioQueueFromRoom(roomId) : nullptr;
}

AudioQueue* korvel_digitalaudio::AudioServer_GetQueueFromId(std::uint32_t queueId) const {
    const AudioServer* server = AudioServer_GetServerFromId(queueId);
    return server ? server->GetAudioQueue(queueId) : nullptr;
}

// The queue after `queueId`, the first one for 0; also when the queue of that id has gone meanwhile.
AudioQueue* korvel_digitalaudio::NextQueue(const AudioServer& server, std::uint32_t queueId) {
    if (queueId == 0 || server.GetAudioQueue(queueId))
        return server.GetNextAudioQueue(queueId);
    AudioQueue* next = server.GetNextAudioQueue(0);
    while (next && next->GetQueueId() < queueId)
        next = server.GetNextAudioQueue(next->GetQueueId());
    return next;
}

bool korvel_digitalaudio::IsThere(const AudioQueue& queue) const {
    return AudioServer_GetQueueFromId(queue.GetQueueId()) == &queue;
}

std::int32_t korvel_digitalaudio::AudioServer_CreateQueue(std::uint32_t roomId, AudioQueue** queue,
                                                          bool* created) {
    *created = false;
    *queue = nullptr;
    if (m_activeServerBinding == 0)
        return -1;
    AudioServer* server = AudioServer_GetServerFromRoom(roomId);
    const std::uint32_t activeBinding = m_activeServerBinding;
    const bool onActive = server && server->GetBindingId() == activeBinding;
    if (server) {
        *queue = server->GetAudioQueueFromRoom(roomId);
        if (onActive && (*queue)->GetInputFile().empty())
            return 0;
        // Media cannot be added to a queue that plays a local input, nor to one on another server.
        RoomClient_Remove(roomId, server, queue);
    }
    // Looked up again: what was sent while the room left may have ended the server.
    server = onActive ? GetServer(activeBinding) : AudioServer_Create(m_activeServerBinding, false);
    *queue = server ? AudioServer_CreateQueue(server, roomId) : nullptr;
    *created = *queue != nullptr;
    return *created ? 0 : -1;
}

AudioQueue* korvel_digitalaudio::AudioServer_CreateQueue(AudioServer* server, std::uint32_t roomId) {
    AudioQueue* queue = server->CreateAudioQueue(roomId, m_nextQueueId);
    m_nextQueueId = NextQueueId(m_nextQueueId);
    ListRoom(roomId);
    SetQueuesShuffleState(*queue, roomId);
    SetQueuesRepeatState(*queue, roomId);
    return queue;
}

AudioQueue* korvel_digitalaudio::AudioQueue_Get(std::uint32_t roomId, std::uint32_t queueId) const {
    if (roomId != 0)
        return AudioServer_GetQueueFromRoom(roomId);
    return queueId != 0 ? AudioServer_GetQueueFromId(queueId) : nullptr;
}

std::vector<std::uint32_t> korvel_digitalaudio::GetMp3Devices(std::uint32_t deviceId) {
    if (auto* storage = kv::GetDeviceService<IMp3Storage>(GetHelper(), deviceId))
        return storage->GetMp3Devices();
    kv::AssertWrite(asserts::kDriverPath, asserts::kNoMp3Storage, kv::StackTrace());
    return {};
}

void korvel_digitalaudio::SendErrorToUI(const std::string& text) {
    const auto error = KVXML::CreateXmlNode("DA_ERROR");
    if (!error) {
        kv::AssertWrite(asserts::kDriverPath, asserts::kErrorElement, kv::StackTrace());
        return;
    }
    error->SetAttribute("Error", text);
    ConSendDataToUI(*error);
}
