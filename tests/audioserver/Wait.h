// Waiting for conditions, never for time.
#pragma once

#include <chrono>
#include <functional>

namespace korvel::tests {

// Generous: only a failing test waits so long.
inline constexpr std::chrono::milliseconds kPatience{15000};

// Looks at the condition again and again until it holds. Returns false when it did not within the patience.
bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds patience = kPatience);

// Waits until the descriptor can be read. Returns false when it could not within the patience.
bool WaitReadable(int descriptor, std::chrono::milliseconds patience = kPatience);

} // namespace korvel::tests
