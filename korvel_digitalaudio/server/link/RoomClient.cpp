#include "server/link/RoomClient.h"

RoomClient::RoomClient(ServerUtility* link) : m_link(kv::auto_com<ServerUtility>::retain(link)) {}

RoomClient::RoomClient(ServerUtility* link, const std::string& ip, std::uint32_t port, std::uint32_t channel)
    : RoomClient(link) {
    SetRoomInfo(ip, port, channel);
}

void RoomClient::SetRoomInfo(const std::string& ip, std::uint32_t port, std::uint32_t channel) {
    m_ipAddress = ip;
    m_port = port;
    m_channel = channel;
}

bool RoomClient::IsClientTheSame(const std::string& ip, std::uint32_t channel, std::uint32_t port) const {
    return m_ipAddress == ip && m_channel == channel && m_port == port;
}
