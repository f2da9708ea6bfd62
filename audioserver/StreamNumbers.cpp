#include "audioserver/StreamNumbers.h"

#include <algorithm>
#include <cstdint>

namespace korvel::audioserver {

StreamNumbers::StreamNumbers(StreamNumber first) : m_next(first) {}

StreamNumber StreamNumbers::FirstAt(std::chrono::system_clock::time_point start) {
    using std::chrono::milliseconds;
    const auto time = std::chrono::floor<milliseconds>(start.time_since_epoch()).count();
    // A clock that was never set may stand before its epoch.
    const auto ticks = static_cast<std::uint64_t>(std::max<std::int64_t>(time, 0)) * kPerSecond / 1000;
    return static_cast<StreamNumber>(kFirstStream + ticks % kLastStream);
}

StreamNumber StreamNumbers::Take() {
    for (;;) {
        const StreamNumber number = m_next;
        m_next = number >= kLastStream ? kFirstStream : number + 1;
        if (number != kReservedStream && m_inUse.insert(number).second)
            return number;
    }
}

void StreamNumbers::Release(StreamNumber number) {
    m_inUse.erase(number);
}

} // namespace korvel::audioserver
