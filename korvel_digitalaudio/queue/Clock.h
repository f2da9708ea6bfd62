#pragma once

#include <cstdint>

// The monotonic clock in milliseconds, wrapping at 32 bits.
std::uint32_t MonotonicMilliseconds();
