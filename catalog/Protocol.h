// The words, numbers and limits of the catalogue's protocol; docs/catalog.md is the page for readers.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace korvel::catalog {

inline constexpr std::uint16_t kDefaultPort = 5555;

// What a failed request is answered with: the service's result codes.
enum class Code : std::int32_t {
    kNotAvailable = 2,
    kTooManySessions = 4,
    kInvalidTrack = 6,
    kTooLong = 7,
    kInvalidData = 10
};

// A media id with this in front names a channel and not a track.
inline constexpr const char* kChannelPrefix = "channel-";

// Longest request, without its end. A longer one is skipped and refused.
inline constexpr std::size_t kMaxRequestBytes = 4096;
// Tracks in one answer; whoever asks for more asks again with an offset.
inline constexpr std::size_t kMaxTracksPerReply = 500;
// Connections at one time, and of one address; a further one takes the place of the one that has been idle for
// longest, or is closed at once.
inline constexpr std::size_t kMaxConnections = 32;
inline constexpr std::size_t kMaxConnectionsPerAddress = 16;
// From a request's first byte to its end. A peer that takes longer is dropped.
inline constexpr std::chrono::milliseconds kLinePatience{30000};
// Bytes that may wait to go out on one connection. A peer that does not read is dropped.
inline constexpr std::size_t kMaxPendingBytes = 1u << 20;
// Streams with something playing, over all connections.
inline constexpr std::size_t kMaxSessions = 1024;

// The audio server and whoever asks what a stream plays hear of the stream at the same moment: a question
// that comes first waits for so long, and so many of one connection at a time.
inline constexpr std::chrono::milliseconds kPlayingPatience{2000};
inline constexpr std::size_t kMaxWaiting = 64;

// Whoever comes to a track so little after its beginning hears it from there.
inline constexpr std::chrono::milliseconds kStartSlack{2000};

} // namespace korvel::catalog
