// What every pipeline needs: making, finding and starting elements.
#pragma once

#include "roomplayer/GstPointers.h"

namespace korvel::roomplayer {

// Makes an element and hands it to the pipeline, which owns it from then on.
// Throws std::runtime_error when GStreamer has no such element.
GstElement* AddElement(GstElement* pipeline, const char* factory);

// Hands an element that was made, or was not, to the pipeline. `factory` is named when it was not made.
GstElement* AddElement(GstElement* pipeline, GstElement* made, const char* factory);

// Loads what makes an element, which takes long the first time.
// Throws std::runtime_error when GStreamer has no such element.
void LoadElement(const char* factory);

// A new reference to the first child made by the factory; null when there is none.
ElementPtr FindChild(GstElement* bin, const char* factory);

// Starts a pipeline that is stopped, on the system's clock.
//
// A pipeline left to itself gives its elements the clock first and the time at which it starts afterwards,
// one by one. An element with a thread of its own that wakes up in between reckons with a start at zero,
// finds itself late by the machine's whole uptime, and may end for good. Here every element knows the time
// of the start before it gets the clock.
// Returns whether the pipeline plays, or is about to.
bool StartPlaying(GstElement* pipeline);

} // namespace korvel::roomplayer
