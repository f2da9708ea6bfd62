#include "basics/Ids.h"
#include "platform/MediaManager.h"
#include "platform/Text.h"
#include "platform/XmlPrinter.h"
#include "queue/AudioQueue.h"

using KVXML::INode;
using KVXML::Printer;

namespace {

// Copies the text of a record's value, if it has one.
void CopyText(const INode& record, const char* value, Printer& info, const char* tag) {
    if (const INode* element = record.FindChild(value))
        info.Value(tag, element->GetText());
}

// The same, base64-encoded, for a value that may hold anything.
void CopyEncoded(const INode& record, const char* value, Printer& info, const char* tag) {
    if (const INode* element = record.FindChild(value))
        info.Value(tag, kv::base64EncodeString(element->GetText()));
}

void DescribeTrack(Printer& info, const DataTrackFull& track) {
    info.Value("album", track.album);
    info.Value("artist", track.artist);
    info.Value("title", track.name);
    info.Value("img", kv::base64EncodeString(track.image));
}

void DescribeSong(Printer& info, const INode& record) {
    CopyText(record, "album_title", info, "album");
    if (const INode* artist = record.FindChild("artist"))
        info.Finished(*artist);
    CopyText(record, "name", info, "title");
    CopyEncoded(record, "img", info, "img");
}

void DescribeStation(Printer& info, const INode& record, const AudioMedia& media) {
    if (!media.metaData.empty()) {
        info.Value("mediaidV2", media.metaData);
        info.Value("title", media.metaData);
    }
    CopyText(record, "name", info, "channel");
    CopyEncoded(record, "genre", info, "genre");
    CopyEncoded(record, "img", info, "img");
}

} // namespace

void AudioQueue::UpdateRoomMediaVariable(const AudioMedia& media, const DataTrackFull* track, bool force) {
    if (m_closed)
        return;
    const AudioMedia shown = media; // which may stand in the list, and services may change that
    const std::string text = PrintMediaInfo(shown, track);
    if (const auto message = m_driverHelper.CreateMessage("UPDATE_MEDIA_INFO")) {
        message->AddParam("MEDIA_INFO", "STRING", text);
        if (force)
            message->AddParam("FORCE", "BOOLEAN", kv::TRUE_STRING);
        for (const std::uint32_t roomId : GetRoomIds()) {
            if (m_messaging && !m_closed && ContainsRoom(roomId))
                m_messaging->SendMessage(roomId, *message, nullptr);
        }
    }
    NotifyMediaChanged(text);
}

std::string AudioQueue::PrintMediaInfo(const AudioMedia& media, const DataTrackFull* track) const {
    Printer info;
    info.Element("mediainfo", [&] {
        info.Value("deviceid", m_driverHelper.GetDeviceId());
        info.Value("queueid", m_queueId);
        info.Value("source", media.ShownSource(IsInternetRadio()));
        switch (media.type) {
            case MEDIA_DIGITAL:
                DescribeDigital(info, media);
                break;
            case MEDIA_RHAPSODY_TRACK:
            case MEDIA_RHAPSODY_CHANNEL:
                DescribeRhapsody(info, media, track);
                break;
            case MEDIA_INTERNET_RADIO:
                DescribeInternetRadio(info, media);
                break;
            default:
                break;
        }
    });
    return info.Take();
}

void AudioQueue::DescribeDigital(Printer& info, const AudioMedia& media) const {
    info.Value("mediaid", media.mediaId);
    info.Value("mediatype", "SONG");
    if (media.mediaId == 0) {
        info.Value("display", "");
        return;
    }
    if (IsInternetRadio())
        info.Value("mediatypeV2", "INTERNET_MEDIA");
    auto* mediaManager = kv::GetService<IMediaManager>(m_instances);
    const kv::auto_com<INode> record =
        mediaManager
            ? mediaManager->GetMediaRecord(media.mediaId, IsInternetRadio() ? "BROADCAST_AUDIO" : "SONG")
            : nullptr;
    if (!record)
        return;
    if (IsInternetRadio())
        DescribeStation(info, *record, media);
    else
        DescribeSong(info, *record);
}

// Without a description of the track one is asked for; the answer describes the media again.
void AudioQueue::DescribeRhapsody(Printer& info, const AudioMedia& media, const DataTrackFull* track) const {
    const bool channel = media.type == MEDIA_RHAPSODY_CHANNEL;
    const std::string& trackId = channel ? media.metaData : media.externalId;
    info.Value("mediaid", kNoDatabaseId);
    info.Value("mediaidV2", trackId);
    info.Value("mediatype", "SONG");
    info.Value("mediatypeV2", channel ? "RHAPSODY_CHANNEL" : "RHAPSODY");
    if (channel)
        info.Value("stationid", media.externalId);
    if (media.externalId.empty())
        info.Value("display", "");
    else if (track)
        DescribeTrack(info, *track);
    else if (m_rhapsody && !trackId.empty())
        m_rhapsody->GetCurrentSongInfo(trackId, 0, m_rhapsodyCallback);
}

void AudioQueue::DescribeInternetRadio(Printer& info, const AudioMedia& media) const {
    info.Value("mediatype", "SONG");
    info.Value("mediatypeV2", "GENERIC_MEDIA");
    info.Value("medSrcDev", media.extra);
    info.Value("stationid", media.externalId);
    if (!m_queueInfo.empty())
        info.Value("queueInfo", m_queueInfo);
    info.Value("album", m_secondaryInfo.album);
    info.Value("artist", m_secondaryInfo.artist);
    info.Value("title", m_secondaryInfo.title);
    info.Value("channel", "");
    if (!m_secondaryInfo.genre.empty())
        info.Value("genre", kv::base64EncodeString(m_secondaryInfo.genre));
    if (!m_secondaryInfo.imageUrl.empty())
        info.Value("img", kv::base64EncodeString(m_secondaryInfo.imageUrl));
}
