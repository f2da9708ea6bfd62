// Numbers by which the controller and the driver know things.
#pragma once

#include <cstdint>

// The device id under which controllers know the digital-audio driver.
inline constexpr std::uint32_t kDriverDeviceId = 100002;

// What documents show in place of a media id for an item that the media database does not know.
inline constexpr std::uint32_t kNoDatabaseId = 268435440;

// Bindings. Those to audio servers and to media storages are families: the first of each stands in the
// driver's static definition, the driver offers the others.
namespace bindings {

inline constexpr std::uint32_t kControllerStorage = 2000;
inline constexpr std::uint32_t kFirstServer = 3000;
inline constexpr std::uint32_t kLastServer = 3500;
inline constexpr std::uint32_t kFirstStorage = 3501;
inline constexpr std::uint32_t kLastStorage = 3999;
inline constexpr std::uint32_t kClient = 4000;

} // namespace bindings
