// The commands that the driver gives an audio server; each knows its own text.
#pragma once

#include <cstdint>
#include <string>

#include "basics/QueueState.h"
#include "server/link/Protocol.h"

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

// What a client is told by: the address and the port that a room's endpoint listens on.
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
