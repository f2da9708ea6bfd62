// The lines of a transcript by what they tell.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "basics/Variables.h"

namespace outputs {

// What a test calls one of the driver's variables.
inline std::string VariableName(std::uint32_t id) {
    static const std::map<std::uint32_t, std::string> names = {
        {variables::kRoomHistory, "roomHistory"}, {variables::kRoomQueueSettings, "roomSettings"},
        {variables::kQueueStatus, "oldStatus"},   {variables::kQueueStatusV2, "status"},
        {variables::kQueueInfo, "oldInfo"},       {variables::kQueueInfoV2, "info"},
        {variables::kRoomMapInfo, "roomMap"},     {variables::kPlayPreference, "playPreference"}};
    return names.at(id);
}

// The line that gives the variable this text.
inline std::string Set(std::uint32_t variable, const std::string& text) {
    return "< set " + std::to_string(variable) + " " + text;
}

} // namespace outputs
