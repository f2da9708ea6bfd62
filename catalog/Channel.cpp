#include "Channel.h"

#include "Protocol.h"

namespace korvel::catalog {

using std::chrono::duration_cast;
using std::chrono::milliseconds;

Channel::Channel(std::vector<const Track*> tracks, Time start)
    : m_tracks(std::move(tracks)), m_started(start) {
    for (const Track* track : m_tracks)
        m_round += track->duration;
}

Channel::Place Channel::At(Time now) {
    // Whole rounds in one step: nobody may have asked for weeks.
    const auto rounds = duration_cast<milliseconds>(now - m_started) / m_round;
    if (rounds > 0) {
        m_started += rounds * m_round;
        m_turn += static_cast<std::uint32_t>(rounds) * static_cast<std::uint32_t>(m_tracks.size());
    }
    while (now - m_started >= m_tracks[m_index]->duration)
        Next(m_started + m_tracks[m_index]->duration);
    return {m_tracks[m_index], duration_cast<milliseconds>(now - m_started), m_turn};
}

Channel::Place Channel::GoOn(std::uint32_t endedTurn, Time now) {
    const Place place = At(now);
    if (place.turn == endedTurn)
        Next(now);
    else if (place.offset < kStartSlack)
        m_started = now;
    return At(now);
}

void Channel::Next(Time start) {
    m_started = start;
    m_index = (m_index + 1) % m_tracks.size();
    ++m_turn;
}

} // namespace korvel::catalog
