// What people and devices may wish of a house, at random: the same seed wishes the same.
#pragma once

#include <random>
#include <string>

#include "DriverHouse.h"

namespace korvel::controller {

class RandomWishes {
public:
    RandomWishes(DriverHouse& house, unsigned seed) : m_house(house), m_engine(seed) {}

    // Wishes one thing; what it was, for whoever reads that it went wrong.
    std::string Wish();

private:
    using Parameters = DriverHouse::Parameters;

    std::size_t Below(std::size_t count) { return m_engine() % count; }
    std::string Room() { return std::to_string(1 + Below(DriverHouse::kRooms)); }
    std::string Song() { return std::to_string(1 + Below(DriverHouse::kSongs)); }
    std::string Flag() { return std::to_string(Below(2)); }

    std::string Command(const std::string& name, Parameters parameters);
    void AddFlags(Parameters& parameters);
    std::string Add();
    std::string AddAlone();
    std::string AddMany();
    std::string Edit();
    std::string Transport();
    std::string Rooms();
    std::string Hear();
    std::string Time();
    std::string List(std::size_t most);

    DriverHouse& m_house;
    std::minstd_rand m_engine;
};

} // namespace korvel::controller
