// What those are told who watch a stream.
#include "audioserver/StreamFacts.h"

#include "audioserver/Stream.h"

namespace korvel::audioserver {

StreamFacts Stream::Look() const {
    StreamFacts facts;
    facts.media = m_text;
    facts.serial = m_serial;
    facts.state = State();
    facts.live = IsLive();
    facts.canSeek = CanSeek();
    facts.error = m_error;
    facts.clients.assign(m_clients.begin(), m_clients.end());
    if (m_loaded && m_isWebPlace && m_media)
        facts.buffer = m_fill.value_or(0);
    if (!m_media || facts.live)
        return facts;
    facts.position = m_media->Feed()->GetPosition().Get();
    if (m_abilities)
        facts.duration = m_abilities->milliseconds;
    return facts;
}

StreamState Stream::State() const {
    if (!m_loaded)
        return m_end;
    if (m_paused)
        return StreamState::kPaused;
    if (m_sounds)
        return StreamState::kPlaying;
    if (m_lost)
        return StreamState::kReconnecting;
    return m_played || m_fill ? StreamState::kBuffering : StreamState::kConnecting;
}

bool Stream::IsLive() const {
    return m_loaded && (m_broadcast || m_mediaKind == MediaReference::Kind::kInput ||
                        (m_catalogueMedia && m_catalogueMedia->turn));
}

bool Stream::CanSeek() const {
    return m_abilities && m_abilities->seekable && m_abilities->milliseconds && !IsLive();
}

} // namespace korvel::audioserver
