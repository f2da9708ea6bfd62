// What the program that reads files answers, as values.
#pragma once

#include <optional>
#include <vector>

#include "Records.h"
#include "library/FileReader.h"

namespace korvel::media {

// Each takes a record that begins with words::kDone. False when no reader would say so: texts are missing or
// too long, a number or a name is none. `value` is of no use then.
bool ReadAnswer(const Record& answer, FileTags& value);
bool ReadAnswer(const Record& answer, std::optional<CoverImage>& value);
bool ReadAnswer(const Record& answer, SoundFile& value);
bool ReadAnswer(const Record& answer, FileStatus& value);
bool ReadAnswer(const Record& answer, std::vector<FolderEntry>& value);

} // namespace korvel::media
