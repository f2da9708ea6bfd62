#pragma once

#include <cstdint>
#include <string>

namespace korvel::controller {

// A line input of the audio server.
struct LineInput {
    std::uint32_t albumId = 0; // of the album that stands for it in the media database
    std::uint32_t deviceId = 0;
    std::string name;
};

} // namespace korvel::controller
