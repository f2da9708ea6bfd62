// Log lines on stderr, one per event worth knowing.
#pragma once

#include <string_view>

namespace korvel::roomplayer {

/// Writes "korvel-roomplayer: <text>" as one line. Callable from any thread.
void Log(std::string_view text);

} // namespace korvel::roomplayer
