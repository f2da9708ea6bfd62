#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace korvel::media {

struct CoverImage {
    std::string mimeType; // one of kCoverTypes
    std::string bytes;
};

// What browsers show.
inline constexpr std::array<std::string_view, 4> kCoverTypes = {"image/jpeg", "image/png", "image/gif",
                                                                "image/webp"};

// Larger pictures are treated as absent.
inline constexpr std::size_t kMaxCoverBytes = 16u << 20;

// The picture of the song in the file at `location`: the front cover (or else the first picture) in its tags,
// or else folder.jpg, cover.jpg, front.jpg or their .png beside it. None when there is no picture or the file
// cannot be read. Reads it here and now: for korvel-mediareader, which FileReader asks.
std::optional<CoverImage> ReadCover(const std::string& location);

} // namespace korvel::media
