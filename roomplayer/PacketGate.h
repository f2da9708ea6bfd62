// What of all that arrives at the room's ports reaches the pipeline.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "roomplayer/SenderGate.h"

namespace korvel::roomplayer {

// A sender's address; IPv4 in its mapped form, as it arrives at an IPv6 socket.
using SenderAddress = std::array<std::uint8_t, 16>;

// From the 4 or 16 bytes of an address in network order; of any other length it is nobody's.
SenderAddress MakeSenderAddress(std::span<const std::uint8_t> bytes);

// Empty when the text is no numeric address.
std::optional<SenderAddress> ParseSenderAddress(const std::string& text);

// Anybody can send to a room. Heard is one stream at a time, from a sender that the room is told of; without
// any, from the first that plays, until that one has been silent for a while. Everything else is counted and
// dropped: a receiver builds up something for every stream, contributor, payload type and report that it is
// shown.
//
// Pure logic, for packets of the two ports from two threads; time comes from outside.
class PacketGate {
public:
    using Clock = SenderGate::Clock;

    // A sender that nobody named, silent for this long, gives way to any other,
    static constexpr std::chrono::milliseconds kSilent{3000};
    // which has been alone for this long: when a busy machine held everything up, whoever was silent is there
    // again within this.
    static constexpr std::chrono::milliseconds kAlone{200};
    // The one payload type of a room: L16, 48 kHz, stereo.
    static constexpr unsigned kPayloadType = 96;

    struct Dropped {
        std::uint64_t foreign = 0;   // of a sender that is not the room's
        std::uint64_t malformed = 0; // no packet of a room's stream
        std::uint64_t others = 0;    // of a stream of the sender that is not heard

        std::uint64_t All() const { return foreign + malformed + others; }
    };

    // `senders`: addresses that are heard; empty for whoever comes first.
    explicit PacketGate(std::vector<SenderAddress> senders) : m_senders(std::move(senders)) {}

    // Whether a packet that came to the RTP port passes.
    bool AdmitRtp(const SenderAddress& from, std::span<const std::uint8_t> packet, Clock::time_point now);
    // Whether a packet that came to the RTCP port passes: it must come from where the stream comes from that
    // is heard, and speak of that stream only.
    bool AdmitRtcp(const SenderAddress& from, std::span<const std::uint8_t> packet);

    // See SenderGate.
    std::optional<std::uint32_t> TakeLeft(Clock::time_point now, std::chrono::milliseconds age);
    std::optional<std::uint32_t> Current() const;

    Dropped Count() const;

private:
    struct Owner {
        SenderAddress address;
        Clock::time_point lastSent;
    };

    bool IsHeardFrom(const SenderAddress& from, Clock::time_point now);
    bool IsAnothers(std::uint32_t stream, const SenderAddress& from, Clock::time_point now);

    const std::vector<SenderAddress> m_senders;
    mutable std::mutex m_mutex;
    SenderGate m_gate;
    std::optional<SenderAddress> m_present; // where the stream comes from that is heard
    Clock::time_point m_lastHeard;
    std::map<std::uint32_t, Owner> m_owners; // of the streams that the gate knows
    std::optional<SenderAddress> m_waiting;  // who came first while the present one is silent
    Clock::time_point m_waitingSince;
    Clock::time_point m_waitingLastSent;
    Dropped m_dropped;
};

} // namespace korvel::roomplayer
