#include "driver/reading/Documents.h"

#include <string>

#include "platform/Text.h"
#include "platform/XmlHelper.h"

namespace korvel::controller {

namespace {

constexpr std::string_view kPieceBegin = "<audioQueueInfo>";
constexpr std::string_view kPieceEnd = "</audioQueueInfo>";

// The sources that the driver writes beside a media.
constexpr std::uint32_t kSong = 1;
constexpr std::uint32_t kTrack = 2;
constexpr std::uint32_t kChannel = 3;
constexpr std::uint32_t kStation = 5;

MediaRef ReadMedia(const KVXML::INode& element) {
    const std::string id(element.GetAttribute("id"));
    switch (kv::ToULong(element.GetAttribute("source"))) {
        case kSong:
            return {MediaKind::Song, id};
        case kTrack:
            return {MediaKind::Track, id};
        case kChannel: // its id is the track that it plays now
            return {MediaKind::Channel, std::string(element.GetAttribute("station_id"))};
        case kStation:
            return {MediaKind::Station, id};
        default:
            return {};
    }
}

Transport ReadTransport(const KVXML::INode& queue) {
    std::string state;
    XmlHelper::fromXml(queue, "state", state);
    if (state == "Play")
        return Transport::Playing;
    return state == "Pause" ? Transport::Paused : Transport::Stopped;
}

} // namespace

std::vector<std::string_view> PiecesOfRoomMap(std::string_view document) {
    std::vector<std::string_view> pieces;
    for (std::size_t begin = document.find(kPieceBegin); begin != std::string_view::npos;) {
        const std::size_t end = document.find(kPieceEnd, begin);
        if (end == std::string_view::npos)
            break;
        pieces.push_back(document.substr(begin, end + kPieceEnd.size() - begin));
        begin = document.find(kPieceBegin, end);
    }
    return pieces;
}

std::optional<QueueStatus> ReadStatus(std::string_view piece) {
    const auto document = KVXML::CreateXmlDocument(std::string(piece));
    const auto root = document ? document->GetRoot() : nullptr;
    const KVXML::INode* const queue = root ? root->FindChild("queue") : nullptr;
    QueueStatus status;
    if (!queue || !XmlHelper::fromXml(*queue, "id", status.queueId))
        return {};
    status.transport = ReadTransport(*queue);
    if (const KVXML::INode* song = queue->FindChild("song"))
        status.song = ReadMedia(*song);
    std::uint32_t index = 0;
    XmlHelper::fromXml(*queue, "index", index);
    status.index = index;
    if (const KVXML::INode* rooms = queue->FindChild("rooms"))
        XmlHelper::fromXml(*rooms, status.rooms);
    return status;
}

std::optional<QueueList> ReadList(const KVXML::INode& info) {
    QueueList list;
    if (!XmlHelper::fromXml(info, "id", list.queueId))
        return {};
    const KVXML::INode* const songs = info.FindChild("songs");
    const std::size_t count = songs ? songs->GetChildCount() : 0;
    list.media.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        list.media.push_back(ReadMedia(songs->GetChild(i)));
    return list;
}

} // namespace korvel::controller
