#pragma once

#include <cstddef>

#include "platform/CmdMessage.h"

namespace korvel::controller {

// Bytes of a list of media, such as a queue's new order.
inline constexpr std::size_t kMaxListBytes = 1u << 20;
// Bytes of a text that is neither a list nor a reference to media.
inline constexpr std::size_t kMaxTextBytes = 64UL * 1024;

// Looks at what a command brings from outside, before any of it is kept: what the parameters name may stand in the
// lines of an audio server later. References to media, also within a list, are such (common::IsReference), and every
// other text is without control characters. Throws Refused for the first that is not.
void CheckParameters(const ICmdMessage& command);

} // namespace korvel::controller
