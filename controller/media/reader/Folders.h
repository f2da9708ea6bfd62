#pragma once

#include <string>
#include <vector>

#include "media/FileReader.h"

namespace korvel::media {

FileReader::Answer<FileStatus> LookAt(const std::string& path);
FileReader::Answer<std::vector<FolderEntry>> ListFolder(const std::string& path);

} // namespace korvel::media
