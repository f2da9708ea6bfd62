#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>

#include "server/link/ASPackets.h"

class ServerUtility;

// Commands of one stream that wait until the audio server has assigned the stream its number. Packets never
// overtake each other, except that a request for the stream itself is sent ahead of those that wait for it.
class ASPacketSendQueue {
public:
    // `server` must outlive the queue; without one, packets that could go are dropped.
    explicit ASPacketSendQueue(ServerUtility* server) : m_server(server) {}
    ASPacketSendQueue(const ASPacketSendQueue&) = delete;
    ASPacketSendQueue& operator=(const ASPacketSendQueue&) = delete;
    // Unsent packets are dropped.
    virtual ~ASPacketSendQueue() = default;

    // Appends the packet and sends what can go. With `skipWaiting`, packets that must wait do not hold back
    // those behind them.
    void Add(std::unique_ptr<ASPacketBase> packet, bool skipWaiting);
    // Stamps the number on the waiting packets and sends them.
    void SetStreamID(std::uint32_t id);
    void Flush(bool skipWaiting);
    // Drops every packet without sending it.
    void Clear() { m_packets.clear(); }
    // Forgets the stream and drops every packet.
    void Reset();
    // Drops the add-media packets that still wait; returns how many.
    std::size_t RemoveWaitingMedia();

private:
    std::uint32_t m_streamId = protocol::kNoStream;
    ServerUtility* m_server;
    std::deque<std::unique_ptr<ASPacketBase>> m_packets;
};
