#include <algorithm>
#include <stdexcept>
#include <utility>

#include "basics/Asserts.h"
#include "basics/Ids.h"
#include "basics/Variables.h"
#include "platform/XmlPrinter.h"
#include "queue/AudioQueue.h"

using KVXML::Printer;
using NodePtr = kv::auto_com<KVXML::INode>;

namespace {

// A queue that has ended shows as stopped.
void PrintState(Printer& printer, QueueState state) {
    switch (state) {
        case STOP:
        case END:
            printer.Value("state", "Stop");
            break;
        case PAUSE:
            printer.Value("state", "Pause");
            break;
        case PLAY:
            printer.Value("state", "Play");
            break;
    }
}

void PrintStatusMedia(Printer& printer, const char* name, const AudioMedia& media, bool internetRadio) {
    printer.Element(name, [&] {
        switch (media.type) {
            case MEDIA_RHAPSODY_CHANNEL:
                printer.Attribute("id", media.metaData);
                printer.Attribute("station_id", media.externalId);
                break;
            case MEDIA_INTERNET_RADIO:
                printer.Attribute("id", media.metaData);
                break;
            case MEDIA_RHAPSODY_TRACK:
                printer.Attribute("id", media.externalId);
                break;
            default:
                printer.Attribute("id", media.mediaId);
        }
        printer.Attribute("source", media.ShownSource(internetRadio));
    });
}

} // namespace

void AudioQueue::PrintRooms(Printer& printer) const {
    printer.Element("rooms", [&] {
        for (const auto& room : *m_rooms)
            printer.Value("id", room.first);
    });
}

NodePtr AudioQueue::GetSessionData() const {
    Printer printer;
    PrintRooms(printer);
    return KVXML::CreatePrintedNode(printer.Take());
}

// The owner is a number here.
std::string AudioQueue::PrintInfo(std::string_view songs) const {
    constexpr std::size_t kBesideSongs = 128;
    Printer printer;
    printer.Reserve(songs.size() + kBesideSongs);
    printer.Element("info", [&] {
        printer.Value("id", m_queueId);
        printer.Value("name", m_owner);
        printer.Element("songs", [&] { printer.Finished(songs); });
    });
    return printer.Take();
}

// Once for each item that cannot be listed.
void AudioQueue::AssertListed(int line) const {
    for (std::size_t i = 0; i < m_songs.CountUnlisted(); ++i)
        kv::AssertWrite(asserts::kQueuePath, line, kv::StackTrace());
}

std::string AudioQueue::InfoText() const {
    AssertListed(asserts::kInfoMediaType);
    return PrintInfo(m_songs.GetText(IsInternetRadio()));
}

// Readers of this older document take the list from elsewhere: its "songs" stays empty.
std::string AudioQueue::InfoTextVersion132() const {
    AssertListed(asserts::kInfo132MediaType);
    return PrintInfo({});
}

NodePtr AudioQueue::GetInfoVariable() const {
    return KVXML::CreatePrintedNode(InfoText());
}

NodePtr AudioQueue::GetInfoVariableVersion132() const {
    return KVXML::CreatePrintedNode(InfoTextVersion132());
}

void AudioQueue::UpdateInfoVariable() {
    const auto publish = [&](std::uint32_t variable, std::string (AudioQueue::*print)() const) {
        if (!m_closed && m_variables)
            m_variables->SetVariable(kDriverDeviceId, kDriverDeviceId, variable, (this->*print)(), true);
    };
    publish(variables::kQueueInfoV2, &AudioQueue::InfoText);
    publish(variables::kQueueInfo, &AudioQueue::InfoTextVersion132);
}

std::string AudioQueue::OwnerName() const {
    return m_messaging ? m_messaging->GetDeviceName(m_owner) : "";
}

// Counts in the order in which songs were added, also while shuffle is on.
std::uint32_t AudioQueue::PublishedIndex(bool ofCurrent) {
    if (!m_shuffle)
        return m_currentIndex;
    return m_place.Get({ofCurrent, m_currentMedia.GetRevision(), m_songs.GetRevision()}, [&](const Place&) {
        const AudioMedia media = ofCurrent ? *m_currentMedia : AudioMedia();
        return static_cast<std::uint32_t>(std::find(m_songs->begin(), m_songs->end(), media) -
                                          m_songs->begin());
    });
}

template <class Content>
std::string AudioQueue::PrintStatus(const std::string& name, QueueState state, Content&& content) const {
    Printer printer;
    printer.Element("queue", [&] {
        printer.Value("id", m_queueId);
        printer.Value("name", name);
        PrintState(printer, state);
        content(printer);
        PrintRooms(printer);
    });
    return printer.Take();
}

NodePtr AudioQueue::GetStatusData() {
    // In this order: the question for the name may come back into the queue, and looking what comes next may
    // shuffle the list and go on in it.
    Status status{.name = OwnerName(), .state = m_state, .internetRadio = IsInternetRadio()};
    status.current = m_currentMedia.GetRevision();
    const std::string& song = m_songText.Get({status.current, status.internetRadio}, [&](const auto&) {
        Printer printer;
        PrintStatusMedia(printer, "song", *m_currentMedia, status.internetRadio);
        return printer.Take();
    });
    try {
        status.next = FindNextSong();
    } catch (const std::out_of_range&) {
        // A pin past the end of the list: there is no telling what comes next, and the other queues must
        // still show.
    }
    status.index = PublishedIndex(m_currentIndex != NO_SONG_INDEX);
    status.songs = m_songs.GetRevision();
    status.shuffled = m_shuffled.GetRevision();
    status.rooms = m_rooms.GetRevision();
    return m_status.Get(status, [&](const Status& shown) {
        return KVXML::CreatePrintedNode(PrintStatus(shown.name, shown.state, [&](Printer& printer) {
            printer.Finished(song);
            PrintStatusMedia(printer, "next", shown.next ? *shown.next : AudioMedia(), shown.internetRadio);
            printer.Value("index", shown.index);
        }));
    });
}

NodePtr AudioQueue::GetStatusDataVersion132() {
    Status132 status{.name = OwnerName(), .state = m_state};
    const bool outside = m_currentMedia->type == MEDIA_RHAPSODY_TRACK ||
                         m_currentMedia->type == MEDIA_RHAPSODY_CHANNEL ||
                         m_currentMedia->type == MEDIA_INTERNET_RADIO;
    status.item = outside ? kNoDatabaseId : m_currentMedia->mediaId;
    status.index = m_currentIndex == NO_SONG_INDEX ? NO_SONG_INDEX : PublishedIndex(true);
    status.rooms = m_rooms.GetRevision();
    return m_status132.Get(status, [&](const Status132& shown) {
        return KVXML::CreatePrintedNode(PrintStatus(shown.name, shown.state, [&](Printer& printer) {
            printer.Value("item", shown.item);
            printer.Value("index", shown.index);
        }));
    });
}

NodePtr AudioQueue::GetRoomMapData() {
    return m_roomMap.Get(GetStatusData(), [&](const NodePtr& status) {
        Printer printer;
        printer.Element("audioQueueInfo", [&] {
            printer.Finished(*status);
            for (const auto& [roomId, client] : *m_rooms) {
                printer.Element("roomInfo", [&, id = roomId, &endpoint = *client] {
                    printer.Attribute("roomId", id);
                    printer.Attribute("ip", endpoint.GetIpAddress());
                    printer.Attribute("port", endpoint.GetIpPort());
                    printer.Attribute("channel", endpoint.GetChannel());
                });
            }
        });
        return KVXML::CreatePrintedNode(printer.Take());
    });
}
