// Threads that must not be late.
#pragma once

namespace korvel::common {

// Schedules the calling thread, and those that it starts, before all ordinary work of the machine, where the system
// allows it: RLIMIT_RTPRIO, of which the hard limit counts. Where not, it runs like any other, and the log says so,
// once in the program's life.
// Returns whether it is allowed.
bool MakeThreadRealTime();

// Takes that back, for a thread that goes on to other work.
void MakeThreadOrdinary();

} // namespace korvel::common
