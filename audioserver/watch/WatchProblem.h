// What becomes of a watcher's request that cannot be done.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace korvel::audioserver {

enum class WatchProblem {
    kMalformed,
    kVersion,
    kUnknownStream,
    kNoMedia,
    kStale,
    kLive,
    kNotSeekable,
    kBeyondEnd,
    kSuperseded,
    kEnded,
    kFailed
};

struct WatchProblemText {
    WatchProblem problem;
    std::string_view code;
    // A sentence for people.
    std::string_view text;
};

// In the order of the enumeration.
inline constexpr std::array<WatchProblemText, 11> kWatchProblems{{
    {WatchProblem::kMalformed, "malformed", "the line is no request"},
    {WatchProblem::kVersion, "version", "this server speaks version 1"},
    {WatchProblem::kUnknownStream, "noStream", "there is no such stream"},
    {WatchProblem::kNoMedia, "noMedia", "nothing is loaded"},
    {WatchProblem::kStale, "stale", "the stream has another media by now"},
    {WatchProblem::kLive, "live", "a live source has no other place to go to"},
    {WatchProblem::kNotSeekable, "notSeekable", "this media cannot be moved"},
    {WatchProblem::kBeyondEnd, "beyondEnd", "the media is not so long"},
    {WatchProblem::kSuperseded, "superseded", "a newer seek has taken its place"},
    {WatchProblem::kEnded, "ended", "the media has ended or was replaced before"},
    {WatchProblem::kFailed, "failed", "the media could not be moved"},
}};

// A problem, and what more is known of it, "" for nothing.
struct WatchRefusal {
    WatchProblem problem = WatchProblem::kMalformed;
    std::string detail{};
};

} // namespace korvel::audioserver
