#include "roomplayer/OutputWatch.h"

#include <algorithm>

namespace korvel::roomplayer {

OutputWatch::Finding OutputWatch::Look(std::uint64_t played) {
    return played == m_played ? Idle() : Progress(played);
}

OutputWatch::Finding OutputWatch::Progress(std::uint64_t played) {
    m_played = played;
    m_idle = 0;
    if (!m_stalled || ++m_flowing < kPatience)
        return Finding::kNothingNew;
    m_stalled = false;
    m_patience = kPatience;
    return Finding::kRecovered;
}

OutputWatch::Finding OutputWatch::Idle() {
    m_flowing = 0;
    if (m_quiet > 0) {
        --m_quiet;
        return Finding::kNothingNew;
    }
    if (++m_idle < m_patience)
        return Finding::kNothingNew;
    m_stalled = true;
    m_patience = std::min(2 * m_patience, kMaxPatience);
    m_played = 0;
    m_idle = 0;
    m_quiet = m_quietAtStart;
    return Finding::kStalled;
}

} // namespace korvel::roomplayer
