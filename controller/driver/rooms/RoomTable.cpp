#include "driver/rooms/RoomTable.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "platform/Xml.h"

namespace korvel::controller {
namespace {

// Characters outside the alphabet end the text.
std::string DecodeBase64(const std::string& text) {
    static const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    std::uint32_t bits = 0;
    int held = 0;
    for (const char c : text) {
        const std::size_t value = kAlphabet.find(c);
        if (value == std::string::npos)
            break;
        bits = (bits << 6 | static_cast<std::uint32_t>(value)) & 0xFFFFFF;
        held += 6;
        if (held >= 8) {
            held -= 8;
            out.push_back(static_cast<char>(bits >> held & 0xFF));
        }
    }
    return out;
}

} // namespace

RoomTable::RoomTable(const std::vector<RoomConfig>& configs) {
    m_rooms.reserve(configs.size());
    for (const RoomConfig& config : configs) {
        Room room;
        room.config = config;
        m_rooms.push_back(std::move(room));
    }
}

Room* RoomTable::Find(std::uint32_t id) {
    const auto found = std::ranges::find_if(m_rooms, [id](const Room& room) { return room.config.id == id; });
    return found == m_rooms.end() ? nullptr : &*found;
}

const Room* RoomTable::Find(std::uint32_t id) const {
    return const_cast<RoomTable*>(this)->Find(id);
}

AVLocationInfo EndpointOf(const Room& room) {
    AVLocationInfo location;
    location.endpointAddress = room.config.address;
    location.endpointPort = room.config.port;
    location.endpointChannel = room.config.channel;
    location.targetDeviceId = room.config.id;
    return location;
}

nlohmann::json ToJson(const Room& room) {
    nlohmann::json media = nullptr;
    for (const auto& [name, value] : ParseMediaInfo(room.mediaInfo))
        media[name] = value;
    return {
        {"id", room.config.id},
        {"name", room.config.name},
        {"endpoint",
         {{"address", room.config.address}, {"port", room.config.port}, {"channel", room.config.channel}}},
        {"routed", room.IsRouted()},
        {"queue", room.queueId},
        {"source", room.sourceDeviceId},
        {"media", std::move(media)},
        {"mediaInfo", room.mediaInfo}};
}

std::map<std::string, std::string> ParseMediaInfo(const std::string& xml) {
    std::map<std::string, std::string> values;
    if (xml.empty())
        return values;
    const auto document = KVXML::CreateXmlDocument(xml);
    if (!document)
        return values;
    const auto root = document->GetRoot();
    for (std::size_t i = 0; root && i < root->GetChildCount(); ++i) {
        const KVXML::INode& child = root->GetChild(i);
        const bool encoded = child.GetName() == "img" || child.GetName() == "genre";
        const std::string text(child.GetText());
        values[std::string(child.GetName())] = encoded ? DecodeBase64(text) : text;
    }
    return values;
}

} // namespace korvel::controller
