// Threads that must not be late.
#pragma once

#include <gst/gst.h>

namespace korvel::roomplayer {

// Each thread in which sound of the pipeline flows is scheduled before all ordinary work of the machine from
// now on, where the system allows it (RLIMIT_RTPRIO); where not, it runs like any other. To be called before
// the pipeline is started; takes the sync handler of its bus.
void MakeRealTime(GstElement* pipeline);

} // namespace korvel::roomplayer
