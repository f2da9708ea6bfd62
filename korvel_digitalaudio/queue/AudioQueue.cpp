#include "queue/AudioQueue.h"

#include "platform/EntryGuard.h"
#include "platform/System.h"
#include "queue/Clock.h"
#include "status/RoomHistories.h"

std::uint32_t MonotonicMilliseconds() {
    timespec now;
    KernelX::gettime(&now);
    return static_cast<std::uint32_t>(now.tv_sec) * 1000u + static_cast<std::uint32_t>(now.tv_nsec / 1000000);
}

AudioQueue::AudioQueue(IDriverHelperV2& driverHelper, IInstanceManager& instances, ServerUtility* server,
                       std::uint32_t queueId, std::uint32_t owner, KVRhapsodyClient::RhapsodyClient* rhapsody,
                       IRhapsodyCallback* rhapsodyCallback)
    : m_driverHelper(driverHelper),
      m_instances(instances),
      m_server(kv::auto_com<ServerUtility>::retain(server)),
      m_queueId(queueId),
      m_owner(owner),
      m_rhapsody(rhapsody),
      m_rhapsodyCallback(rhapsodyCallback),
      m_messaging(kv::GetService<IDeviceMessaging>(instances)),
      m_roomService(kv::GetService<IRoomService>(instances)),
      m_variables(kv::GetService<IVariableService>(instances)),
      m_stateTime(kv::Time()),
      m_packets(server) {}

AudioQueue::~AudioQueue() {
    kv::GuardEntry("~AudioQueue", [&] { Close(); });
}

void AudioQueue::Close() {
    if (m_closed)
        return;
    ChangeQueueState(STOP);
    NotifyQueueDeletion();
    m_closed = true;
    m_rooms.Change().clear();
    m_packets.Reset();
}

void AudioQueue::toxmlHistory(RoomHistories* histories, KVXML::INode& parent) const {
    histories->HistoryToXml(parent);
}
