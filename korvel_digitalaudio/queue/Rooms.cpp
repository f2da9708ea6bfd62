#include <utility>

#include "queue/AudioQueue.h"

void AudioQueue::AddRoomClient(std::uint32_t roomId) {
    if (!m_closed && !ContainsRoom(roomId))
        m_rooms.Change().emplace(roomId, std::make_unique<RoomClient>(m_server.get()));
}

// A client that is replaced is not removed on the audio server: the new one takes its place.
void AudioQueue::AddRoomClient(std::uint32_t roomId, const std::string& ip, std::uint32_t port,
                               std::uint32_t channel) {
    if (m_closed)
        return;
    m_rooms.Change()[roomId] = std::make_unique<RoomClient>(m_server.get(), ip, port, channel);
    if (!ip.empty())
        AddPacket(std::make_unique<ASAddClientPacket>(ip, port));
}

void AudioQueue::RemoveRoomClient(std::uint32_t roomId) {
    if (!ContainsRoom(roomId))
        return;
    // Another room that shares the endpoint keeps playing.
    const RoomClient& client = *GetRoomClient(roomId);
    if (!IsSameClientInQueue(roomId) && !client.GetIpAddress().empty())
        AddPacket(std::make_unique<ASRemoveClientPacket>(client.GetIpAddress(), client.GetIpPort()));
    m_rooms.Change().erase(roomId);
    if (!m_rooms->empty() && m_owner == roomId)
        m_owner = m_rooms->begin()->first;
}

void AudioQueue::AddRoomClientsToStream() {
    for (const std::uint32_t roomId : GetRoomIds()) {
        const RoomClient* client = GetRoomClient(roomId);
        if (client && !client->GetIpAddress().empty())
            AddPacket(std::make_unique<ASAddClientPacket>(client->GetIpAddress(), client->GetIpPort()));
    }
}

bool AudioQueue::IsClientInUse(const std::string& ip, std::uint32_t channel, std::uint32_t port) const {
    for (const auto& [roomId, client] : *m_rooms) {
        if (client->IsClientTheSame(ip, channel, port))
            return true;
    }
    return false;
}

bool AudioQueue::IsSameClientInQueue(std::uint32_t roomId) const {
    const RoomClient* own = GetRoomClient(roomId);
    if (!own)
        return false;
    for (const auto& [otherId, other] : *m_rooms) {
        if (otherId != roomId && other->GetIpAddress() == own->GetIpAddress() &&
            other->GetIpPort() == own->GetIpPort())
            return true;
    }
    return false;
}

const RoomClient* AudioQueue::GetRoomClient(std::uint32_t roomId) const {
    const auto found = m_rooms->find(roomId);
    return found == m_rooms->end() ? nullptr : found->second.get();
}

std::vector<std::uint32_t> AudioQueue::GetRoomIds() const {
    std::vector<std::uint32_t> ids;
    ids.reserve(m_rooms->size());
    for (const auto& room : *m_rooms)
        ids.push_back(room.first);
    return ids;
}

void AudioQueue::SetDevicesInAnalogSource(std::vector<std::uint32_t> deviceIds) {
    m_devicesInAnalogSource = std::move(deviceIds);
}
