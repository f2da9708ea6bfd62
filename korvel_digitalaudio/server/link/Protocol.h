// Words and numbers of the line protocol that an audio server speaks.
#pragma once

#include <cstdint>

namespace protocol {

// The stream number that means: the audio server has not assigned one yet.
inline constexpr std::uint32_t kNoStream = 4095;

inline constexpr const char* kReset = "reset";
inline constexpr const char* kAddStream = "addstr";
inline constexpr const char* kAddAnnouncement = "addann";
inline constexpr const char* kRemoveStream = "remstr";
inline constexpr const char* kAddClient = "addcli";
inline constexpr const char* kRemoveClient = "remcli";
inline constexpr const char* kAddMedia = "addmed";
inline constexpr const char* kRemoveMedia = "remmed";
inline constexpr const char* kSetState = "setsta";
inline constexpr const char* kEndOfStream = "eos";
inline constexpr const char* kSystem = "SYS";

inline constexpr const char* kOk = "OK";
inline constexpr const char* kNo = "NO";
inline constexpr const char* kBad = "BAD";
inline constexpr const char* kEndOfMedia = "EOM";
inline constexpr const char* kStreamReport = "STREAM";

// What the text of a stream's report begins with.
inline constexpr const char* kStreamInfo = "streamInfo:";
inline constexpr const char* kStreamStatus = "streamStatus:";
inline constexpr const char* kStreamCaps = "streamCaps:";
inline constexpr const char* kStreamError = "ERROR:";
inline constexpr const char* kNoPause = "NO-PAUSE"; // among the capabilities: the stream cannot be paused

inline constexpr const char* kEvent = "*"; // stands in place of the number of an unsolicited line
inline constexpr const char* kLineEnd = "\r\n";

} // namespace protocol
