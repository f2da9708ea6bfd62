// Sessions: queues shared by several rooms.
#include <sstream>

#include "driver/korvel_digitalaudio.h"
#include "platform/Text.h"

namespace {

constexpr int kMaxListedRooms = 100;

std::vector<std::uint32_t> SplitRoomList(const std::string& list) {
    std::vector<std::string> pieces;
    ASPacket::SplitPacket(list, ",", pieces, kMaxListedRooms);
    std::vector<std::uint32_t> rooms;
    rooms.reserve(pieces.size());
    for (const std::string& piece : pieces)
        rooms.push_back(kv::ToULong(piece));
    return rooms;
}

std::string AddressText(const void* address) {
    std::ostringstream out;
    out << "0x" << std::hex << reinterpret_cast<std::uintptr_t>(address);
    return out.str();
}

} // namespace

void korvel_digitalaudio::ReturnQueueId(ICmdReturn* ret, std::uint32_t queueId) {
    setReturnValue(ret, "<queueid>" + std::to_string(queueId) + "</queueid>");
}

// Takes the room out of its queue. It joins the other one when it selects this driver's device with the
// queue's id.
std::uint32_t korvel_digitalaudio::AudioQueue_Join(std::uint32_t roomId, std::uint32_t joinRoomId) {
    if (roomId == joinRoomId)
        return 0;
    const AudioQueue* target = AudioServer_GetQueueFromRoom(joinRoomId);
    if (!target)
        return 0;
    const std::uint32_t targetId = target->GetQueueId();
    AudioServer* server = AudioServer_GetServerFromRoom(roomId);
    AudioQueue* queue = server ? server->GetAudioQueueFromRoom(roomId) : nullptr;
    if (queue) {
        RoomClient_Remove(roomId, server, &queue);
        DeselectAudioPath(roomId);
    }
    return targetId;
}

void korvel_digitalaudio::OnJoin(const ICmdMessage& message, ICmdReturn* ret) {
    const std::uint32_t queueId =
        message.GetParam("JOIN_ID").empty()
            ? message.GetNumber("QUEUE_ID")
            : AudioQueue_Join(message.GetNumber("ROOM_ID"), message.GetNumber("JOIN_ID"));
    if (queueId != 0)
        ReturnQueueId(ret, queueId);
}

void korvel_digitalaudio::OnAddRoomsToSession(const ICmdMessage& message, ICmdReturn* ret) {
    LogDebugMessage("OnAddRoomsToSession: pReturn = ", AddressText(ret));
    const std::string room = message.GetParam("ROOM_ID");
    const std::string list = message.GetParam("ROOM_ID_LIST");
    if (room.empty() || list.empty())
        return;
    const std::uint32_t roomId = kv::ToULong(room);
    const AudioQueue* session = AudioServer_GetQueueFromRoom(roomId);
    if (!session)
        return;
    const std::uint32_t sessionId = session->GetQueueId();
    for (const std::uint32_t listedRoom : SplitRoomList(list)) {
        AudioQueue_Join(listedRoom, roomId);
        SelectInRoom(listedRoom, sessionId);
    }
    UpdateQueueStatusVariable();
    LogDebugMessage("OnAddRoomsToSession: calling setReturnValue pReturn = ", AddressText(ret));
    ReturnQueueId(ret, sessionId);
}

// Asks a room to select this driver's device with a queue.
void korvel_digitalaudio::SelectInRoom(std::uint32_t roomId, std::uint32_t queueId) {
    const auto select = CreateCommandMessageFromName("SELECT_AUDIO_DEVICE");
    if (!select)
        return;
    select->AddParam("deviceid", "INT", std::to_string(GetDeviceId()));
    select->AddParam("queueid", "INT", std::to_string(queueId));
    SendCommand(roomId, *select, nullptr);
}

void korvel_digitalaudio::OnRemoveRoomsFromSession(const ICmdMessage& message, ICmdReturn*) {
    const AudioQueue* session = AudioServer_GetQueueFromRoom(message.GetNumber("ROOM_ID"));
    if (!session)
        return;
    const std::uint32_t sessionId = session->GetQueueId();
    for (const std::uint32_t listedRoom : SplitRoomList(message.GetParam("ROOM_ID_LIST"))) {
        const AudioQueue* queue = AudioServer_GetQueueFromRoom(listedRoom);
        if (queue && queue->GetQueueId() == sessionId)
            DeselectAudioPath(listedRoom);
    }
    UpdateQueueStatusVariable();
}

// The room leaves its session as if it had switched its source away.
void korvel_digitalaudio::OnRemove(const ICmdMessage& message, ICmdReturn*) {
    const std::uint32_t roomId = message.GetNumber("ROOM_ID");
    if (AudioServer_GetQueueFromRoom(roomId))
        DeselectAudioPath(roomId);
}

void korvel_digitalaudio::OnRemoveQueue(const ICmdMessage& message, ICmdReturn*) {
    const std::uint32_t roomId = message.GetNumber("ROOM_ID");
    if (AudioServer* server = AudioServer_GetServerFromRoom(roomId))
        RoomClient_DeselectAll(server, roomId);
}
