#pragma once

#include <cstdint>
#include <deque>
#include <vector>

namespace korvel::replay {

// Random numbers that are none: first those that a transcript names, then a generator that starts alike in
// every run on every machine.
class RandomSource {
public:
    // Replaces what is left of the numbers named before.
    void SetNext(const std::vector<std::int32_t>& numbers) { m_next.assign(numbers.begin(), numbers.end()); }
    // 0 to 2147483647.
    std::int32_t Take();

private:
    std::deque<std::int32_t> m_next;
    std::uint32_t m_state = 2463534242;
};

} // namespace korvel::replay
