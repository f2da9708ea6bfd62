// The one sample format between the decoding and the sending half of a stream.
#pragma once

#include <cstddef>
#include <cstdint>

namespace korvel::audioserver {

inline constexpr int kSampleRate = 48000;
inline constexpr int kChannels = 2;
inline constexpr std::size_t kFrameBytes = 4;
inline constexpr const char* kPcmCaps =
    "audio/x-raw,format=S16BE,layout=interleaved,rate=48000,channels=2,channel-mask=(bitmask)0x3";

// The longest packet that AES67 receivers are bound to take: 192 frames, 768 bytes, one Ethernet frame.
inline constexpr std::uint64_t kPacketMilliseconds = 4;
inline constexpr std::size_t kPacketFrames = kSampleRate * kPacketMilliseconds / 1000;
inline constexpr std::size_t kPacketBytes = kPacketFrames * kFrameBytes;

} // namespace korvel::audioserver
