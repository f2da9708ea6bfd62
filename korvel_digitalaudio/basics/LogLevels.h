#pragma once

// What the lines of the driver's log are about.
namespace log_levels {

inline constexpr int kLink = 3;    // the link to the audio servers, and what it fails in
inline constexpr int kQueue = 6;   // queues and the selection of sources
inline constexpr int kOutside = 7; // what others got wrong: a setup, a command, the streaming service

} // namespace log_levels
