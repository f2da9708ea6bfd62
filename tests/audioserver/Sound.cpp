#include "Sound.h"

#include <cmath>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <numbers>
#include <span>

namespace korvel::tests {
namespace {

constexpr int kRate = 48000;
constexpr std::size_t kFrameBytes = 4;
constexpr std::size_t kHeaderBytes = 44;
constexpr std::size_t kSliceFrames = kRate / 50;
constexpr double kSliceSeconds = 1.0 / 50;
constexpr double kLevel = 0.5;
constexpr double kSilencePower = 1e-7;
constexpr double kPureShare = 0.95;
constexpr std::size_t kMinRunSlices = 5;

void AppendNumber(std::string& bytes, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<char>(value >> (8 * i) & 0xffU));
}

double Power(std::span<const double> slice) {
    double sum = 0;
    for (const double sample : slice)
        sum += sample * sample;
    return sum / static_cast<double>(slice.size());
}

// Power of one frequency in the slice (Goertzel).
double PowerAt(std::span<const double> slice, int hertz) {
    const double turn = 2 * std::cos(2 * std::numbers::pi * hertz / kRate);
    double last = 0;
    double before = 0;
    for (const double sample : slice) {
        const double next = sample + turn * last - before;
        before = last;
        last = next;
    }
    const auto count = static_cast<double>(slice.size());
    return 2 * (last * last + before * before - turn * last * before) / (count * count);
}

bool Holds(std::span<const double> slice, int hertz) {
    const double power = Power(slice);
    if (hertz == 0)
        return power < kSilencePower;
    return power >= kSilencePower && PowerAt(slice, hertz) > kPureShare * power;
}

std::vector<std::span<const double>> Slices(const std::vector<double>& samples) {
    std::vector<std::span<const double>> slices;
    for (std::size_t at = 0; at + kSliceFrames <= samples.size(); at += kSliceFrames)
        slices.emplace_back(samples.data() + at, kSliceFrames);
    return slices;
}

} // namespace

std::string WavOf(const std::vector<Tone>& tones, int rate, int channels) {
    std::string data;
    for (const Tone& tone : tones) {
        const int frames = static_cast<int>(tone.seconds * rate);
        for (int frame = 0; frame < frames; ++frame) {
            const double value = kLevel * std::sin(2 * std::numbers::pi * tone.hertz * frame / rate);
            for (int channel = 0; channel < channels; ++channel)
                AppendNumber(data, static_cast<std::uint32_t>(std::lround(value * 32767)), 2);
        }
    }
    const auto frameBytes = static_cast<std::uint32_t>(2 * channels);
    std::string wav = "RIFF";
    AppendNumber(wav, static_cast<std::uint32_t>(data.size() + kHeaderBytes - 8), 4);
    wav += "WAVEfmt ";
    AppendNumber(wav, 16, 4);
    AppendNumber(wav, 1, 2);
    AppendNumber(wav, static_cast<std::uint32_t>(channels), 2);
    AppendNumber(wav, static_cast<std::uint32_t>(rate), 4);
    AppendNumber(wav, static_cast<std::uint32_t>(rate) * frameBytes, 4);
    AppendNumber(wav, frameBytes, 2);
    AppendNumber(wav, 16, 2);
    wav += "data";
    AppendNumber(wav, static_cast<std::uint32_t>(data.size()), 4);
    return wav + data;
}

void WriteFile(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

Recording::Recording(std::string path) : m_path(std::move(path)) {}

std::vector<double> Recording::Samples() const {
    std::ifstream file(m_path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    std::vector<double> samples;
    for (std::size_t at = kHeaderBytes; at + kFrameBytes <= bytes.size(); at += kFrameBytes) {
        const auto low = static_cast<unsigned char>(bytes[at]);
        const auto high = static_cast<unsigned char>(bytes[at + 1]);
        samples.push_back(static_cast<std::int16_t>(low | high << 8) / 32768.0);
    }
    return samples;
}

double Recording::Length() const {
    return static_cast<double>(Samples().size()) / kRate;
}

double Recording::Seconds(int hertz) const {
    const std::vector<double> samples = Samples();
    double seconds = 0;
    for (const auto slice : Slices(samples))
        seconds += Holds(slice, hertz) ? kSliceSeconds : 0;
    return seconds;
}

std::vector<int> Recording::Order(const std::vector<int>& candidates) const {
    const std::vector<double> samples = Samples();
    std::vector<int> order;
    int running = -1;
    std::size_t run = 0;
    for (const auto slice : Slices(samples)) {
        for (const int hertz : candidates) {
            if (!Holds(slice, hertz))
                continue;
            run = hertz == running ? run + 1 : 1;
            running = hertz;
            const bool leadingSilence = order.empty() && hertz == 0;
            if (run == kMinRunSlices && !leadingSilence && (order.empty() || order.back() != hertz))
                order.push_back(hertz);
        }
    }
    return order;
}

} // namespace korvel::tests
