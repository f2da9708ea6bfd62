#pragma once

#include <cstdint>

// The device id under which controllers know the digital-audio driver.
inline constexpr std::uint32_t kDriverDeviceId = 100002;
