// Pictures that lie beside the songs of a folder.
#pragma once

#include <string>

namespace korvel::media {

std::string LowerAscii(std::string text);

// How good a picture of the album a file of that name is: 0 is best, -1 is none.
int FolderPictureRank(const std::string& name);

} // namespace korvel::media
