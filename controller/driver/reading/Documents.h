// The documents of the driver, as the house needs them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "house/Media.h"
#include "house/Session.h"
#include "platform/Xml.h"

namespace korvel::controller {

// What the driver shows of a queue beside its list.
struct QueueStatus {
    std::uint32_t queueId = 0;
    Transport transport = Transport::Stopped; // never Ended: that is published as a stop
    // The song that plays, as far as the document names it; its kind is Unknown when nothing does. Of a queue that plays
    // alone it may be something else than its entry: a station shows its title.
    MediaRef song;
    std::size_t index = 0; // of that song in the list; 4095 or the length of the list when there is none
    std::vector<RoomId> rooms;
};

// The list of a queue.
struct QueueList {
    std::uint32_t queueId = 0;
    std::vector<MediaRef> media;
};

// How a list shows a station.
inline const MediaRef kUnnamedStation{MediaKind::Station, ""};

// Cuts ROOM_MAP_INFO into the pieces that are a queue each, in its order: what is another text is another queue.
std::vector<std::string_view> PiecesOfRoomMap(std::string_view document);

// A piece; none when it is not of a queue, as that of an announcement.
std::optional<QueueStatus> ReadStatus(std::string_view piece);

// QUEUE_INFO_V2, or the answer to GET_QUEUE_INFO; none when it is of no queue.
std::optional<QueueList> ReadList(const KVXML::INode& info);

} // namespace korvel::controller
