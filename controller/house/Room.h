#pragma once

#include <optional>
#include <string>

#include "house/Ids.h"
#include "house/Problem.h"

namespace korvel::controller {

// Rooms are the configuration's and stay the same as long as the controller runs. What one hears is a session's to say.
struct HouseRoom {
    RoomId id = 0;
    std::string name;
    Revision revision = Revision::None;
    std::optional<Problem> problem; // why nothing can be heard there
};

} // namespace korvel::controller
