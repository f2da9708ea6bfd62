// Makes real music files.
#pragma once

#include <cstdint>
#include <map>
#include <string>

// A mono WAV file of silence.
std::string WavBytes(std::uint32_t milliseconds = 100);

// Encodes a second of a tone with an encoder and muxer of GStreamer ("flacenc"). False when that does not
// work.
bool Encode(const std::string& elements, const std::string& path);

// Writes tags ("TITLE", "ARTIST", "ALBUM", ...) into a file. False when it takes none.
bool Tag(const std::string& path, const std::map<std::string, std::string>& tags);

// The bytes of a picture that is told apart by `mark`.
std::string JpegBytes(const std::string& mark);
enum class PictureSide { kFront, kBack };
// Puts a picture into the tags of a file, behind those that are there. False when it takes none.
bool AddPicture(const std::string& path, const std::string& bytes, PictureSide side = PictureSide::kFront);
