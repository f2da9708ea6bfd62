#pragma once

#include <taglib/fileref.h>
#include <taglib/tfile.h>

#include <string>
#include <vector>

#include "library/FileReader.h"

namespace korvel::media {

// What a file tells of its sound; null when there is nothing in it that could be played. Belongs to the file.
const TagLib::AudioProperties* AudioOf(const TagLib::FileRef& reference);

// Reads the tags of a file: Done, NoAudio or Unreadable. Never throws because of what is in the file.
FileReader::Answer<FileTags> ReadTags(const std::string& path);

// A picture in the tags of a file.
struct TagPicture {
    TagLib::ByteVector bytes;
    bool isFrontCover = false;
};
std::vector<TagPicture> ReadPictures(TagLib::File& file);

} // namespace korvel::media
