#pragma once

#include <cstdint>

// The driver's variables, all XML documents but the play preference.
namespace variables {

inline constexpr std::uint32_t kRoomHistory = 1002;
inline constexpr std::uint32_t kRoomQueueSettings = 1003;
inline constexpr std::uint32_t kQueueStatus = 1004;
inline constexpr std::uint32_t kQueueInfo = 1005;
inline constexpr std::uint32_t kQueueStatusV2 = 1006;
inline constexpr std::uint32_t kQueueInfoV2 = 1007;
inline constexpr std::uint32_t kPlayPreference = 1008;
inline constexpr std::uint32_t kRoomMapInfo = 1009;

} // namespace variables
