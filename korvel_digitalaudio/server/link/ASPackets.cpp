#include "server/link/ASPackets.h"

#include <utility>

#include "server/link/ServerUtility.h"

std::string ASResetPacket::build() const {
    return protocol::kReset;
}
std::string ASAddStreamPacket::build() const {
    return protocol::kAddStream;
}
std::string ASAddAnnouncementPacket::build() const {
    return protocol::kAddAnnouncement;
}

std::string ASStreamPacketBase::str() const {
    return m_streamId == protocol::kNoStream ? "" : build();
}

std::string ASStreamPacketBase::Start(const char* command) const {
    return std::string(command) + " " + std::to_string(m_streamId);
}

std::string ASRemoveStreamPacket::build() const {
    return Start(protocol::kRemoveStream);
}
std::string ASEndOfStreamPacket::build() const {
    return Start(protocol::kEndOfStream);
}
std::string ASRemoveMediaPacket::build() const {
    return Start(protocol::kRemoveMedia);
}

std::string ASChangeStatePacket::build() const {
    const char* state = m_state == PLAY ? " play" : m_state == PAUSE ? " pause" : " stop";
    return Start(protocol::kSetState) + state;
}

std::string ASClientPacketBase::BuildClient(const char* command) const {
    return Start(command) + " " + m_ipAddress + " " + std::to_string(m_port);
}

std::string ASAddClientPacket::build() const {
    return BuildClient(protocol::kAddClient);
}
std::string ASRemoveClientPacket::build() const {
    return BuildClient(protocol::kRemoveClient);
}

std::string ASAddMediaPacket::build() const {
    return Start(protocol::kAddMedia) + " " + GetMediaText();
}
std::string ASAddFileInputPacket::build() const {
    return Start(protocol::kAddMedia) + " " + GetMediaText();
}

std::string ASAddFileMediaPacket::build() const {
    return Start(protocol::kAddMedia) + " \"file:/" + GetMediaText() + "\"";
}

// The stream stands in the reference a second time: it tells the server which session of the service to use.
std::string ASAddRhapsodyMediaPacket::build() const {
    return Start(protocol::kAddMedia) + " \"rhap://" + std::to_string(GetStreamId()) + ":" + GetMediaText() +
           "\"";
}

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
