#include "driver/reading/RoomModes.h"

#include "platform/Xml.h"
#include "platform/XmlHelper.h"

namespace korvel::controller {

namespace {

// What a command without a value toggles; without a queue it is set to off.
bool Wanted(const ICmdMessage& command, const std::string& mode, std::optional<bool> now) {
    return command.GetParam(mode).empty() ? now.has_value() && !*now : command.GetNumber(mode) != 0;
}

} // namespace

void RoomModes::OnSettings(const std::string& document) {
    const auto parsed = KVXML::CreateXmlDocument(document);
    const auto root = parsed ? parsed->GetRoot() : nullptr;
    for (std::size_t i = 0; root && i < root->GetChildCount(); ++i) {
        const KVXML::INode& info = root->GetChild(i);
        std::uint32_t room = 0;
        std::uint32_t shuffle = 0;
        std::uint32_t repeat = 0;
        if (XmlHelper::fromXml(info, "roomid", room) && XmlHelper::fromXml(info, "shuffle", shuffle) &&
            XmlHelper::fromXml(info, "repeat", repeat))
            m_rooms[room] = {shuffle != 0, repeat != 0};
    }
}

std::optional<Modes> RoomModes::OnCommand(const ICmdMessage& command, const std::optional<Modes>& queue) {
    const bool shuffles = command.GetName() == "SHUFFLE";
    if ((!shuffles && command.GetName() != "REPEAT") || command.GetParam("ROOM_ID").empty())
        return {};
    Modes& room = m_rooms[command.GetNumber("ROOM_ID")];
    Modes now = queue.value_or(Modes());
    if (shuffles)
        room.shuffle = now.shuffle =
            Wanted(command, "SHUFFLE", queue ? std::optional(queue->shuffle) : std::nullopt);
    else
        room.repeat = now.repeat =
            Wanted(command, "REPEAT", queue ? std::optional(queue->repeat) : std::nullopt);
    return queue ? std::optional(now) : std::nullopt;
}

Modes RoomModes::Of(RoomId room) const {
    const auto found = m_rooms.find(room);
    return found == m_rooms.end() ? Modes() : found->second;
}

} // namespace korvel::controller
