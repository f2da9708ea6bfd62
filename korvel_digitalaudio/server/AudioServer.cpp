#include "server/AudioServer.h"

#include "basics/Asserts.h"
#include "status/RoomHistories.h"

AudioServer::AudioServer(IDriverHelperV2& driverHelper, IInstanceManager& instances,
                         AudioServerWatcher* watcher, std::uint32_t bindingId,
                         bool allowMultipleStreamingInputs, KVRhapsodyClient::RhapsodyClient* rhapsody,
                         IRhapsodyCallback* rhapsodyCallback)
    : m_bindingId(bindingId),
      m_link(kv::auto_com<ServerUtility>::adopt(new ServerUtility(driverHelper, instances, bindingId))),
      m_instances(instances),
      m_driverHelper(driverHelper),
      m_messaging(kv::GetService<IDeviceMessaging>(instances)),
      m_uiNotifier(kv::GetService<IUINotifier>(instances)),
      m_rhapsody(rhapsody),
      m_rhapsodyCallback(rhapsodyCallback),
      m_allowMultipleStreamingInputs(allowMultipleStreamingInputs),
      m_watcher(watcher) {}

AudioServer::~AudioServer() {
    AbandonQueues();
    m_announcement.reset(); // it still has something to say, over the link
}

void AudioServer::Retire() {
    AbandonQueues();
    CancelAnnouncement();
}

void AudioServer::AbandonQueues() {
    for (auto& entry : m_queues)
        m_leftQueues.push_back(std::move(entry.second));
    m_queues.clear();
    for (auto& queue : m_unlistedQueues)
        m_leftQueues.push_back(std::move(queue));
    m_unlistedQueues.clear();
    for (const auto& queue : m_leftQueues)
        queue->Abandon();
}

AudioQueue* AudioServer::CreateAudioQueue(std::uint32_t roomId, std::uint32_t queueId) {
    auto created = std::make_unique<AudioQueue>(m_driverHelper, m_instances, m_link.get(), queueId, roomId,
                                                m_rhapsody, m_rhapsodyCallback);
    AudioQueue* queue = created.get();
    if (m_queues.count(queueId) == 0)
        m_queues.emplace(queueId, std::move(created));
    else
        m_unlistedQueues.push_back(std::move(created));
    return queue;
}

void AudioServer::RemoveAudioQueue(std::uint32_t queueId) {
    const auto found = m_queues.find(queueId);
    if (found == m_queues.end())
        return;
    AudioQueue& queue = *m_removedQueues.emplace_back(std::move(found->second));
    m_queues.erase(found);
    if (queue.GetRoomCount() != 0)
        kv::AssertWrite(asserts::kServerPath, asserts::kRemovedQueueHasRooms, kv::StackTrace());
    queue.Close();
}

template <class Predicate>
AudioQueue* AudioServer::FindQueue(Predicate matches) const {
    for (const auto& [id, queue] : m_queues) {
        if (matches(*queue))
            return queue.get();
    }
    return nullptr;
}

AudioQueue* AudioServer::GetAudioQueue(std::uint32_t queueId) const {
    const auto found = m_queues.find(queueId);
    return found == m_queues.end() ? nullptr : found->second.get();
}

AudioQueue* AudioServer::GetAudioQueue(const std::string& path) const {
    return FindQueue([&](const AudioQueue& queue) {
        return !queue.GetInputFile().empty() && queue.GetInputFile() == path;
    });
}

AudioQueue* AudioServer::GetAudioQueueFromRoom(std::uint32_t roomId) const {
    return FindQueue([&](const AudioQueue& queue) { return queue.ContainsRoom(roomId); });
}

AudioQueue* AudioServer::GetAudioQueueFromStream(std::uint32_t streamId) const {
    return FindQueue([&](const AudioQueue& queue) { return queue.GetStreamId() == streamId; });
}

AudioQueue* AudioServer::GetPendingQueue() const {
    return GetAudioQueueFromStream(protocol::kNoStream);
}

AudioQueue* AudioServer::GetNextAudioQueue(std::uint32_t queueId) const {
    auto next = m_queues.begin();
    if (queueId != 0) {
        next = m_queues.find(queueId);
        if (next != m_queues.end())
            ++next;
    }
    return next == m_queues.end() ? nullptr : next->second.get();
}

std::vector<AudioQueue*> AudioServer::GetQueues() const {
    std::vector<AudioQueue*> queues;
    queues.reserve(m_queues.size());
    for (const auto& entry : m_queues)
        queues.push_back(entry.second.get());
    return queues;
}

bool AudioServer::IsClientInUse(const std::string& ip, std::uint32_t channel, std::uint32_t port,
                                AudioQueue** found) const {
    *found = FindQueue([&](const AudioQueue& queue) { return queue.IsClientInUse(ip, channel, port); });
    return *found != nullptr;
}

AudioQueue* AudioServer::GetInUseClientQueue(const std::string& ip, std::uint32_t channel,
                                             std::uint32_t port) const {
    AudioQueue* found = nullptr;
    IsClientInUse(ip, channel, port, &found);
    return found;
}

void AudioServer::GetStatusVariable(KVXML::INode& parent) const {
    AppendOfEach(parent, &AudioQueue::GetStatusData);
}

void AudioServer::GetStatusVariable132(KVXML::INode& parent) const {
    AppendOfEach(parent, &AudioQueue::GetStatusDataVersion132);
}

void AudioServer::GetRoomMapData(KVXML::INode& parent) const {
    AppendOfEach(parent, &AudioQueue::GetRoomMapData);
}

// Without the element of a queue that ends while its name is looked up.
void AudioServer::AppendOfEach(KVXML::INode& parent, QueueElement element) const {
    for (AudioQueue* queue : GetQueues()) {
        const auto made = queue->IsClosed() ? nullptr : (queue->*element)();
        if (made && !queue->IsClosed())
            parent.AppendChild(*made);
    }
}

void AudioServer::toxmlHistory(RoomHistories* histories, KVXML::INode& parent) const {
    histories->HistoryToXml(parent);
}

void AudioServer::SetInUseInput(const std::string& path, const AudioQueue* queue) {
    m_inUseInputPath = path;
    m_inUseInputQueueId = queue->GetQueueId();
}

bool AudioServer::ClearInUseInput(const AudioQueue* queue) {
    if (queue->GetQueueId() != m_inUseInputQueueId)
        return false;
    m_inUseInputPath.clear();
    m_inUseInputQueueId.reset();
    return true;
}

void AudioServer::CreateAnnouncement() {
    if (!m_announcement)
        m_announcement = std::make_unique<Announcement>(m_instances, m_link.get());
    m_announcement->CreateStream();
}

void AudioServer::CancelAnnouncement() {
    if (m_announcement)
        m_announcement->CleanupAnnouncement();
}

void AudioServer::PlayAnnouncement(const std::string& path) {
    if (m_announcement)
        m_announcement->Play(path);
}

void AudioServer::AddClientToAnnouncement(std::uint32_t roomId, const std::string& ip, std::uint32_t port) {
    if (m_announcement)
        m_announcement->AddClient(roomId, ip, port);
}
