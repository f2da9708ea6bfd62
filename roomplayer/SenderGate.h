// Decides which of several senders on one port is heard.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>

namespace korvel::roomplayer {

// A room moves between queues: the new queue's stream starts on the same port, and the old one may go on for
// a while. The sender that came last is heard; the ones before are dropped for as long as they keep sending,
// and come back when they start anew after a pause or when the present one falls silent. Pure logic; time
// comes from outside.
//
// How long a sender has paused is told by the timestamps of its own packets and not by when they come: when
// a busy machine holds everything up for a while, nobody has paused, whatever the order in which packets
// come then.
class SenderGate {
public:
    using Clock = std::chrono::steady_clock;

    // Timestamps count so many in a second.
    static constexpr std::int32_t kTimestampRate = 48000;
    // A sender quiet for this long starts anew with its next packet.
    static constexpr std::chrono::milliseconds kRestart{200};
    // The present sender quiet for this long gives way to any other.
    static constexpr std::chrono::milliseconds kLost{500};
    // Earliest change after a change, so that noise on the port cannot flap the room.
    static constexpr std::chrono::milliseconds kHold{40};
    // Earlier senders that are remembered. A new one waits while the oldest of them has not been taken by
    // TakeLeft(), so that no more than these are anything to whoever listens.
    static constexpr std::size_t kMaxEarlier = 8;

    // Whether a packet of this sender is heard.
    // `timestamp`: of the packet, wraps around.
    bool Admit(std::uint32_t sender, std::uint32_t timestamp, Clock::time_point now);

    // Takes a sender that was left at least so long ago; what it still had to play has been played.
    std::optional<std::uint32_t> TakeLeft(Clock::time_point now, std::chrono::milliseconds age);

    // Whether it is heard or is one of the earlier senders.
    bool Knows(std::uint32_t sender) const;

    // The sender that is heard; empty before the first packet.
    std::optional<std::uint32_t> Current() const;

private:
    struct Sender {
        std::uint32_t id = 0;
        std::uint32_t lastTimestamp = 0;
        std::chrono::milliseconds alone{0}; // sent since the present sender sent last
        Clock::time_point left;
        bool cleared = false;
    };

    bool Hear(std::uint32_t timestamp);
    bool IsDue(Sender& earlier, std::uint32_t timestamp);
    void Change(std::uint32_t sender, std::uint32_t timestamp, Clock::time_point now);

    std::optional<Sender> m_current;
    std::deque<Sender> m_earlier;
    Clock::time_point m_changed;
};

} // namespace korvel::roomplayer
