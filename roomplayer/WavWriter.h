// Writes a WAV file that stays readable while it grows.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace korvel::roomplayer {

// 48 kHz, two channels, 16 bits. The sizes in the header are brought up to date about twice a second and at
// the end, so a file whose writer was killed lacks half a second at most. Past the 4 GiB that the format can
// tell, the file grows on and the header keeps the largest size.
class WavWriter {
public:
    // Creates or empties the file. Throws std::runtime_error with one line of text.
    explicit WavWriter(const std::string& path);
    ~WavWriter();
    WavWriter(const WavWriter&) = delete;
    WavWriter& operator=(const WavWriter&) = delete;

    // Appends little-endian samples. False when the file takes no more (disk full); it then keeps what it
    // has, and further calls do nothing.
    bool Append(std::span<const std::uint8_t> samples);

    // How long the recording is.
    std::chrono::milliseconds Length() const;

    // Appends silence until the recording is so long; one that is longer stays as it is. False as above.
    bool FillUpTo(std::chrono::milliseconds length);

private:
    bool WriteHeader();
    bool WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes);

    int m_file;
    std::uint64_t m_dataBytes = 0;
    std::uint64_t m_headerBytes = 0;
    bool m_failed = false;
};

} // namespace korvel::roomplayer
