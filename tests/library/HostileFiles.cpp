#include "HostileFiles.h"

#include <cstdint>

namespace {

std::string Big(std::size_t value) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8)
        text += static_cast<char>((value >> shift) & 0xFF);
    return text;
}

// Seven bits a byte, as the sizes in the head of an ID3 tag.
std::string Syncsafe(std::size_t value) {
    std::string text;
    for (int shift = 21; shift >= 0; shift -= 7)
        text += static_cast<char>((value >> shift) & 0x7F);
    return text;
}

} // namespace

std::string NestedAtoms(std::size_t depth) {
    std::string bytes = Big(16) + "ftypM4A " + Big(0);
    for (std::size_t left = depth; left > 0; --left)
        bytes += Big(8 * left) + "moov";
    return bytes;
}

std::string Mp3WithTitle(std::size_t bytes, int frames) {
    // Version 2.3: the frame's size takes all bits. The text is Latin-1.
    const std::string frame = "TIT2" + Big(bytes + 1) + std::string(3, '\0') + std::string(bytes, 't');
    std::string file = std::string("ID3\x03\0\0", 6) + Syncsafe(frame.size()) + frame;
    // MPEG 1 layer III, 128 kbit/s, 44.1 kHz: 417 bytes a frame.
    for (int i = 0; i < frames; ++i)
        file += std::string("\xFF\xFB\x90\x00", 4) + std::string(413, '\0');
    return file;
}
