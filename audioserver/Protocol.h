// The words, shapes and limits of the line protocol. docs/protocol.md is the page for readers; the parser,
// the formatter and the session take every constant from here, so that reading and writing cannot drift
// apart.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace korvel::audioserver {

// Every line that the server writes ends so. A reader of the server's lines counts on both characters.
inline constexpr std::string_view kLineEnd = "\r\n";

// Replies: "<n> OK <command> <stream>", "<n> NO <command> <stream>".
inline constexpr std::string_view kOk = "OK";
inline constexpr std::string_view kNo = "NO";

// First word of a line that answers no request.
inline constexpr std::string_view kEventMark = "*";

// Word before "=<stream>" in the answers to "addstr" and "addann".
inline constexpr std::string_view kStreamKey = "stream";

// An announcement's stream. The event "* SYS addann=<S>" comes right before every answer.
inline constexpr std::string_view kAnnouncement = "addann";

// Events of a stream's media: "* addmed EOM=<S>", "* addmed BAD=<S> <reason>".
inline constexpr std::string_view kEndOfMedia = "EOM";
inline constexpr std::string_view kBadMedia = "BAD";

// Reports of a stream: "* SYS STREAM=<S> <prefix><text>".
inline constexpr std::string_view kSystem = "SYS";
inline constexpr std::string_view kSystemStream = "STREAM";
inline constexpr std::string_view kStreamInfo = "streamInfo:";
inline constexpr std::string_view kStreamStatus = "streamStatus:";
inline constexpr std::string_view kStreamCaps = "streamCaps:";
inline constexpr std::string_view kStreamError = "ERROR:";

// Capability token of a source that cannot be paused.
inline constexpr std::string_view kNoPause = "NO-PAUSE";

// Stands for a command word that is missing or unprintable, so that a refusal always has its three words.
inline constexpr std::string_view kUnknownCommand = "unknown";

// References to media.
inline constexpr std::string_view kFileReference = "file:/";
inline constexpr std::string_view kWebReference = "stream-";
inline constexpr std::string_view kCatalogueReference = "rhap://";

enum class Command {
    kPing,
    kReset,
    kAddStream,
    kAddAnnouncement,
    kRemoveStream,
    kAddClient,
    kRemoveClient,
    kAddMedia,
    kRemoveMedia,
    kSetState,
    kEndOfStream
};

// What follows the command word.
enum class Arguments { kNone, kStream, kStreamAndClient, kStreamAndMedia, kStreamAndState };

struct CommandShape {
    std::string_view word;
    Command command;
    Arguments arguments;
};

inline constexpr std::array<CommandShape, 11> kCommands{{
    {"ping", Command::kPing, Arguments::kNone},
    {"reset", Command::kReset, Arguments::kNone},
    {"addstr", Command::kAddStream, Arguments::kNone},
    {kAnnouncement, Command::kAddAnnouncement, Arguments::kNone},
    {"remstr", Command::kRemoveStream, Arguments::kStream},
    {"addcli", Command::kAddClient, Arguments::kStreamAndClient},
    {"remcli", Command::kRemoveClient, Arguments::kStreamAndClient},
    {"addmed", Command::kAddMedia, Arguments::kStreamAndMedia},
    {"remmed", Command::kRemoveMedia, Arguments::kStream},
    {"setsta", Command::kSetState, Arguments::kStreamAndState},
    {"eos", Command::kEndOfStream, Arguments::kStream},
}};

enum class PlayState { kPlay, kPause, kStop };

struct PlayStateWord {
    std::string_view word;
    PlayState state;
};

inline constexpr std::array<PlayStateWord, 3> kPlayStates{{
    {"play", PlayState::kPlay},
    {"pause", PlayState::kPause},
    {"stop", PlayState::kStop},
}};

using StreamNumber = std::uint32_t;

inline constexpr StreamNumber kFirstStream = 1;
// In the event that comes with a refused "addann".
inline constexpr StreamNumber kNoStream = 0;
// Drivers keep this number for "no stream known yet": it is never given out.
inline constexpr StreamNumber kReservedStream = 4095;
// Drivers read the number as a signed 32-bit decimal.
inline constexpr StreamNumber kLastStream = 2147483647;

// Longest line accepted, without its end. A longer one is refused.
inline constexpr std::size_t kMaxLineBytes = 64UL * 1024;
// Bytes that may wait to go out on one connection. A peer that does not read is dropped.
inline constexpr std::size_t kMaxPendingBytes = 1024UL * 1024;
// From a line's first byte to its end, and from a connection's start to the end of its first line. A peer that
// takes longer is dropped.
inline constexpr std::chrono::milliseconds kLinePatience{30000};
// Connections at one time, and of one address. A further one takes the place of the one without streams that has
// said nothing for longest; when there is none, it is closed at once.
inline constexpr std::size_t kMaxConnections = 32;
inline constexpr std::size_t kMaxConnectionsPerAddress = 16;
// Watchers among them; a further one takes the place of the one that has said nothing for longest.
inline constexpr std::size_t kMaxWatchers = 8;
// Lines of a watcher, one after the other, that are no requests. With the next one it is dropped.
inline constexpr unsigned kMaxNonsense = 8;
// Streams of one connection; a further "addstr" or "addann" is refused.
inline constexpr std::size_t kMaxStreamsPerConnection = 64;
// Clients of one stream; a further "addcli" is refused.
inline constexpr std::size_t kMaxClientsPerStream = 64;
// Text of an event (reason, tags, status) is cut to this many bytes.
inline constexpr std::size_t kMaxEventTextBytes = 400;
// Readers take an event's text only when it is at least this long.
inline constexpr std::size_t kMinEventTextBytes = 2;
// Id of a track or channel in a reference to the catalogue.
inline constexpr std::size_t kMaxCatalogueIdBytes = 200;
// A command word longer than this is not echoed in a refusal.
inline constexpr std::size_t kMaxEchoedWordBytes = 32;

// A client takes RTP on its port and RTCP on the next.
inline constexpr std::uint16_t kRtcpPortOffset = 1;
inline constexpr std::uint16_t kFirstClientPort = 1;
inline constexpr std::uint16_t kLastClientPort = 65534;

} // namespace korvel::audioserver
