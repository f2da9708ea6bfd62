// The ids under which the core and the driver know each other's parts.
#pragma once

#include <cstdint>

namespace korvel::controller {

inline constexpr std::uint32_t kDriverDeviceId = 100002;
// The storage device of the first music folder; the others follow.
inline constexpr std::uint32_t kFirstStorageDevice = 110001;
// The first line input; the others follow.
inline constexpr std::uint32_t kFirstInputDevice = 120001;
// The binding of the first audio server, part of the driver's definition; the driver offers those that
// follow.
inline constexpr std::uint32_t kFirstServerBinding = 3000;
inline constexpr std::uint32_t kServerBindingType = 6;

} // namespace korvel::controller
