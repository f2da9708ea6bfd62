// What happens to the media of a stream.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace korvel::audioserver {

// What can be done with a media, as far as its source knows.
struct MediaAbilities {
    // Of the whole media; none when nobody knows.
    std::optional<std::uint64_t> milliseconds{};
    // Whether it can be moved to a place.
    bool seekable = false;
};

struct MediaEvent {
    enum class Kind {
        kReady,     // the first sound is decoded
        kDrained,   // the last sound has been sent
        kFailed,    // text is the reason
        kFinite,    // it has a length
        kBroadcast, // it has no length
        kStation,   // the same, and says that it goes on for ever
        kMoved,     // it is at the place that StartAt() named; or not, then text is the reason
        kAbilities, // what it can
        kLonger,    // its length may have become another
        kRuns,      // its position is another than was to be expected
        kPlaying,   // sound is given out, for the first time or after a starvation
        kStarved,   // it gives no sound at the moment
        kTags,      // text is what the source says it plays
        kStatus     // text is "connecting", "buffering N%" or "playing", and percent may be known
    };

    Kind kind = Kind::kFailed;
    std::string text;
    // How much of the reserve is there.
    std::optional<unsigned> percent{};
    MediaAbilities abilities{};
};

// Takes an event. Called from GStreamer's threads: an implementation only passes the event on.
using MediaNotify = std::function<void(MediaEvent)>;

} // namespace korvel::audioserver
