#pragma once

#include <iosfwd>

#include "platform/IDriver.h"
#include "replay/Checker.h"
#include "replay/Script.h"

namespace korvel::replay {

// Plays a script's input lines to a new driver in a new world. With `echo`, the transcript is written there
// while it runs. ScriptError names the line that cannot be played.
RunLines Play(const Script& script, CreationFunc create, std::ostream* echo = nullptr);

} // namespace korvel::replay
