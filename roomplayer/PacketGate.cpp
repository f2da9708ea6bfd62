#include "roomplayer/PacketGate.h"

#include <arpa/inet.h>

#include <algorithm>

namespace korvel::roomplayer {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kIpv4Bytes = 4;
constexpr unsigned kVersion = 2;
// The version alone: no padding, no extension, no contributors.
constexpr unsigned kPlainHeader = kVersion << 6;
constexpr std::size_t kRtpHeaderBytes = 12;
constexpr std::size_t kRtpTimestampOffset = 4;
constexpr std::size_t kRtpStreamOffset = 8;
constexpr unsigned kPayloadTypeMask = 0x7f;

constexpr std::size_t kRtcpHeaderBytes = 4;
constexpr std::size_t kRtcpStreamOffset = 4;
constexpr unsigned kCountMask = 0x1f;
constexpr unsigned kPaddingBit = 0x20;
constexpr unsigned kSenderReport = 200;
constexpr unsigned kReceiverReport = 201;
constexpr unsigned kDescription = 202;
constexpr unsigned kBye = 203;
constexpr std::size_t kSenderReportBytes = 28;
constexpr std::size_t kReceiverReportBytes = 8;

std::uint32_t NumberAt(Bytes bytes, std::size_t offset) {
    return std::uint32_t{bytes[offset]} << 24 | std::uint32_t{bytes[offset + 1]} << 16 |
           std::uint32_t{bytes[offset + 2]} << 8 | std::uint32_t{bytes[offset + 3]};
}

// What an audio server sends, and nothing else.
bool IsRoomPacket(Bytes packet) {
    return packet.size() > kRtpHeaderBytes && packet[0] == kPlainHeader &&
           (packet[1] & kPayloadTypeMask) == PacketGate::kPayloadType;
}

// Whether one part of a report speaks of the stream and of nothing else. Reports about what the server
// hears, application data and feedback are no business of a room.
bool SpeaksOf(std::uint32_t stream, Bytes part) {
    const unsigned count = part[0] & kCountMask;
    const unsigned kind = part[1];
    if (part.size() < kRtcpStreamOffset + 4 || NumberAt(part, kRtcpStreamOffset) != stream)
        return false;
    switch (kind) {
        case kSenderReport:
            return count == 0 && part.size() >= kSenderReportBytes;
        case kReceiverReport:
            return count == 0 && part.size() >= kReceiverReportBytes;
        case kDescription:
        case kBye:
            return count == 1;
        default:
            return false;
    }
}

// Every part in turn; lengths are in words of four bytes, without the first.
bool SpeaksOnlyOf(std::uint32_t stream, Bytes packet) {
    if (packet.empty())
        return false;
    while (!packet.empty()) {
        if (packet.size() < kRtcpHeaderBytes || packet[0] >> 6 != kVersion || (packet[0] & kPaddingBit) != 0)
            return false;
        const std::size_t bytes = (std::size_t{packet[2]} << 8 | packet[3]) * 4 + 4;
        if (bytes > packet.size() || !SpeaksOf(stream, packet.first(bytes)))
            return false;
        packet = packet.subspan(bytes);
    }
    return true;
}

} // namespace

SenderAddress MakeSenderAddress(Bytes bytes) {
    SenderAddress address{};
    if (bytes.size() == kIpv4Bytes)
        address[10] = address[11] = 0xff;
    if (bytes.size() == kIpv4Bytes || bytes.size() == address.size())
        std::copy_backward(bytes.begin(), bytes.end(), address.end());
    return address;
}

std::optional<SenderAddress> ParseSenderAddress(const std::string& text) {
    SenderAddress bytes{};
    if (::inet_pton(AF_INET6, text.c_str(), bytes.data()) == 1)
        return bytes;
    if (::inet_pton(AF_INET, text.c_str(), bytes.data()) == 1)
        return MakeSenderAddress(Bytes(bytes).first(kIpv4Bytes));
    return std::nullopt;
}

bool PacketGate::AdmitRtp(const SenderAddress& from, std::span<const std::uint8_t> packet,
                          Clock::time_point now) {
    const std::lock_guard lock(m_mutex);
    // What is no stream's keeps nobody from being the next to be heard.
    if (!IsRoomPacket(packet)) {
        ++m_dropped.malformed;
        return false;
    }
    if (!IsHeardFrom(from, now)) {
        ++m_dropped.foreign;
        return false;
    }
    const std::uint32_t stream = NumberAt(packet, kRtpStreamOffset);
    if (from == m_present) {
        m_lastHeard = now;
        m_waiting.reset();
    }
    if (IsAnothers(stream, from, now) || !m_gate.Admit(stream, NumberAt(packet, kRtpTimestampOffset), now)) {
        ++m_dropped.others;
        return false;
    }
    m_present = from;
    m_lastHeard = now;
    m_waiting.reset();
    m_owners[stream] = {from, now};
    std::erase_if(m_owners, [this](const auto& owned) { return !m_gate.Knows(owned.first); });
    return true;
}

bool PacketGate::AdmitRtcp(const SenderAddress& from, std::span<const std::uint8_t> packet) {
    const std::lock_guard lock(m_mutex);
    if (from != m_present) {
        ++m_dropped.foreign;
        return false;
    }
    if (!SpeaksOnlyOf(m_gate.Current().value_or(0), packet)) {
        ++m_dropped.malformed;
        return false;
    }
    return true;
}

bool PacketGate::IsHeardFrom(const SenderAddress& from, Clock::time_point now) {
    if (!m_senders.empty())
        return std::find(m_senders.begin(), m_senders.end(), from) != m_senders.end();
    if (!m_present || from == m_present)
        return true;
    if (now - m_lastHeard < kSilent)
        return false;
    // Who came first waits on: others cannot keep starting the wait anew.
    if (!m_waiting || now - m_waitingLastSent >= kAlone) {
        m_waiting = from;
        m_waitingSince = now;
    }
    if (m_waiting != from)
        return false;
    m_waitingLastSent = now;
    return now - m_waitingSince >= kAlone;
}

// The pipeline knows streams by their numbers alone: two of the same number would be mixed up. A number whose
// owner has been silent is free again, as when a server has got another address.
bool PacketGate::IsAnothers(std::uint32_t stream, const SenderAddress& from, Clock::time_point now) {
    const auto owned = m_owners.find(stream);
    if (owned == m_owners.end())
        return false;
    Owner& owner = owned->second;
    if (owner.address != from)
        return now - owner.lastSent < kSilent;
    owner.lastSent = now;
    return false;
}

std::optional<std::uint32_t> PacketGate::TakeLeft(Clock::time_point now, std::chrono::milliseconds age) {
    const std::lock_guard lock(m_mutex);
    return m_gate.TakeLeft(now, age);
}

std::optional<std::uint32_t> PacketGate::Current() const {
    const std::lock_guard lock(m_mutex);
    return m_gate.Current();
}

PacketGate::Dropped PacketGate::Count() const {
    const std::lock_guard lock(m_mutex);
    return m_dropped;
}

} // namespace korvel::roomplayer
