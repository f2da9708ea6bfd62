// How the command handlers read their parameters.
#pragma once

#include <string>

#include "platform/CmdMessage.h"
#include "platform/Text.h"

namespace commands {

// A flag: any number but 0 is true; `fallback` when the parameter is absent.
inline bool ReadFlag(const ICmdMessage& message, const std::string& name, bool fallback) {
    return message.HasParam(name) ? message.GetNumber(name) != 0 : fallback;
}

// The flags of the commands that add media.
struct AddFlags {
    explicit AddFlags(const ICmdMessage& message)
        : playNow(ReadFlag(message, "PLAY_NOW", true)),
          playNext(ReadFlag(message, "PLAY_NEXT", false)),
          clear(ReadFlag(message, "CLEAR", false)) {}

    // What a queue that plays a single stream does with any new media.
    void ForceAll() { playNow = playNext = clear = true; }

    bool playNow;
    bool playNext;
    bool clear;
};

} // namespace commands
