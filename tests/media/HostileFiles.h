// Files that are made to harm whoever reads them.
#pragma once

#include <cstddef>
#include <string>

// An MP4 file of `depth` atoms, each in the one before.
std::string NestedAtoms(std::size_t depth);

// An MP3 file: an ID3 tag with a title of so many bytes, and a few frames of silence.
std::string Mp3WithTitle(std::size_t bytes);
