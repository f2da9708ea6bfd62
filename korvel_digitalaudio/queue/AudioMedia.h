#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/MediaManager.h"

// Codes of AudioMedia::type. Other values can come from commands and are carried along.
enum AudioMediaType : std::int32_t {
    MEDIA_NONE = 0,             // the empty item
    MEDIA_DIGITAL = 1,          // a song of the media database
    MEDIA_RHAPSODY_TRACK = 2,   // a track of the streaming service
    MEDIA_RHAPSODY_CHANNEL = 3, // a channel of the streaming service
    MEDIA_RESERVED = 4,         // listed, but never streamed
    MEDIA_INTERNET_RADIO = 5    // an internet radio stream
};

// One item of a play queue; a plain value.
struct AudioMedia {
    std::int32_t type = MEDIA_NONE;
    std::string externalId;    // track or station id in an outside catalogue
    std::uint32_t mediaId = 0; // id in the media database
    std::string metaData;      // what a stream says that it is playing
    std::uint32_t extra = 0;   // the device that an internet radio item comes from

    static AudioMedia CreateTypeDigital(std::uint32_t mediaId) {
        AudioMedia media;
        media.type = MEDIA_DIGITAL;
        media.mediaId = mediaId;
        return media;
    }
    // An item of the streaming service's or another catalogue.
    static AudioMedia CreateExternal(std::int32_t type, const std::string& externalId) {
        AudioMedia media;
        media.type = type;
        media.externalId = externalId;
        return media;
    }
    static AudioMedia FromItem(const MediaItem& item) {
        AudioMedia media;
        media.type = item.type;
        media.externalId = item.externalId;
        media.mediaId = item.mediaId;
        media.extra = item.extra;
        return media;
    }
    MediaItem ToItem() const { return {type, externalId, mediaId, extra}; }

    // The metadata is left out: it changes while a stream plays, and the item must still be found in its
    // list.
    bool operator==(const AudioMedia& other) const {
        return mediaId == other.mediaId && type == other.type && extra == other.extra &&
               externalId == other.externalId;
    }

    // What documents show as the source: the type, which is a signed number as commands can bring in any. On
    // an internet radio queue every item is a stream.
    std::int32_t ShownSource(bool internetRadio) const {
        return internetRadio ? std::int32_t{MEDIA_INTERNET_RADIO} : type;
    }
};

inline std::vector<AudioMedia> FromItems(const std::vector<MediaItem>& items) {
    std::vector<AudioMedia> media;
    media.reserve(items.size());
    for (const MediaItem& item : items)
        media.push_back(AudioMedia::FromItem(item));
    return media;
}
