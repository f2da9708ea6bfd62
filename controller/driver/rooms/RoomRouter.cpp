#include "driver/rooms/RoomRouter.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <string_view>

#include "base/Refused.h"
#include "driver/Ids.h"
#include "platform/Text.h"
#include "platform/XmlHelper.h"

namespace korvel::controller {

bool IsMediaCommand(const std::string& name) {
    static constexpr std::array<std::string_view, 9> kNames = {
        "ADD_SONG",      "ADD_SONG_LIST", "ADD_ALBUM_MP3", "ADD_ALBUM_LIST", "QUEUE_ALL", "ADD_PLAYLIST",
        "ADD_IR_STREAM", "PLAY",          "JOIN"};
    return std::ranges::find(kNames, name) != kNames.end();
}

std::uint32_t QueueIdOf(const std::string& answer) {
    static constexpr std::string_view kTag = "<queueid>";
    return answer.rfind(kTag, 0) == 0 ? kv::ToULong(std::string_view(answer).substr(kTag.size())) : 0;
}

void RoomRouter::OnMessage(Room& room, const ICmdMessage& message) {
    const std::uint32_t roomId = room.config.id;
    if (message.GetName() == "UPDATE_MEDIA_INFO") {
        room.mediaInfo = message.GetParam("MEDIA_INFO");
    } else if (message.GetName() == "DESELECT_AUDIO_PATH") {
        m_poster.Post([this, roomId] { Deselect(roomId); });
    } else if (message.GetName() == "SELECT_AUDIO_DEVICE") {
        if (message.GetNumber("deviceid") == kDriverDeviceId)
            m_poster.Post(
                [this, roomId, queueId = message.GetNumber("queueid")] { TrySelect(roomId, queueId); });
    }
}

void RoomRouter::OnServerLost(std::uint32_t bindingId) {
    for (Room& room : m_parts.rooms.All()) {
        if (room.IsRouted() && room.bindingId == bindingId)
            SetQueue(room, 0);
    }
}

void RoomRouter::RouteSoon(std::uint32_t roomId, std::uint32_t queueId, std::optional<LineInput> input) {
    m_poster.Post([this, roomId, queueId, input = std::move(input)] {
        const Room* room = m_parts.rooms.Find(roomId);
        const std::uint32_t wanted = queueId != 0 ? queueId : QueueOfRoom(roomId);
        if (room && wanted != 0 && room->queueId != wanted)
            TrySelect(roomId, wanted, input ? &*input : nullptr);
    });
}

void RoomRouter::TrySelect(std::uint32_t roomId, std::uint32_t queueId, const LineInput* input) {
    try {
        Select(roomId, queueId, input);
    } catch (const Refused& refused) {
        m_parts.log.Warning("room " + std::to_string(roomId) + " not routed: " + refused.what());
    }
}

void RoomRouter::Select(std::uint32_t roomId, std::uint32_t queueId, const LineInput* input) {
    Room& room = Require(roomId);
    RequireReady();
    const std::uint32_t wanted = queueId != 0 ? queueId : QueueOfRoom(roomId);
    // A selection of a queue that is not there would cost the room the queue that it has.
    if (wanted != 0 && !HasQueue(wanted))
        throw Refused(Refused::Why::NotFound, "there is no queue " + std::to_string(wanted));
    if (wanted == 0)
        throw Refused(Refused::Why::Conflict,
                      room.config.name + " has no queue: add music to it, or join a room");
    const std::uint32_t sourceBefore = room.sourceDeviceId;
    room.sourceDeviceId = SourceOf(wanted, input);
    CallSelected(room, wanted, input);
    // What the room hears now is the driver's decision: an empty queue, say, is not kept.
    const std::uint32_t queue = QueueOfRoom(roomId);
    const bool taken = queue == wanted || (input && queue != 0);
    if (!taken)
        room.sourceDeviceId = sourceBefore;
    SetQueue(room, queue);
    if (HearsTogether(room))
        AskWhatPlays(room);
    if (!taken)
        throw Refused(Refused::Why::Conflict,
                      room.config.name + " was not taken into queue " + std::to_string(wanted));
}

bool RoomRouter::HearsTogether(const Room& room) const {
    return std::ranges::any_of(m_parts.rooms.All(), [&](const Room& other) {
        return &other != &room && other.IsRouted() && other.queueId == room.queueId;
    });
}

// What the others were told before this room came.
void RoomRouter::AskWhatPlays(const Room& room) {
    const auto command = kv::CreateCmdMessage("REQUEST_CURRENT_MEDIA_INFO");
    command->AddParam("ROOM_ID", "INT", std::to_string(room.config.id));
    CR_String answer;
    m_parts.driver.Execute(*command, answer);
}

// A room that joins others takes the source that they have.
std::uint32_t RoomRouter::SourceOf(std::uint32_t queueId, const LineInput* input) const {
    if (input)
        return input->deviceId;
    const auto found = std::ranges::find(m_parts.rooms.All(), queueId, &Room::queueId);
    return found == m_parts.rooms.All().end() ? kDriverDeviceId : found->sourceDeviceId;
}

void RoomRouter::CallSelected(const Room& room, std::uint32_t queueId, const LineInput* input) {
    AVParams params;
    params.roomId = room.config.id;
    params.queueId = queueId;
    params.mediaKind = "QUEUE";
    params.sourceDeviceId = room.sourceDeviceId;
    AVLocationInfo location = EndpointOf(room);
    location.inputName = input ? input->name : "";
    m_parts.driver.Select(params, location);
}

void RoomRouter::Deselect(std::uint32_t roomId) {
    Room& room = Require(roomId);
    m_parts.driver.Deselect(roomId);
    SetQueue(room, 0);
}

void RoomRouter::TurnOff(std::uint32_t roomId) {
    Room& room = Require(roomId);
    m_parts.driver.RoomOff(roomId);
    SetQueue(room, 0);
    if (m_roomOff)
        m_roomOff();
}

void RoomRouter::Join(std::uint32_t roomId, std::uint32_t other) {
    Room& room = Require(roomId);
    Room& host = Require(other);
    RequireReady();
    if (roomId == other)
        throw Refused(Refused::Why::Invalid, "a room cannot join itself");
    if (QueueOfRoom(other) == 0)
        throw Refused(Refused::Why::Conflict,
                      host.config.name + " plays nothing that " + room.config.name + " could join");
    // The driver takes the room out of its own queue and then asks it, through a message, to select the other
    // one.
    const auto command = kv::CreateCmdMessage("ADD_ROOMS_TO_SESSION");
    command->AddParam("ROOM_ID", "INT", std::to_string(other));
    command->AddParam("ROOM_ID_LIST", "STRING", std::to_string(roomId));
    CR_String answer;
    m_parts.driver.Execute(*command, answer);
}

std::uint32_t RoomRouter::QueueOfRoom(std::uint32_t roomId) {
    return AskForQueue("ROOM_ID", roomId);
}

bool RoomRouter::HasQueue(std::uint32_t queueId) {
    return AskForQueue("QUEUE_ID", queueId) == queueId;
}

std::uint32_t RoomRouter::AskForQueue(const std::string& key, std::uint32_t value) {
    const auto request = kv::CreateCmdMessage("GET_QUEUE_INFO");
    request->AddParam(key, "INT", std::to_string(value));
    const auto info = m_parts.driver.Request(*request);
    std::uint32_t queueId = 0;
    if (info)
        XmlHelper::fromXml(*info, "id", queueId);
    return queueId;
}

Room& RoomRouter::Require(std::uint32_t roomId) {
    Room* room = m_parts.rooms.Find(roomId);
    if (!room)
        throw Refused(Refused::Why::NotFound, "there is no room " + std::to_string(roomId));
    return *room;
}

void RoomRouter::RequireReady() const {
    if (const std::string why = m_parts.whyNotReady(); !why.empty())
        throw Refused(Refused::Why::Unavailable, why);
}

void RoomRouter::SetQueue(Room& room, std::uint32_t queueId) {
    const bool changed = room.queueId != queueId;
    room.queueId = queueId;
    room.bindingId = queueId != 0 ? m_parts.activeBinding() : 0;
    if (queueId == 0) {
        room.sourceDeviceId = 0;
        room.mediaInfo.clear();
    }
    if (changed)
        PublishRoom(room);
}

void RoomRouter::PublishRoom(const Room& room) {
    m_parts.log.Info(room.config.name + (room.IsRouted() ? " hears queue " + std::to_string(room.queueId)
                                                         : std::string(" hears nothing")));
    nlohmann::json event = ToJson(room);
    event["type"] = "room";
    m_parts.events.Publish(event);
}

} // namespace korvel::controller
