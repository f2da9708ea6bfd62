#pragma once

// What the lines of the driver's log are about.
namespace log_levels {

inline constexpr int kLink = 3;    // the link to the audio servers
inline constexpr int kFailed = 3;  // what failed, or should not have happened
inline constexpr int kQueue = 6;   // queues and the selection of sources
inline constexpr int kOutside = 7; // a wrong setup, a search for nothing, the streaming service's errors

} // namespace log_levels
