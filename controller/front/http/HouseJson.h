// The house in JSON; docs/api.md describes it.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <span>

#include "house/House.h"
#include "library/MediaDatabase.h"

namespace korvel::controller {

nlohmann::json ToJson(const HouseRoom& room, const House& house);
// Without its entries but the one that plays: they may be thousands.
nlohmann::json ToJson(const Session& session, media::MediaDatabase& library);
nlohmann::json ToJson(std::span<const Entry> entries, media::MediaDatabase& library);

} // namespace korvel::controller
