// Where the sound goes.
#pragma once

#include "roomplayer/GstPointers.h"

namespace korvel::roomplayer {

// The sound device, or a sink that discards at the pace of the clock: asked for, or for lack of a device.
// Throws std::runtime_error when GStreamer has neither.
ElementPtr MakeSoundDevice(bool wanted);

} // namespace korvel::roomplayer
