#pragma once

#include <optional>
#include <string>

namespace korvel::media {

struct CoverImage {
    std::string mimeType; // "image/jpeg" or "image/png" or another image type
    std::string bytes;
};

// Larger pictures are treated as absent.
inline constexpr std::size_t kMaxCoverBytes = 16u << 20;

// The picture of the song in the file at `location`: the front cover (or else the first picture) in its tags,
// or else folder.jpg, cover.jpg, front.jpg or their .png beside it. None when there is no picture or the file
// cannot be read. Reads it here and now: for korvel-mediareader, which FileReader asks.
std::optional<CoverImage> ReadCover(const std::string& location);

} // namespace korvel::media
