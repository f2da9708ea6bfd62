#include "server/Announcement.h"

#include <memory>

#include "platform/EntryGuard.h"
#include "platform/Services.h"

Announcement::Announcement(IInstanceManager& instances, ServerUtility* link)
    : m_instances(instances), m_link(link), m_packets(link) {}

Announcement::~Announcement() {
    kv::GuardEntry("~Announcement", [&] { CleanupAnnouncement(); });
}

void Announcement::CreateStream() {
    m_waitingForStream = true;
    m_packets.Flush(false);
    m_packets.Reset();
    m_streamId = protocol::kNoStream;
    m_packets.Add(std::make_unique<ASAddAnnouncementPacket>(), true);
}

void Announcement::SetStreamID(std::uint32_t id) {
    m_streamId = id;
    m_waitingForStream = false;
    if (auto* notifier = kv::GetService<IAnnouncementNotifier>(m_instances))
        notifier->AnnouncementStreamReady();
    if (m_streamId == id) // unless the core gave the stream up at once
        m_packets.SetStreamID(id);
}

void Announcement::AddClient(std::uint32_t roomId, const std::string& ip, std::uint32_t port) {
    m_packets.Add(std::make_unique<ASAddClientPacket>(ip, port), false);
    m_roomIds.push_back(roomId);
    m_addresses.push_back(ip);
}

void Announcement::Play(const std::string& path) {
    m_packets.Add(std::make_unique<ASAddFileMediaPacket>(path), false);
}

bool Announcement::OnDataIn(const ASPacket& packet, bool& changed) {
    const std::uint32_t stream = packet.GetStreamULONG();
    if (m_streamId == protocol::kNoStream) {
        // No acknowledgement: that is the event which the server sends before this answer. A server that sends
        // none keeps the next line waiting for the link's timer.
        if (!m_waitingForStream || packet.GetCommand() != protocol::kAddAnnouncement)
            return false;
        SetStreamID(stream);
        return true;
    }
    if (stream != m_streamId)
        return false;

    const std::string result = packet.GetResult();
    if (result == protocol::kOk || result == protocol::kNo || result == protocol::kBad)
        m_link->KillAckTimer();
    const bool refused =
        (result == protocol::kNo || result == protocol::kBad) && packet.GetCommand() == protocol::kAddMedia;
    if (refused || result == protocol::kEndOfMedia) {
        AnnouncementComplete();
        changed = true;
    }
    return true;
}

void Announcement::AnnouncementComplete() {
    if (auto* notifier = kv::GetService<IAnnouncementNotifier>(m_instances))
        notifier->AnnouncementComplete();
    m_roomIds.clear();
    m_addresses.clear();
}

void Announcement::CleanupAnnouncement() {
    m_packets.Add(std::make_unique<ASRemoveStreamPacket>(), false);
    m_packets.Flush(false);
    m_packets.Reset();
    m_streamId = protocol::kNoStream;
}
