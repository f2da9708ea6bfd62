// What the scanner and the media database exchange.
#pragma once

#include <cstdint>
#include <string>

#include "library/MediaRecords.h"

namespace korvel::media {

// A file as a scan left it. A file whose size or time differ must be read again.
struct FileStamp {
    std::uint32_t songId = 0; // 0 for a broken file
    std::string location;
    std::uint32_t deviceId = 0;
    std::uint64_t fileSize = 0;
    std::int64_t fileTimeNs = 0;
    bool hasImage = false;
    Presence presence = Presence::Here;
    std::string reason; // why a broken file is broken
};

// A song that a scan has read. `song.id` is that of the song before, or 0 for a new one.
struct ScannedSong {
    SongRecord song;
    // What tells albums of one title apart: the album artist or, without one, the folder.
    std::string albumGroup;
    bool hasImage = false;
};

} // namespace korvel::media
