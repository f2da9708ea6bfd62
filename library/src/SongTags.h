#pragma once

#include "library/FileReader.h"
#include "library/ScanRecords.h"

namespace korvel::media {

// Makes the song's texts of the tags; what they do not tell is taken from song.location.
void TakeTags(const FileTags& tags, ScannedSong& scanned);

} // namespace korvel::media
