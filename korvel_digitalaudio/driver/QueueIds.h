#pragma once

#include <algorithm>
#include <cstdint>

// Ids of play queues: one counter for the whole driver that wraps, but never below the first id.
inline constexpr std::uint32_t kFirstQueueId = 10000;

inline std::uint32_t NextQueueId(std::uint32_t queueId) {
    return std::max(queueId + 1, kFirstQueueId);
}
