// What a stream is and does, as those who watch it are told.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "audioserver/LineParser.h"
#include "audioserver/PlayPosition.h"

namespace korvel::audioserver {

enum class StreamState {
    kStopped, // nothing is loaded
    kConnecting,
    kBuffering, // no sound at the moment, and some is there already
    kPlaying,
    kPaused,
    kReconnecting,
    kEnded, // the media has been played to its end
    kBad    // the media could not be played, or not to its end
};

struct StreamFacts {
    // As the request named it, in UTF-8; "" for none. The one that ended or was bad, too.
    std::string media;
    // Counts what was given to the stream, so that the same media twice is told apart; 0 before the first.
    std::uint64_t serial = 0;
    StreamState state = StreamState::kStopped;
    // None without a source, and where it says nothing: of a live one.
    std::optional<PlayPosition::Point> position;
    // In milliseconds, where it is known and has a meaning.
    std::optional<std::uint64_t> duration;
    // How much of its store an internet stream has, in percent.
    std::optional<unsigned> buffer;
    bool live = false;
    bool canSeek = false;
    // Why it is bad or is connected to again, "" else.
    std::string error;
    std::vector<ClientAddress> clients;
};

} // namespace korvel::audioserver
