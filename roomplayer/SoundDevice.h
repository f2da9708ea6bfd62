// Where the sound goes.
#pragma once

#include "roomplayer/GstPointers.h"

namespace korvel::roomplayer {

// Whatever sink is put into the bin from now on follows the clock of the pipeline in steps too small to be heard: it
// offers no clock of its own, by which the rooms would drift apart, and does not wait until it is far off.
void FollowClock(GstElement* bin);

// The sound device, following the pipeline's clock, or a sink that discards at its pace: asked for, or for lack of
// a device.
// Throws std::runtime_error when GStreamer has neither.
ElementPtr MakeSoundDevice(bool wanted);

} // namespace korvel::roomplayer
