// What the pipeline of a source knows of its media. Each may wait for a disk or a server: asked in the source's thread.
#pragma once

#include <gst/gst.h>

#include "audioserver/MediaEvent.h"

namespace korvel::audioserver {

// kFinite, kBroadcast or kStation. May wait for a playlist that is just being fetched.
// `head`: the element of the pipeline that reads and decodes.
MediaEvent::Kind LengthOf(GstElement* pipeline, GstElement* head);

MediaAbilities AbilitiesOf(GstElement* pipeline);

} // namespace korvel::audioserver
