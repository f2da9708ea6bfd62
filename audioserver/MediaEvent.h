// What happens to the media of a stream.
#pragma once

#include <functional>
#include <string>

namespace korvel::audioserver {

struct MediaEvent {
    enum class Kind {
        kReady,     // the first sound is decoded
        kDrained,   // the last sound has been sent
        kFailed,    // text is the reason
        kFinite,    // it has a length
        kBroadcast, // it has no length
        kStation,   // the same, and says that it goes on for ever
        kMoved,     // it is at the place that StartAt() named
        kPlaying,   // sound is given out, for the first time or after a starvation
        kStarved,   // it gives no sound at the moment
        kTags,      // text is what the source says it plays
        kStatus     // text is "connecting", "buffering N%" or "playing"
    };

    Kind kind = Kind::kFailed;
    std::string text;
};

// Takes an event. Called from GStreamer's threads: an implementation only passes the event on.
using MediaNotify = std::function<void(MediaEvent)>;

} // namespace korvel::audioserver
