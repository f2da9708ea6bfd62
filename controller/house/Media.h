// What can stand in a queue.
#pragma once

#include <string>

namespace korvel::controller {

enum class MediaKind {
    Song,    // of the library, by its id
    Track,   // of the streaming service, by its reference
    Channel, // of the streaming service: one track after the other, without end
    Station, // internet radio, by its id in the library, or by the reference that it was added with
    Input,   // a line input, by its name
    Unknown, // of the driver's other types; it never plays
};

// A kind that plays alone, without an end, and cannot be skipped within its queue.
constexpr bool PlaysAlone(MediaKind kind) {
    return kind == MediaKind::Channel || kind == MediaKind::Station || kind == MediaKind::Input;
}

// Names a media. Two entries of a queue may name the same.
struct MediaRef {
    MediaKind kind = MediaKind::Unknown;
    std::string id; // at most 2,000 bytes, no control characters; "" when only the kind is known

    friend bool operator==(const MediaRef&, const MediaRef&) = default;
};

} // namespace korvel::controller
