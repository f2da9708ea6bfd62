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

// Whatever sink is put into the bin from now on follows the clock of the pipeline in steps too small to be heard: it
// offers no clock of its own, by which the rooms would drift apart, and does not wait until it is far off.
void FollowClock(GstElement* bin);

// The sound device, following the pipeline's clock; or, when it is not wanted or there is none that can be opened, a
// sink that discards. Logs which.
// Throws std::runtime_error when GStreamer has neither.
SoundDevice OpenSoundDevice(bool wanted);

} // namespace korvel::roomplayer
