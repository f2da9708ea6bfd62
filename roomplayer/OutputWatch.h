// Notices that no sound comes out any more.
#pragma once

#include <chrono>
#include <cstdint>

namespace korvel::roomplayer {

// Pure logic, asked at regular intervals. It counts looks and not time: a program that was stopped for a
// while, or a machine that was asleep, looks once afterwards and finds sound again with the next look.
class OutputWatch {
public:
    // Between two looks.
    static constexpr std::chrono::milliseconds kInterval{500};
    // A stall is so many looks in a row that find nothing new, two seconds. After a stall, sound in as many
    // looks in a row is a recovery.
    static constexpr unsigned kPatience = 4;
    // Without a recovery the next stall takes twice as many, up to this, a minute.
    static constexpr unsigned kMaxPatience = 120;

    enum class Finding {
        kNothingNew,
        kStalled, // a new start is due, from which the buffers are counted anew
        kRecovered
    };

    // `quiet`: looks after each start that are right to find nothing.
    explicit OutputWatch(unsigned quiet) : m_quietAtStart(quiet), m_quiet(quiet) {}

    // `played`: buffers that have come out since the start.
    Finding Look(std::uint64_t played);

private:
    Finding Idle();
    Finding Progress(std::uint64_t played);

    unsigned m_quietAtStart;
    unsigned m_quiet;
    unsigned m_patience = kPatience;
    unsigned m_idle = 0;
    unsigned m_flowing = 0;
    std::uint64_t m_played = 0;
    bool m_stalled = false;
};

} // namespace korvel::roomplayer
