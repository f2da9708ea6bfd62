#pragma once

#include <string>

namespace korvel::media {

enum class SoundFile {
    Sound,     // as far as its header tells
    NoSound,   // of none of the formats that are known, broken, or nothing but a header
    Unreadable // not there, no file, or not to be opened
};

// Whether the file holds sound. Reads it here and now: for korvel-mediareader, which FileReader asks.
// Never throws because of what is in the file.
SoundFile LookForSound(const std::string& location);

} // namespace korvel::media
