// What arrives at a room's ports. Each packet of the input begins with a byte that says where it comes to, from
// whom, and how much time has passed, and one that tells its length.
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <span>
#include <vector>

#include "roomplayer/PacketGate.h"

namespace {

using korvel::roomplayer::PacketGate;
using korvel::roomplayer::ParseSenderAddress;
using korvel::roomplayer::SenderAddress;
using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kStreamOffset = 8;

void Require(bool holds, const char* rule) {
    if (!holds) {
        std::cerr << "broken rule: " << rule << std::endl;
        std::abort();
    }
}

std::uint32_t StreamOf(Bytes packet, std::size_t offset) {
    std::uint32_t stream = 0;
    for (const std::uint8_t byte : packet.subspan(offset, 4))
        stream = stream << 8 | byte;
    return stream;
}

const std::vector<SenderAddress> kSenders = {*ParseSenderAddress("10.0.0.1"), *ParseSenderAddress("::1"),
                                             *ParseSenderAddress("10.0.0.3")};

class Room {
public:
    explicit Room(bool configured)
        : m_gate(configured ? std::vector<SenderAddress>{kSenders[0], kSenders[1]}
                            : std::vector<SenderAddress>{}),
          m_configured(configured) {}

    void Take(unsigned way, Bytes packet) {
        m_now += std::chrono::milliseconds(way >> 3 << 2);
        const SenderAddress& from = kSenders[way % kSenders.size()];
        const auto dropped = m_gate.Count().All();
        const bool passed =
            (way & 4) != 0 ? m_gate.AdmitRtcp(from, packet) : m_gate.AdmitRtp(from, packet, m_now);
        Require(m_gate.Count().All() == dropped + (passed ? 0 : 1), "what does not pass is counted");
        if (passed) {
            Require(!m_configured || from != kSenders[2], "only configured senders pass");
            Require(StreamOf(packet, (way & 4) != 0 ? 4 : kStreamOffset) == m_gate.Current(),
                    "only the stream that is heard passes");
        }
        m_gate.TakeLeft(m_now, std::chrono::milliseconds(300));
    }

private:
    PacketGate m_gate;
    bool m_configured;
    PacketGate::Clock::time_point m_now{};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0)
        return 0;
    Room room(bytes[0] % 2 != 0);
    for (Bytes rest(bytes + 1, size - 1); rest.size() >= 2;) {
        const Bytes packet = rest.subspan(2, std::min<std::size_t>(rest[1], rest.size() - 2));
        room.Take(rest[0], packet);
        rest = rest.subspan(2 + packet.size());
    }
    return 0;
}
