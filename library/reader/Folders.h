#pragma once

#include <dirent.h>

#include <string>
#include <vector>

#include "library/FileReader.h"

namespace korvel::media {

FileReader::Answer<FileStatus> LookAt(const std::string& path);
FileReader::Answer<std::vector<FolderEntry>> ListFolder(const std::string& path);
// What an entry of the folder is, also where the file system does not tell it with the name.
FileType TypeOf(const std::string& folder, const dirent& entry);

} // namespace korvel::media
