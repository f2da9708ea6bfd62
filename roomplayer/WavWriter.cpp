#include "roomplayer/WavWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace korvel::roomplayer {
namespace {

constexpr std::uint32_t kRate = 48000;
constexpr std::uint16_t kChannels = 2;
constexpr std::uint16_t kSampleBits = 16;
constexpr std::uint16_t kFrameBytes = kChannels * kSampleBits / 8;
constexpr std::size_t kHeaderBytes = 44;
constexpr std::uint64_t kHeaderPeriodBytes = std::uint64_t{kRate} * kFrameBytes / 2;
constexpr std::uint64_t kMaxDataBytes = std::numeric_limits<std::uint32_t>::max() - kHeaderBytes;

class HeaderBuilder {
public:
    HeaderBuilder& Text(const char* four) {
        m_next = std::copy_n(four, 4, m_next);
        return *this;
    }
    HeaderBuilder& Number(std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            *m_next++ = static_cast<std::uint8_t>(value >> (8 * i));
        return *this;
    }
    const std::array<std::uint8_t, kHeaderBytes>& Bytes() const { return m_bytes; }

private:
    std::array<std::uint8_t, kHeaderBytes> m_bytes{};
    std::array<std::uint8_t, kHeaderBytes>::iterator m_next = m_bytes.begin();
};

} // namespace

WavWriter::WavWriter(const std::string& path)
    : m_file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)) {
    if (m_file < 0)
        throw std::runtime_error("cannot record to " + path + ": " + std::strerror(errno));
    if (!WriteHeader()) {
        const std::string reason = std::strerror(errno);
        ::close(m_file);
        throw std::runtime_error("cannot record to " + path + ": " + reason);
    }
}

WavWriter::~WavWriter() {
    WriteHeader();
    ::close(m_file);
}

bool WavWriter::Append(std::span<const std::uint8_t> samples) {
    if (m_failed)
        return false;
    if (!WriteAt(kHeaderBytes + m_dataBytes, samples)) {
        m_failed = true;
        return false;
    }
    m_dataBytes += samples.size();
    if (m_dataBytes - m_headerBytes >= kHeaderPeriodBytes)
        WriteHeader();
    return true;
}

std::chrono::milliseconds WavWriter::Length() const {
    return std::chrono::milliseconds(m_dataBytes / kFrameBytes * 1000 / kRate);
}

bool WavWriter::FillUpTo(std::chrono::milliseconds length) {
    const std::uint64_t bytes = static_cast<std::uint64_t>(length.count()) * kRate / 1000 * kFrameBytes;
    if (m_failed || bytes <= m_dataBytes)
        return !m_failed;
    // What a file is lengthened by reads as zeros, which are silence.
    if (::ftruncate(m_file, static_cast<off_t>(kHeaderBytes + bytes)) != 0) {
        m_failed = true;
        return false;
    }
    m_dataBytes = bytes;
    WriteHeader();
    return true;
}

bool WavWriter::WriteHeader() {
    m_headerBytes = m_dataBytes;
    const auto size = static_cast<std::uint32_t>(std::min(m_dataBytes, kMaxDataBytes));
    HeaderBuilder header;
    header.Text("RIFF").Number(size + static_cast<std::uint32_t>(kHeaderBytes - 8), 4).Text("WAVE");
    header.Text("fmt ").Number(16, 4).Number(1, 2).Number(kChannels, 2).Number(kRate, 4);
    header.Number(kRate * kFrameBytes, 4).Number(kFrameBytes, 2).Number(kSampleBits, 2);
    header.Text("data").Number(size, 4);
    return WriteAt(0, header.Bytes());
}

bool WavWriter::WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::pwrite(m_file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
        offset += static_cast<std::uint64_t>(written);
    }
    return true;
}

} // namespace korvel::roomplayer
