// What happens between the creation of the driver and its end, as only a core can see it.
#include <gtest/gtest.h>

#include <stdexcept>

#include "TestCore.h"

namespace {

TEST(Start, SeedsTheRandomNumbersWithTheClock) {
    TestCore core;
    core.Run("clock 1234567");
    std::vector<std::string> seeds;
    core.SetHook([&](const ServiceCall& call) {
        if (call.name == "SeedRandom")
            seeds.push_back(call.ToText());
    });
    core.Run("start");
    EXPECT_EQ(seeds, std::vector<std::string>{"SeedRandom 1234567"});
}

} // namespace
