#pragma once

#include "FuzzCore.h"

namespace fuzz {

// Calls one entry of the driver, chosen and filled from the core's data. With `inTimers`, none that the timer
// manager or the streaming service may not make from within one of their own calls.
void RunEntry(FuzzCore& core, bool inTimers);

} // namespace fuzz
