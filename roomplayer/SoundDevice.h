// Where the sound goes.
#pragma once

#include <string>

#include "roomplayer/GstPointers.h"

namespace korvel::roomplayer {

struct SoundDevice {
    ElementPtr element;
    // The kind of sink that takes the sound, such as "alsasink"; or "none: " and the reason why the sound is
    // discarded, at the pace of the clock. One line.
    std::string output;
};

// The sound device; or, when it is not wanted or there is none that can be opened, a sink that discards. Logs which.
// Throws std::runtime_error when GStreamer has neither.
SoundDevice OpenSoundDevice(bool wanted);

} // namespace korvel::roomplayer
