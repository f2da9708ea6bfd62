// Reads one line of a watcher.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "audioserver/Protocol.h"

namespace korvel::audioserver {

struct WatchGreeting {
    std::uint64_t version = 0;
};

struct WatchPing {
    std::uint64_t number = 0;
};

struct WatchSeek {
    std::uint64_t id = 0; // repeated in the answer
    StreamNumber stream = 0;
    // Of the media that is meant; none for the one that is there.
    std::optional<std::uint64_t> serial{};
    std::uint32_t position = 0; // milliseconds
};

struct WatchStart {
    std::uint64_t id = 0;
    StreamNumber stream = 0;
    std::string media{}; // as the line that starts it will name it
    std::uint32_t position = 0;
};

// A line that is no request.
struct WatchNonsense {
    // Where it is readable.
    std::optional<std::uint64_t> id{};
    // What is wrong.
    std::string reason{};
};

using WatchRequest = std::variant<WatchGreeting, WatchPing, WatchSeek, WatchStart, WatchNonsense>;

// Whether a connection whose first line this is watches; a driver's line never begins so.
bool IsWatchLine(std::string_view line);

// Reads one line, given without its end. Members that it does not know are passed over. Never throws for bad input.
WatchRequest ParseWatchLine(std::string_view line);

} // namespace korvel::audioserver
