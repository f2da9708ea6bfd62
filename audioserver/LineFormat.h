// Writes the server's lines. Every function returns one whole line with its end.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "audioserver/Protocol.h"

namespace korvel::audioserver {

// "<n> OK <command>[ <stream>]"
std::string OkLine(std::uint32_t sequence, std::string_view command, std::optional<StreamNumber> stream = {});

// "<n> NO <command>[ <stream>]"
std::string NoLine(std::uint32_t sequence, std::string_view command, std::optional<StreamNumber> stream = {});

// "<n> <command> stream=<S>": the answer to "addstr" and "addann".
std::string CreatedLine(std::uint32_t sequence, std::string_view command, StreamNumber stream);

// What comes before the answer to this command, in the same write: "* SYS addann=<S>" for "addann", nothing
// for any other. A driver does not take the answer to "addann" for an acknowledgement and would keep its
// next line back; the event is one.
std::string AnnouncementEvent(std::string_view command, StreamNumber stream = kNoStream);

// "* addmed EOM=<S>"
std::string EndOfMediaLine(StreamNumber stream);

// "* addmed BAD=<S> <reason>"; the reason is made one line of text that readers take.
std::string BadMediaLine(StreamNumber stream, std::string_view reason);

// "* SYS STREAM=<S> <prefix><text>"; the prefix is one of kStreamInfo, kStreamStatus, kStreamCaps,
// kStreamError.
std::string ReportLine(StreamNumber stream, std::string_view prefix, std::string_view text);

// One line of text out of any bytes: control characters become spaces, ends are trimmed, the length is cut
// to kMaxEventTextBytes without splitting a UTF-8 sequence.
std::string OneLine(std::string_view text);

} // namespace korvel::audioserver
