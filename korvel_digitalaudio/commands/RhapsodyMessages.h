#pragma once

#include <array>
#include <string>

#include "basics/Ids.h"

// Texts for the results of calls of the streaming service, by result number; "{0}" stands for the service's
// name.
namespace rhapsody {

inline constexpr std::array<const char*, 19> kMessages = {
    "Success",
    "End of track reached.",
    "Data not available.",
    "Communications error.",
    "Maximum number of {0} sessions for this account.",
    "Please close session and try again.",
    "The specified track is invalid.",
    "The input string was too large.",
    "{0} service connection failed.",
    "Unexpected error.  Please try again.",
    "Invalid data.",
    "Invalid {0} account name.",
    "Invalid {0} password.",
    "Unexpected error.  Please try again.",
    "Expired {0} account.",
    "{0} service error.",
    "Network error.",
    "{0} off line.",
    "Account in use on another device - this session will end.",
};

// Reserved media texts: local files, and items of the service where only numbers can stand.
inline constexpr const char* kLocalMedia = "RAD MP3";
inline const std::string kTrackMediaId = std::to_string(kNoDatabaseId);
inline constexpr const char* kChannelMediaId = "268435442";

} // namespace rhapsody
