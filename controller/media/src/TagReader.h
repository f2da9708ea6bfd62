#pragma once

#include <taglib/fileref.h>
#include <taglib/tfile.h>

#include <string>
#include <vector>

#include "media/ScanRecords.h"

namespace korvel::media {

enum class TagOutcome {
    Song,
    NoAudio,   // there is nothing in the file that could be played
    Unreadable // the file could not be opened: may be different another time
};

// What a file tells of its sound; null when there is nothing in it that could be played. Belongs to the file.
const TagLib::AudioProperties* AudioOf(const TagLib::FileRef& reference);

// Reads the tags of a file; what they do not tell is taken from its path. `scanned` keeps its id, file stamp
// and device. Never throws because of what is in the file.
TagOutcome ReadTags(const std::string& location, ScannedSong& scanned);

// A picture in the tags of a file.
struct TagPicture {
    TagLib::ByteVector bytes;
    bool isFrontCover = false;
};
std::vector<TagPicture> ReadPictures(TagLib::File& file);

} // namespace korvel::media
