// Rooms that let go of the source, by themselves or because the driver tells them to.
#include "basics/Asserts.h"
#include "driver/korvel_digitalaudio.h"

void korvel_digitalaudio::DeselectRoom(std::uint32_t roomId) {
    AudioServer* server = AudioServer_GetServerFromRoom(roomId);
    if (!server)
        return;
    AudioQueue* queue = server->GetAudioQueueFromRoom(roomId);
    if (!queue) {
        kv::AssertWrite(asserts::kDriverPath, asserts::kDeselectedNoQueue, kv::StackTrace());
        return;
    }
    // A room that was only given media, and never selected the source, keeps its queue.
    if (queue->GetRoomClient(roomId)->GetIpAddress().empty())
        return;
    if (queue->GetRoomCount() == 1)
        server->ClearInUseInput(queue);
    RoomClient_Remove(roomId, server, &queue);
    UpdateQueueStatusVariable();
}

void korvel_digitalaudio::SwitchRoomOff(std::uint32_t roomId) {
    AudioServer* server = AudioServer_GetServerFromRoom(roomId);
    if (!server)
        return;
    server->CancelAnnouncement();
    AudioQueue* queue = server->GetAudioQueueFromRoom(roomId);
    if (queue)
        RoomClient_Remove(roomId, server, &queue);
    UpdateQueueStatusVariable();
}

void korvel_digitalaudio::AddLocationInfo(const AVParams& params, AVLocationInfo& location) {
    const std::string& kind = params.mediaKind;
    const bool located = kind == "SONG" || kind == "BROADCAST_AUDIO" || kind == "ALBUM" ||
                         kind == "ALBUM_MP3" || kind == "ALBUM_CD";
    IMediaManager* mediaManager = GetMediaManager();
    if (located && mediaManager && !location.mediaIds.empty())
        mediaManager->GetLocation(location.mediaIds.front(), kind, location.location);
}

void korvel_digitalaudio::DeselectAudioPath(std::uint32_t deviceId) {
    if (const auto message = CreateCommandMessageFromName("DESELECT_AUDIO_PATH"))
        SendCommand(deviceId, *message, nullptr);
}

void korvel_digitalaudio::AudioQueue_DeselectAll(AudioQueue* queue) {
    for (const std::uint32_t roomId : queue->GetRoomIds())
        DeselectAudioPath(roomId);
}

void korvel_digitalaudio::AudioQueue_DeselectClients(AudioQueue* queue, const std::string& ip,
                                                     std::uint32_t channel, std::uint32_t port) {
    if (!queue)
        return;
    std::vector<std::uint32_t> rooms;
    for (const auto& [roomId, client] : queue->GetRoomClientMap()) {
        if (client->IsClientTheSame(ip, channel, port))
            rooms.push_back(roomId);
    }
    for (const std::uint32_t roomId : rooms)
        DeselectAudioPath(roomId);
}

// The last room takes the queue and its stream with it. `*queue` is null when the queue is gone in the end.
void korvel_digitalaudio::RoomClient_Remove(std::uint32_t roomId, AudioServer* server, AudioQueue** queue) {
    AudioQueue& left = **queue;
    left.RemoveRoomClient(roomId);
    if (left.GetRoomCount() == 0) {
        left.RemoveStream();
        InterruptClearTimer(&left);
        server->RemoveAudioQueue(left.GetQueueId());
    }
    FireEvent(2);
    UpdateRoomMapInfoVar();
    if (!IsThere(left))
        *queue = nullptr;
}

void korvel_digitalaudio::RoomClient_RemoveAll(AudioServer* server, AudioQueue* queue) {
    for (const std::uint32_t roomId : queue->GetRoomIds()) {
        if (!queue)
            return;
        RoomClient_Remove(roomId, server, &queue);
    }
}

void korvel_digitalaudio::RoomClient_DeselectAll(AudioServer*, std::uint32_t roomId) {
    if (AudioQueue* queue = AudioServer_GetQueueFromRoom(roomId))
        AudioQueue_DeselectAll(queue);
}

void korvel_digitalaudio::AudioServer_DeselectIfDifferntInput(AudioServer* server, std::uint32_t roomId,
                                                              const std::string& input) {
    const std::string inUse = server->GetInUseInputPath();
    if (inUse.empty() || inUse == input)
        return;
    AudioQueue* queue = server->GetInUseInputQueue();
    if (!queue) {
        kv::AssertWrite(asserts::kDriverPath, asserts::kNoInUseQueue, kv::StackTrace());
        return;
    }
    RoomClient_Remove(roomId, server, &queue);
    if (queue)
        AudioQueue_DeselectAll(queue);
}
