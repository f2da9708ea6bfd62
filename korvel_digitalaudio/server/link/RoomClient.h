#pragma once

#include <cstdint>
#include <string>

#include "platform/AutoCom.h"
#include "server/link/ServerUtility.h"

// The network endpoint of one room's player. Holds a reference of the server's send link.
class RoomClient {
public:
    static constexpr std::uint32_t kUnknownChannel = 4294967295u;

    // A client whose endpoint is not known yet.
    explicit RoomClient(ServerUtility* link);
    RoomClient(ServerUtility* link, const std::string& ip, std::uint32_t port, std::uint32_t channel);

    void SetRoomInfo(const std::string& ip, std::uint32_t port, std::uint32_t channel);

    std::string GetIpAddress() const { return m_ipAddress; }
    std::uint32_t GetIpPort() const { return m_port; }
    std::uint32_t GetChannel() const { return m_channel; }

    // Whether this is the endpoint. Channel comes before port here, unlike in SetRoomInfo(). Addresses are
    // compared byte for byte.
    bool IsClientTheSame(const std::string& ip, std::uint32_t channel, std::uint32_t port) const;

private:
    std::string m_ipAddress;
    std::uint32_t m_port = 0;
    std::uint32_t m_channel = kUnknownChannel;
    kv::auto_com<ServerUtility> m_link;
};
