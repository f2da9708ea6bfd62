#include "server/link/ASPacketSendQueue.h"

#include <utility>

#include "server/link/ServerUtility.h"

void ASPacketSendQueue::Add(std::unique_ptr<ASPacketBase> packet, bool skipWaiting) {
    m_packets.push_back(std::move(packet));
    Flush(skipWaiting);
}

void ASPacketSendQueue::SetStreamID(std::uint32_t id) {
    m_streamId = id;
    Flush(false);
}

void ASPacketSendQueue::Flush(bool skipWaiting) {
    std::size_t position = 0;
    while (position < m_packets.size()) {
        auto* streamPacket = dynamic_cast<ASStreamPacketBase*>(m_packets[position].get());
        if (streamPacket && m_streamId == protocol::kNoStream) {
            if (!skipWaiting)
                return;
            ++position;
            continue;
        }
        // Taken out first: the hand-over may come back here before it returns.
        const std::unique_ptr<ASPacketBase> packet = std::move(m_packets[position]);
        m_packets.erase(m_packets.begin() + static_cast<std::ptrdiff_t>(position));
        if (streamPacket)
            streamPacket->SetStreamId(m_streamId);
        if (m_server)
            m_server->AddToSendQueue(packet->str().c_str());
    }
}

void ASPacketSendQueue::Reset() {
    m_streamId = protocol::kNoStream;
    Clear();
}

std::size_t ASPacketSendQueue::RemoveWaitingMedia() {
    return std::erase_if(m_packets, [](const std::unique_ptr<ASPacketBase>& packet) {
        return dynamic_cast<const ASAddMedPacketBase*>(packet.get()) != nullptr;
    });
}
