// Files that are made to harm whoever reads them.
#pragma once

#include <cstddef>
#include <string>

// An MP4 file of `depth` atoms, each in the one before.
std::string NestedAtoms(std::size_t depth);

// What a few hundred thousand of them do to the program that reads them. The sanitizers end it themselves.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr const char* kNestedAtomsEnd = "the reader ended with status 1";
#elif defined(__SANITIZE_THREAD__)
inline constexpr const char* kNestedAtomsEnd = "the reader ended with status 66";
#else
inline constexpr const char* kNestedAtomsEnd = "the reader was killed by SIGSEGV";
#endif

// An MP3 file: an ID3 tag with a title of so many bytes, and that many frames of silence.
std::string Mp3WithTitle(std::size_t bytes, int frames = 50);
