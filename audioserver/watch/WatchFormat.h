// Writes the lines to watchers. Every function returns one whole line with its end.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "audioserver/Protocol.h"
#include "audioserver/StreamFacts.h"
#include "audioserver/watch/WatchProblem.h"

namespace korvel::audioserver {

// Of what is spoken here.
inline constexpr std::uint64_t kWatchVersion = 1;

// `run`: of the server, another after each start.
// `streams`: whose lines follow.
std::string HelloLine(const std::string& run, PlayPosition::Time now,
                      const std::vector<StreamNumber>& streams);

std::string StreamLine(StreamNumber stream, const StreamFacts& facts);

std::string GoneLine(StreamNumber stream);

std::string PongLine(std::uint64_t number, PlayPosition::Time now);

std::string DoneLine(std::uint64_t id);

// `id`: of the request, where it had one that could be read.
std::string ProblemLine(std::optional<std::uint64_t> id, const WatchRefusal& refusal);

} // namespace korvel::audioserver
