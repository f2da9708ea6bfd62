// The shuffle and repeat modes that each room used last.
#include "basics/Asserts.h"
#include "basics/Variables.h"
#include "driver/korvel_digitalaudio.h"
#include "platform/XmlHelper.h"

using KVXML::INode;
using NodePtr = kv::auto_com<INode>;

namespace {

constexpr const char* kSettingsTag = "room_queue_settings";
constexpr const char* kRoomTag = "room_info";

bool IsSet(const std::map<std::uint32_t, bool>& modes, std::uint32_t roomId) {
    const auto found = modes.find(roomId);
    return found != modes.end() && found->second;
}

} // namespace

void korvel_digitalaudio::AddRoomsShuffleState(std::uint32_t roomId, bool on) {
    m_roomShuffle[roomId] = on;
    UpdateRoomsQueueSettingsVariable(nullptr);
}

void korvel_digitalaudio::AddRoomsRepeatState(std::uint32_t roomId, bool on) {
    m_roomRepeat[roomId] = on;
    UpdateRoomsQueueSettingsVariable(nullptr);
}

// Lists the rooms that had a queue or whose shuffle was set; repeat alone does not make a room known.
NodePtr korvel_digitalaudio::RoomQueueSettingsToXml() const {
    auto settings = KVXML::CreateXmlNode(kSettingsTag);
    for (const auto& [roomId, shuffle] : m_roomShuffle) {
        auto room = XmlHelper::AddChild(*settings, kRoomTag);
        XmlHelper::toXml(roomId, *room, "roomid");
        XmlHelper::toXml(std::uint32_t{shuffle}, *room, "shuffle");
        XmlHelper::toXml(std::uint32_t{IsSet(m_roomRepeat, roomId)}, *room, "repeat");
    }
    return settings;
}

void korvel_digitalaudio::UpdateRoomsQueueSettingsVariable(INode* parent) {
    const NodePtr settings = RoomQueueSettingsToXml();
    ChangeMyVariable(variables::kRoomQueueSettings, settings->ToText());
    if (parent)
        parent->AppendChild(*settings);
}

void korvel_digitalaudio::RoomQueueSettingsFromXml(INode* persist) {
    const INode* settings = persist ? persist->FindChild(kSettingsTag) : nullptr;
    if (!settings)
        return;
    for (std::size_t i = 0; i < settings->GetChildCount(); ++i) {
        const INode& room = settings->GetChild(i);
        if (room.GetName() != kRoomTag)
            kv::AssertWrite(asserts::kDriverPath, asserts::kRoomInfoName, kv::StackTrace());
        std::uint32_t roomId = 0;
        std::uint32_t shuffle = 0;
        std::uint32_t repeat = 0;
        XmlHelper::fromXml(room, "roomid", roomId);
        XmlHelper::fromXml(room, "shuffle", shuffle);
        XmlHelper::fromXml(room, "repeat", repeat);
        m_roomShuffle[roomId] = shuffle != 0;
        m_roomRepeat[roomId] = repeat != 0;
    }
}

void korvel_digitalaudio::ListRoom(std::uint32_t roomId) {
    m_roomShuffle.try_emplace(roomId, false);
}

void korvel_digitalaudio::SetQueuesShuffleState(AudioQueue& queue, std::uint32_t roomId) {
    const bool on = IsSet(m_roomShuffle, roomId);
    if (on != queue.IsShuffleSet())
        queue.SetShuffle(on);
}

void korvel_digitalaudio::SetQueuesRepeatState(AudioQueue& queue, std::uint32_t roomId) {
    const bool on = IsSet(m_roomRepeat, roomId);
    if (on != queue.IsRepeatSet())
        queue.SetRepeat(on);
}
