#include "FolderPicture.h"

#include <algorithm>
#include <array>

namespace korvel::media {

namespace {

constexpr std::array kPictureNames = {"folder.jpg", "cover.jpg",  "front.jpg", "folder.jpeg", "cover.jpeg",
                                      "front.jpeg", "folder.png", "cover.png", "front.png"};

} // namespace

std::string LowerAscii(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

int FolderPictureRank(const std::string& name) {
    const auto found = std::find(kPictureNames.begin(), kPictureNames.end(), LowerAscii(name));
    return found == kPictureNames.end() ? -1 : static_cast<int>(found - kPictureNames.begin());
}

} // namespace korvel::media
