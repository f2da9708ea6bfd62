#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/InstanceManager.h"
#include "server/link/ASPacket.h"
#include "server/link/ASPackets.h"
#include "server/link/ServerUtility.h"

// One audio file played at once in a set of rooms, on a stream of its own.
//
//   any        --CreateStream()-->                requested  packets wait for the stream
//   requested  --answer to "addann"-->            streaming  packets go out at once
//   streaming  --its end or a file refused-->     complete   the stream is still there
//   streaming  --CleanupAnnouncement()-->         idle       the stream is removed, the same when complete
//   requested  --CleanupAnnouncement()-->         requested  packets are dropped, the answer is still awaited
class Announcement {
public:
    // `link` must outlive the announcement; no reference is taken.
    Announcement(IInstanceManager& instances, ServerUtility* link);
    Announcement(const Announcement&) = delete;
    Announcement& operator=(const Announcement&) = delete;
    ~Announcement();

    // Asks for a new stream. An earlier one is forgotten, not removed.
    void CreateStream();
    // The stream was made: tells the core, then releases the waiting packets.
    void SetStreamID(std::uint32_t id);
    void AddClient(std::uint32_t roomId, const std::string& ip, std::uint32_t port);
    void Play(const std::string& path);
    // Offers a line from the server. True when it was this announcement's and nobody else should look at it;
    // `changed` becomes true when the announcement ended.
    bool OnDataIn(const ASPacket& packet, bool& changed);
    // Removes the stream from the server.
    void CleanupAnnouncement();

    // The rooms and addresses of the clients, in the order added; parallel lists.
    const std::vector<std::uint32_t>& GetRooms() const { return m_roomIds; }
    const std::vector<std::string>& GetAddresses() const { return m_addresses; }

private:
    void AnnouncementComplete();

    std::uint32_t m_streamId = protocol::kNoStream;
    IInstanceManager& m_instances;
    ServerUtility* m_link;
    bool m_waitingForStream = false;
    ASPacketSendQueue m_packets;
    std::vector<std::uint32_t> m_roomIds;
    std::vector<std::string> m_addresses;
};
