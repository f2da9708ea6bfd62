// Which room hears which stream.
#include "basics/Variables.h"
#include "driver/korvel_digitalaudio.h"
#include "platform/XmlHelper.h"

using KVXML::INode;

namespace {

// An announcement shows as a playing queue of one song.
constexpr std::uint32_t kAnnouncementQueueId = 2000;
constexpr std::uint32_t kAnnouncementSong = 1;
constexpr const char* kAnnouncementPort = "6200";
constexpr const char* kAnnouncementChannel = "2";

void AppendAnnouncement(INode& root, const Announcement& announcement) {
    auto info = KVXML::CreateXmlNode("audioQueueInfo");
    auto queue = XmlHelper::AddChild(*info, "queue");
    queue->SetAttribute("id", kAnnouncementQueueId);
    queue->SetAttribute("name", "Announcement");
    queue->SetAttribute("state", "Play");
    for (const char* tag : {"song", "next"}) {
        auto song = XmlHelper::AddChild(*queue, tag);
        song->SetAttribute("id", kAnnouncementSong);
        song->SetAttribute("source", kAnnouncementSong);
    }
    queue->SetAttribute("index", kAnnouncementSong);
    auto rooms = XmlHelper::AddChild(*queue, "rooms");
    for (const std::uint32_t roomId : announcement.GetRooms())
        rooms->SetAttribute("id", roomId);
    for (std::size_t i = 0; i < announcement.GetAddresses().size(); ++i) {
        auto room = XmlHelper::AddChild(*info, "roomInfo");
        room->SetAttribute("roomId", announcement.GetRooms()[i]);
        room->SetAttribute("ip", announcement.GetAddresses()[i]);
        room->SetAttribute("port", kAnnouncementPort);
        room->SetAttribute("channel", kAnnouncementChannel);
    }
    root.AppendChild(*info);
}

} // namespace

void korvel_digitalaudio::UpdateRoomMapInfoVar() {
    PublishAssembly(variables::kRoomMapInfo, "info", m_shownRoomMap, [this](INode& root) {
        ForEachServer([&](const AudioServer& server) {
            server.GetRoomMapData(root);
            const Announcement* announcement = server.GetAnnouncement();
            if (announcement && GetServer(server.GetBindingId()) == &server &&
                !announcement->GetAddresses().empty())
                AppendAnnouncement(root, *announcement);
        });
    });
}
