#include "house/Session.h"

#include <algorithm>

namespace korvel::controller {

namespace {

// What is heard of a session that the driver plays. Without an audio server that tells, the driver's word counts.
SessionState Heard(const std::optional<StreamWord>& stream) {
    if (!stream)
        return SessionState::Playing;
    switch (stream->state) {
        case StreamWord::State::Idle:
            return SessionState::Stopped; // it says that it plays, and has nothing to play
        case StreamWord::State::Buffering:
            return SessionState::Buffering;
        case StreamWord::State::Reconnecting:
            return SessionState::Reconnecting;
        case StreamWord::State::Playing:
        case StreamWord::State::Paused:
            break;
    }
    return SessionState::Playing;
}

} // namespace

SessionState Session::GetState() const {
    if (presence == Presence::Asleep)
        return SessionState::Sleeping;
    if (presence == Presence::Waiting)
        return SessionState::Reconnecting;
    switch (transport) {
        case Transport::Stopped:
            return SessionState::Stopped;
        case Transport::Paused:
            return SessionState::Paused;
        case Transport::Ended:
            return SessionState::Ended;
        case Transport::Playing:
            break;
    }
    return Heard(stream);
}

Abilities Session::GetAbilities() const {
    if (presence != Presence::Live)
        return {};
    const bool onStage = transport == Transport::Playing || transport == Transport::Paused;
    const bool live = PlaysAlone() || (stream && stream->live);
    return {.canPause = transport == Transport::Playing && !live,
            .canSeek = onStage && stream && stream->canSeek && !live,
            .canSkip = !PlaysAlone() && !entries.empty()};
}

const Entry* Session::FindEntry(EntryId entry) const {
    const auto found =
        std::find_if(entries.begin(), entries.end(), [entry](const Entry& one) { return one.id == entry; });
    return found == entries.end() ? nullptr : &*found;
}

bool Session::PlaysAlone() const {
    return !entries.empty() && controller::PlaysAlone(entries.front().media.kind);
}

} // namespace korvel::controller
