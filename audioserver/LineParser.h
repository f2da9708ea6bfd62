// Reads one request line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "audioserver/Protocol.h"

namespace korvel::audioserver {

// Where a client listens: a numeric IPv4 or IPv6 address and its RTP port, 1 to 65534 (RTCP takes the next
// one).
struct ClientAddress {
    std::string ip;
    std::uint16_t port = 0;

    auto operator<=>(const ClientAddress&) const = default;
};

// A well-formed request. Only the members that the command's Arguments name are set.
struct Request {
    std::uint32_t sequence = 0;
    Command command = Command::kReset;
    StreamNumber stream = 0;
    ClientAddress client;
    PlayState state = PlayState::kStop;
    // Media text as it came: quoted reference or bare input name. Never empty.
    std::string media;
};

// What a malformed line leaves for its refusal.
struct Refusal {
    // 0 when the line had no readable number.
    std::uint32_t sequence = 0;
    // The command word, or kUnknownCommand when it is missing, too long or unprintable.
    std::string command;
    // The stream argument when there was a readable one.
    std::optional<StreamNumber> stream;
};

// Reads one line, given without its end. Words are separated by one or more spaces; leading and trailing
// spaces are ignored. Numbers are plain decimal. Never throws for bad input: whatever is not a request is a
// Refusal.
std::variant<Request, Refusal> ParseLine(std::string_view line);

// What the refusal of a line repeats when only its beginning is known, because it is too long.
Refusal RefuseLine(std::string_view beginning);

// The word of a command, as it stands in replies.
std::string_view CommandWord(Command command);

} // namespace korvel::audioserver
