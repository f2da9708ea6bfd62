#include "Wait.h"

#include <poll.h>

namespace korvel::tests {

bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds patience) {
    constexpr int kLookMilliseconds = 10;
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        ::poll(nullptr, 0, kLookMilliseconds);
    }
    return true;
}

bool WaitReadable(int descriptor, std::chrono::milliseconds patience) {
    pollfd entry{descriptor, POLLIN, 0};
    return ::poll(&entry, 1, static_cast<int>(patience.count())) > 0;
}

} // namespace korvel::tests
