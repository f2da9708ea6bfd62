// Choices that follow from a number: the same number makes the same choices on every machine.
#pragma once

#include <cstddef>
#include <iterator>
#include <random>

namespace fuzz {

class Dice {
public:
    explicit Dice(unsigned int seed) : m_engine(seed) {}

    // 0 to `count` - 1; `count` is at least 1.
    std::size_t Below(std::size_t count) { return m_engine() % count; }
    bool OneIn(std::size_t count) { return Below(count) == 0; }
    // One of a list that is not empty.
    template <class List>
    const auto& Of(const List& list) {
        return *std::next(std::begin(list), static_cast<std::ptrdiff_t>(Below(std::size(list))));
    }
    template <class List>
    const auto& Of(const List&& list) = delete; // what it gave would be gone

private:
    std::minstd_rand m_engine;
};

} // namespace fuzz
