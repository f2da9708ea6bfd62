// Threads that must not be late.
#pragma once

#include <gst/gst.h>

namespace korvel::roomplayer {

// Each thread in which sound of the pipeline flows comes before all ordinary work of the machine from now on, where
// the system allows it (common/RealTime.h), and is an ordinary one again when it has left the pipeline. To be called
// before the pipeline is started; takes the sync handler of its bus.
// `ordinary`: an element of the pipeline whose own thread stays an ordinary one; null for none.
void MakeRealTime(GstElement* pipeline, const GstElement* ordinary);

} // namespace korvel::roomplayer
