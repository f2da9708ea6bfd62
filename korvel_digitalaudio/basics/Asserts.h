// The places that assertion records name. Field reports are matched by these numbers, so a number stays with
// its place when code moves.
#pragma once

#include "platform/System.h"

namespace asserts {

inline constexpr const char* kDriverPath = "korvel_digitalaudio/kvw/korvel_digitalaudio";
inline constexpr const char* kQueuePath = "korvel_digitalaudio/kvw/AudioQueue";
inline constexpr const char* kServerPath = "korvel_digitalaudio/kvw/AudioServer";
inline constexpr const char* kServerUtilityPath = "korvel_digitalaudio/kvw/ServerUtility";
inline constexpr const char* kPacketPath = "korvel_digitalaudio/kvw/ASPacket";

// In kDriverPath.
inline constexpr int kRoomInfoName = 463;
inline constexpr int kEditRootName = 610;
inline constexpr int kEditSource = 638;
inline constexpr int kAddSongRadio = 898;
inline constexpr int kAddSongSource = 901;
inline constexpr int kRemoveSongSource = 1077;
inline constexpr int kSongListRootName = 1134;
inline constexpr int kSongListSource = 1188;
inline constexpr int kNoMp3Storage = 1385;
inline constexpr int kSavePlaylistParams = 1766;
inline constexpr int kNoInUseQueue = 2410;
inline constexpr int kSelectedRadio = 2655;
inline constexpr int kDeselectedNoQueue = 2790;
inline constexpr int kSettingsElement = 3348;
inline constexpr int kErrorElement = 3363;

// In kQueuePath.
inline constexpr int kPreviousIndex = 402;
inline constexpr int kInfoMediaType = 1180;
inline constexpr int kInfo132MediaType = 1231;

// In kServerPath.
inline constexpr int kRemovedQueueHasRooms = 368;
inline constexpr int kServerErrorElement = 535;

// In kServerUtilityPath.
inline constexpr int kUnknownTimer = 74;

// In kPacketPath.
inline constexpr int kNoMediaServices = 212;

} // namespace asserts
