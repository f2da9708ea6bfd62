#include "audioserver/StreamNumbers.h"

namespace korvel::audioserver {

StreamNumbers::StreamNumbers(StreamNumber first) : m_next(first) {}

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
