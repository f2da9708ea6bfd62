// The words that begin a request (word, path) and an answer.
#pragma once

namespace korvel::media::words {

inline constexpr const char* kHello = "hello";
inline constexpr const char* kTags = "tags";
inline constexpr const char* kPicture = "picture";
inline constexpr const char* kSound = "sound";
inline constexpr const char* kLook = "look";
inline constexpr const char* kList = "list";

inline constexpr const char* kDone = "done";       // and what was asked for
inline constexpr const char* kNoAudio = "noaudio"; // and why
inline constexpr const char* kRefused = "refused"; // and why

} // namespace korvel::media::words
