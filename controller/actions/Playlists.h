#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "library/MediaDatabase.h"

namespace korvel::controller {

// Saves a playlist of these songs of the library, in place of one of that title. Returns its id. Throws Refused for
// a song that is not there.
std::uint32_t SavePlaylist(media::MediaDatabase& database, const std::string& title,
                           const std::vector<std::uint32_t>& songs);

} // namespace korvel::controller
