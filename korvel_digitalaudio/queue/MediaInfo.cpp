#include "basics/Ids.h"
#include "platform/MediaManager.h"
#include "platform/Text.h"
#include "platform/XmlHelper.h"
#include "queue/AudioQueue.h"

using KVXML::INode;
using NodePtr = kv::auto_com<INode>;

namespace {

// Copies the text of a record's value, if it has one, base64-encoded where it may hold anything.
void CopyText(const INode& record, const char* value, INode& info, const char* tag) {
    std::string text;
    if (XmlHelper::fromXml(record, value, text))
        XmlHelper::toXml(text, info, tag);
}

void CopyEncoded(const INode& record, const char* value, INode& info, const char* tag) {
    std::string text;
    if (XmlHelper::fromXml(record, value, text))
        XmlHelper::toXml(kv::base64EncodeString(text), info, tag);
}

void DescribeTrack(INode& info, const DataTrackFull& track) {
    XmlHelper::toXml(track.album, info, "album");
    XmlHelper::toXml(track.artist, info, "artist");
    XmlHelper::toXml(track.name, info, "title");
    XmlHelper::toXml(kv::base64EncodeString(track.image), info, "img");
}

void DescribeSong(INode& info, const INode& record) {
    CopyText(record, "album_title", info, "album");
    if (INode* artist = record.FindChild("artist"))
        info.AppendChild(*artist);
    CopyText(record, "name", info, "title");
    CopyEncoded(record, "img", info, "img");
}

void DescribeStation(INode& info, const INode& record, const AudioMedia& media) {
    if (!media.metaData.empty()) {
        XmlHelper::toXml(media.metaData, info, "mediaidV2");
        XmlHelper::toXml(media.metaData, info, "title");
    }
    CopyText(record, "name", info, "channel");
    CopyEncoded(record, "genre", info, "genre");
    CopyEncoded(record, "img", info, "img");
}

} // namespace

void AudioQueue::UpdateRoomMediaVariable(const AudioMedia& media, const DataTrackFull* track, bool force) {
    if (m_closed)
        return;
    const std::string text = BuildMediaInfo(media, track)->ToText();
    if (const auto message = m_driverHelper.CreateMessage("UPDATE_MEDIA_INFO")) {
        message->AddParam("MEDIA_INFO", "STRING", text);
        if (force)
            message->AddParam("FORCE", "BOOLEAN", kv::TRUE_STRING);
        for (const std::uint32_t roomId : GetRoomIds()) {
            if (m_messaging && ContainsRoom(roomId))
                m_messaging->SendMessage(roomId, *message, nullptr);
        }
    }
    NotifyMediaChanged(text);
}

NodePtr AudioQueue::BuildMediaInfo(const AudioMedia& media, const DataTrackFull* track) {
    auto info = KVXML::CreateXmlNode("mediainfo");
    XmlHelper::toXml(m_driverHelper.GetDeviceId(), *info, "deviceid");
    XmlHelper::toXml(m_queueId, *info, "queueid");
    XmlHelper::toXml(PublishedSource(media), *info, "source");
    switch (media.type) {
        case MEDIA_DIGITAL:
            DescribeDigital(*info, media);
            break;
        case MEDIA_RHAPSODY_TRACK:
        case MEDIA_RHAPSODY_CHANNEL:
            DescribeRhapsody(*info, media, track);
            break;
        case MEDIA_INTERNET_RADIO:
            DescribeInternetRadio(*info, media);
            break;
        default:
            break;
    }
    return info;
}

void AudioQueue::DescribeDigital(INode& info, const AudioMedia& media) const {
    XmlHelper::toXml(media.mediaId, info, "mediaid");
    XmlHelper::toXml("SONG", info, "mediatype");
    if (media.mediaId == 0) {
        XmlHelper::toXml("", info, "display");
        return;
    }
    if (IsInternetRadio())
        XmlHelper::toXml("INTERNET_MEDIA", info, "mediatypeV2");
    auto* mediaManager = kv::GetService<IMediaManager>(m_instances);
    const NodePtr record = mediaManager ? mediaManager->GetMediaRecord(
                                              media.mediaId, IsInternetRadio() ? "BROADCAST_AUDIO" : "SONG")
                                        : nullptr;
    if (!record)
        return;
    if (IsInternetRadio())
        DescribeStation(info, *record, media);
    else
        DescribeSong(info, *record);
}

// Without a description of the track one is asked for; the answer describes the media again.
void AudioQueue::DescribeRhapsody(INode& info, const AudioMedia& media, const DataTrackFull* track) {
    const bool channel = media.type == MEDIA_RHAPSODY_CHANNEL;
    const std::string& trackId = channel ? media.metaData : media.externalId;
    XmlHelper::toXml(kNoDatabaseId, info, "mediaid");
    XmlHelper::toXml(trackId, info, "mediaidV2");
    XmlHelper::toXml("SONG", info, "mediatype");
    XmlHelper::toXml(channel ? "RHAPSODY_CHANNEL" : "RHAPSODY", info, "mediatypeV2");
    if (channel)
        XmlHelper::toXml(media.externalId, info, "stationid");
    if (media.externalId.empty())
        XmlHelper::toXml("", info, "display");
    else if (track)
        DescribeTrack(info, *track);
    else if (m_rhapsody && !trackId.empty())
        m_rhapsody->GetCurrentSongInfo(trackId, 0, m_rhapsodyCallback);
}

void AudioQueue::DescribeInternetRadio(INode& info, const AudioMedia& media) const {
    XmlHelper::toXml("SONG", info, "mediatype");
    XmlHelper::toXml("GENERIC_MEDIA", info, "mediatypeV2");
    XmlHelper::toXml(media.extra, info, "medSrcDev");
    XmlHelper::toXml(media.externalId, info, "stationid");
    if (!m_queueInfo.empty())
        XmlHelper::toXml(m_queueInfo, info, "queueInfo");
    XmlHelper::toXml(m_secondaryInfo.album, info, "album");
    XmlHelper::toXml(m_secondaryInfo.artist, info, "artist");
    XmlHelper::toXml(m_secondaryInfo.title, info, "title");
    XmlHelper::toXml("", info, "channel");
    if (!m_secondaryInfo.genre.empty())
        XmlHelper::toXml(kv::base64EncodeString(m_secondaryInfo.genre), info, "genre");
    if (!m_secondaryInfo.imageUrl.empty())
        XmlHelper::toXml(kv::base64EncodeString(m_secondaryInfo.imageUrl), info, "img");
}
