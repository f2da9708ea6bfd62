// How a pipeline starts to play.
#pragma once

#include <gst/gst.h>

namespace korvel::audioserver {

// Starts a pipeline that is stopped, on the clock that it chooses itself.
//
// A pipeline left to itself gives its elements the clock first and the time at which it starts afterwards,
// one by one. An element with a thread of its own that wakes up in between, such as a mixer in an input's
// description, reckons with a start at zero, finds itself late by the machine's whole uptime, and may end
// for good. Here every element knows the time of the start before it gets the clock.
// Returns whether the pipeline plays, or is about to.
bool StartPlaying(GstElement* pipeline);

} // namespace korvel::audioserver
