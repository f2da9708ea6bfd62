#include <algorithm>
#include <stdexcept>
#include <tuple>
#include <utility>

#include "basics/Asserts.h"
#include "basics/Ids.h"
#include "basics/Variables.h"
#include "platform/XmlHelper.h"
#include "queue/AudioQueue.h"

using KVXML::INode;
using NodePtr = kv::auto_com<INode>;

namespace {

std::uint32_t PositionIn(const std::vector<AudioMedia>& list, const AudioMedia& media) {
    return static_cast<std::uint32_t>(std::find(list.begin(), list.end(), media) - list.begin());
}

// The queue's id and owner, which the info documents begin with; the owner is a number here.
NodePtr InfoRoot(std::uint32_t queueId, std::uint32_t owner) {
    auto root = KVXML::CreateXmlNode("info");
    XmlHelper::toXml(queueId, *root, "id");
    XmlHelper::toXml(owner, *root, "name");
    return root;
}

} // namespace

NodePtr AudioQueue::GetSessionData() const {
    auto rooms = KVXML::CreateXmlNode("rooms");
    for (const auto& room : *m_rooms)
        XmlHelper::toXml(room.first, *rooms, "id");
    return rooms;
}

// A type code is a signed number, and commands can bring in any.
std::string AudioQueue::PublishedSource(const AudioMedia& media) const {
    return std::to_string(IsInternetRadio() ? std::int32_t{MEDIA_INTERNET_RADIO} : media.type);
}

NodePtr AudioQueue::GetInfoVariable() const {
    auto root = InfoRoot(m_queueId, m_owner);
    auto songs = XmlHelper::AddChild(*root, "songs");
    for (const AudioMedia& media : *m_songs) {
        auto song = XmlHelper::AddChild(*songs, "song");
        switch (media.type) {
            case MEDIA_DIGITAL:
                song->SetAttribute("id", media.mediaId);
                break;
            case MEDIA_RHAPSODY_TRACK:
                song->SetAttribute("id", media.externalId);
                break;
            case MEDIA_RHAPSODY_CHANNEL:
                song->SetAttribute("id", media.metaData);
                song->SetAttribute("station_id", media.externalId);
                break;
            case MEDIA_RESERVED:
            case MEDIA_INTERNET_RADIO:
                break;
            default:
                kv::AssertWrite(asserts::kQueuePath, asserts::kInfoMediaType, kv::StackTrace());
        }
        song->SetAttribute("source", PublishedSource(media));
    }
    return root;
}

// Readers of this older document take the list from elsewhere: its "songs" stays empty.
NodePtr AudioQueue::GetInfoVariableVersion132() const {
    auto root = InfoRoot(m_queueId, m_owner);
    XmlHelper::AddChild(*root, "songs");
    for (const AudioMedia& media : *m_songs) {
        if (media.type < MEDIA_DIGITAL || media.type > MEDIA_INTERNET_RADIO)
            kv::AssertWrite(asserts::kQueuePath, asserts::kInfo132MediaType, kv::StackTrace());
    }
    return root;
}

void AudioQueue::UpdateInfoVariable() {
    if (m_closed || !m_variables)
        return;
    const auto publish = [&](std::uint32_t variable, const INode& document) {
        m_variables->SetVariable(kDriverDeviceId, kDriverDeviceId, variable, document.ToText(), true);
    };
    publish(variables::kQueueInfoV2, *GetInfoVariable());
    publish(variables::kQueueInfo, *GetInfoVariableVersion132());
}

std::string AudioQueue::OwnerName() const {
    return m_messaging ? m_messaging->GetDeviceName(m_owner) : "";
}

// What both status documents begin with. A queue that has ended shows as stopped.
NodePtr AudioQueue::StatusRoot(const std::string& name, QueueState state) const {
    auto root = KVXML::CreateXmlNode("queue");
    XmlHelper::toXml(m_queueId, *root, "id");
    XmlHelper::toXml(name, *root, "name");
    switch (state) {
        case STOP:
        case END:
            XmlHelper::toXml("Stop", *root, "state");
            break;
        case PAUSE:
            XmlHelper::toXml("Pause", *root, "state");
            break;
        case PLAY:
            XmlHelper::toXml("Play", *root, "state");
            break;
    }
    return root;
}

void AudioQueue::SetStatusMediaAttributes(INode& element, const AudioMedia& media) const {
    switch (media.type) {
        case MEDIA_RHAPSODY_CHANNEL:
            element.SetAttribute("id", media.metaData);
            element.SetAttribute("station_id", media.externalId);
            break;
        case MEDIA_INTERNET_RADIO:
            element.SetAttribute("id", media.metaData);
            break;
        case MEDIA_RHAPSODY_TRACK:
            element.SetAttribute("id", media.externalId);
            break;
        default:
            element.SetAttribute("id", media.mediaId);
    }
    element.SetAttribute("source", PublishedSource(media));
}

// Counts in the order in which songs were added, also while shuffle is on.
std::uint32_t AudioQueue::PublishedIndex(const AudioMedia& current) {
    if (!m_shuffle)
        return m_currentIndex;
    return m_position.Get({m_songs.GetRevision(), current},
                          [&](const auto&) { return PositionIn(*m_songs, current); });
}

bool AudioQueue::Status::operator==(const Status& other) const {
    // The equality of media leaves the metadata out, which shows.
    const auto values = [](const Status& status) {
        return std::tie(status.name, status.state, status.current, status.current.metaData, status.next,
                        status.next.metaData, status.internetRadio, status.index, status.rooms);
    };
    return values(*this) == values(other);
}

NodePtr AudioQueue::GetStatusData() {
    // In this order: looking what comes next may shuffle the list.
    Status status{.name = OwnerName(), .state = m_state, .current = m_currentMedia};
    try {
        status.next = PeekNextSong();
    } catch (const std::out_of_range&) {
        // A pin past the end of the list: there is no telling what comes next, and the other queues must
        // still show.
    }
    status.internetRadio = IsInternetRadio();
    status.index = PublishedIndex(m_currentIndex == NO_SONG_INDEX ? AudioMedia() : m_currentMedia);
    status.rooms = m_rooms.GetRevision();
    return m_status.Get(std::move(status), [&](const Status& shown) {
        auto root = StatusRoot(shown.name, shown.state);
        SetStatusMediaAttributes(*XmlHelper::AddChild(*root, "song"), shown.current);
        SetStatusMediaAttributes(*XmlHelper::AddChild(*root, "next"), shown.next);
        XmlHelper::toXml(shown.index, *root, "index");
        root->AppendChild(*GetSessionData());
        root->Finish();
        return root;
    });
}

NodePtr AudioQueue::GetStatusDataVersion132() {
    Status132 status{.name = OwnerName(), .state = m_state};
    const bool outside = m_currentMedia.type == MEDIA_RHAPSODY_TRACK ||
                         m_currentMedia.type == MEDIA_RHAPSODY_CHANNEL ||
                         m_currentMedia.type == MEDIA_INTERNET_RADIO;
    status.item = outside ? kNoDatabaseId : m_currentMedia.mediaId;
    status.index = m_currentIndex == NO_SONG_INDEX ? NO_SONG_INDEX : PublishedIndex(m_currentMedia);
    status.rooms = m_rooms.GetRevision();
    return m_status132.Get(std::move(status), [&](const Status132& shown) {
        auto root = StatusRoot(shown.name, shown.state);
        XmlHelper::toXml(shown.item, *root, "item");
        XmlHelper::toXml(shown.index, *root, "index");
        root->AppendChild(*GetSessionData());
        root->Finish();
        return root;
    });
}

NodePtr AudioQueue::GetRoomMapData() {
    const NodePtr status = GetStatusData();
    return m_roomMap.Get(status.get(), [&](const INode*) {
        auto info = KVXML::CreateXmlNode("audioQueueInfo");
        info->AppendChild(*status);
        for (const auto& [roomId, client] : *m_rooms) {
            auto room = XmlHelper::AddChild(*info, "roomInfo");
            room->SetAttribute("roomId", roomId);
            room->SetAttribute("ip", client->GetIpAddress());
            room->SetAttribute("port", client->GetIpPort());
            room->SetAttribute("channel", client->GetChannel());
        }
        info->Finish();
        return info;
    });
}
