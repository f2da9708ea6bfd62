// The commands that the driver gives an audio server, each of which knows its own text, and the queue in which
// those of a stream wait for it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "basics/QueueState.h"
#include "server/link/Protocol.h"

class ServerUtility;

class ASPacketBase {
public:
    ASPacketBase() = default;
    ASPacketBase(const ASPacketBase&) = delete;
    ASPacketBase& operator=(const ASPacketBase&) = delete;
    virtual ~ASPacketBase() = default;
    // What goes on the wire, without number and line end.
    virtual std::string str() const { return build(); }
    virtual std::string build() const = 0;
};

class ASResetPacket : public ASPacketBase {
public:
    std::string build() const override;
};

class ASAddStreamPacket : public ASPacketBase {
public:
    std::string build() const override;
};

class ASAddAnnouncementPacket : public ASPacketBase {
public:
    std::string build() const override;
};

// A command that acts on a stream; without a stream it prints as nothing.
class ASStreamPacketBase : public ASPacketBase {
public:
    std::string str() const override;
    std::uint32_t GetStreamId() const { return m_streamId; }
    void SetStreamId(std::uint32_t streamId) { m_streamId = streamId; }

protected:
    // The command word and the stream.
    std::string Start(const char* command) const;

private:
    std::uint32_t m_streamId = protocol::kNoStream;
};

class ASRemoveStreamPacket : public ASStreamPacketBase {
public:
    std::string build() const override;
};

class ASEndOfStreamPacket : public ASStreamPacketBase {
public:
    std::string build() const override;
};

class ASRemoveMediaPacket : public ASStreamPacketBase {
public:
    std::string build() const override;
};

class ASChangeStatePacket : public ASStreamPacketBase {
public:
    explicit ASChangeStatePacket(QueueState state) : m_state(state) {}
    std::string build() const override;

private:
    QueueState m_state;
};

// Names a client by the address and the port that a room's endpoint listens on.
class ASClientPacketBase : public ASStreamPacketBase {
public:
    ASClientPacketBase(std::string ipAddress, std::uint32_t port)
        : m_ipAddress(std::move(ipAddress)), m_port(port) {}

protected:
    std::string BuildClient(const char* command) const;

private:
    std::string m_ipAddress;
    std::uint32_t m_port;
};

class ASAddClientPacket : public ASClientPacketBase {
public:
    using ASClientPacketBase::ASClientPacketBase;
    std::string build() const override;
};

class ASRemoveClientPacket : public ASClientPacketBase {
public:
    using ASClientPacketBase::ASClientPacketBase;
    std::string build() const override;
};

// Media texts go out as they are, without quoting or escaping.
class ASAddMedPacketBase : public ASStreamPacketBase {
public:
    explicit ASAddMedPacketBase(std::string mediaText) : m_mediaText(std::move(mediaText)) {}

protected:
    const std::string& GetMediaText() const { return m_mediaText; }

private:
    std::string m_mediaText;
};

// The media text is already quoted.
class ASAddMediaPacket : public ASAddMedPacketBase {
public:
    using ASAddMedPacketBase::ASAddMedPacketBase;
    std::string build() const override;
};

// The media text is the name of a local input.
class ASAddFileInputPacket : public ASAddMedPacketBase {
public:
    using ASAddMedPacketBase::ASAddMedPacketBase;
    std::string build() const override;
};

// The media text is the path of a file.
class ASAddFileMediaPacket : public ASAddMedPacketBase {
public:
    using ASAddMedPacketBase::ASAddMedPacketBase;
    std::string build() const override;
};

// The media text is the id of a track or channel of the streaming service.
class ASAddRhapsodyMediaPacket : public ASAddMedPacketBase {
public:
    using ASAddMedPacketBase::ASAddMedPacketBase;
    std::string build() const override;
};

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
