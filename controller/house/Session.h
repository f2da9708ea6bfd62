// A queue and the rooms that hear it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "house/Entry.h"
#include "house/Playhead.h"

namespace korvel::controller {

enum class SessionState {
    Stopped,
    Playing, // with the audio server's word for it
    Paused,
    Ended,        // its last entry is over
    Buffering,    // it is to play, and nothing can be heard yet
    Reconnecting, // its audio server or its station is away and is waited for
    Sleeping,     // nothing but the house knows of it
};

// What the driver says of a queue.
enum class Transport { Stopped, Playing, Paused, Ended };

// What an audio server says of the stream that plays a session.
struct StreamWord {
    enum class State { Idle, Buffering, Playing, Paused, Reconnecting };

    State state = State::Idle;
    std::optional<Milliseconds> duration{}; // none for what has none, or where it is not known yet
    bool live = false;                      // it cannot be paused
    bool canSeek = false;

    friend bool operator==(const StreamWord&, const StreamWord&) = default;
};

// What can be done with a session now.
struct Abilities {
    bool canPause = false;
    bool canSeek = false;
    bool canSkip = false;

    friend bool operator==(const Abilities&, const Abilities&) = default;
};

// Where a session is: in the driver, waiting for its audio server to come back, or in the house alone.
enum class Presence { Live, Waiting, Asleep };

struct Session {
    SessionId id = SessionId::None;
    Revision revision = Revision::None;
    Revision entriesRevision = Revision::None; // of the last change of `entries`
    Presence presence = Presence::Asleep;
    std::vector<RoomId> rooms; // ascending; of a sleeping one those that heard it last
    Transport transport = Transport::Stopped;
    std::optional<StreamWord> stream; // none while no audio server tells of it
    Entries entries;
    EntryId current = EntryId::None;
    Playhead playhead;
    bool shuffle = false;
    bool repeat = false;
    std::optional<Problem> problem; // why it does not play, where it is not by somebody's wish

    SessionState GetState() const;
    Abilities GetAbilities() const;
    // Null when there is none, or it has gone.
    const Entry* FindEntry(EntryId entry) const;
    // Whether what it plays neither ends nor can be skipped.
    bool PlaysAlone() const;
};

} // namespace korvel::controller
