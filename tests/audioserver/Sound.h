// Tones: written into files, found in recordings.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace korvel::tests {

// Tones are multiples of 50 Hz, so that a slice of 20 ms holds whole periods and tells them apart exactly.
struct Tone {
    int hertz; // 0 for silence
    double seconds;
};

// A 16-bit PCM WAV of the tones one after the other, on all channels.
std::string WavOf(const std::vector<Tone>& tones, int rate = 48000, int channels = 2);

void WriteFile(const std::string& path, const std::string& bytes);

// What a player recorded, read as far as it goes while it grows.
class Recording {
public:
    explicit Recording(std::string path);

    // Seconds recorded so far.
    double Length() const;

    // Seconds in which nothing but this tone is heard; 0 for silence. Edges of a tone are not counted.
    double Seconds(int hertz) const;

    // What was recorded so far on the left, from -1 to 1.
    std::vector<double> Samples() const;

    // The tones in the order in which they are heard, each for at least a tenth of a second; 0 for
    // silence after the first tone. Slices with anything else are left out.
    std::vector<int> Order(const std::vector<int>& candidates) const;

private:
    std::string m_path;
};

} // namespace korvel::tests
