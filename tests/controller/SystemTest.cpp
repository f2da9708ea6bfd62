#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

#include "TestHouse.h"
#include "driver/services/RealSystem.h"

namespace korvel::controller {
namespace {

TEST(RealSystem, KnowsTheAddressesOfThisMachine) {
    const common::Log log(common::LogLevel::Error);
    RealSystem system(log);
    EXPECT_TRUE(system.IsLocalIPv4("127.0.0.1"));
    EXPECT_TRUE(system.IsLocalIPv4("127.9.9.9"));
    EXPECT_FALSE(system.IsLocalIPv4("192.0.2.1"));
    EXPECT_FALSE(system.IsLocalIPv4("localhost"));
    EXPECT_FALSE(system.IsLocalIPv4(""));
}

TEST(RealSystem, TheSameSeedGivesTheSameNumbers) {
    const common::Log log(common::LogLevel::Error);
    RealSystem system(log);
    system.SeedRandom(7);
    const std::int32_t first = system.Random();
    system.SeedRandom(7);
    EXPECT_EQ(system.Random(), first);
    EXPECT_GE(first, 0);
}

TEST(RealSystem, ADriverThatRepeatsItselfHidesNothingElse) {
    std::FILE* const file = std::tmpfile();
    {
        const common::Log log(common::LogLevel::Info, file);
        RealSystem system(log);
        for (int i = 0; i < 1000; ++i) {
            system.RecordAssert("noisy.cpp", 7, "");
            system.Log(1, "room 1 is noisy");
        }
        system.RecordAssert("quiet.cpp", 8, "");
        system.Log(1, "room 2 says something");
    }
    std::rewind(file);
    std::string text(1 << 20, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file));
    std::fclose(file);
    EXPECT_NE(text.find("assertion failed at quiet.cpp:8\n"), std::string::npos) << text;
    EXPECT_NE(text.find("driver [1] room 2 says something\n"), std::string::npos) << text;
    EXPECT_LT(std::ranges::count(text, '\n'), 1000) << "what repeats itself is counted";
}

TEST(EventBus, AListenerMayRemoveItself) {
    EventBus events;
    int heard = 0;
    std::uint32_t id = 0;
    id = events.Add([&](const auto&) {
        ++heard;
        events.Remove(id);
    });
    events.Publish({{"type", "event"}});
    events.Publish({{"type", "event"}});
    EXPECT_EQ(heard, 1);
}

TEST(EventBus, BytesThatAreNoTextDoNotBreakAnEvent) {
    EXPECT_EQ(JsonText(nlohmann::json("a\xFF")), "\"a\xEF\xBF\xBD\"");
}

TEST(VariableStore, TellsChangesAndOnlyChanges) {
    EventBus events;
    std::vector<std::string> heard;
    events.Add([&](const auto& text) { heard.push_back(*text); });
    VariableStore variables(events);
    variables.Add(7, "STATE", 2, "0");
    variables.Change(7, "1");
    variables.Change(7, "1");
    variables.SetVariable(1, 1, 7, "2", false);
    variables.Change(8, "no such variable");
    EXPECT_EQ(heard, std::vector<std::string>{R"({"id":7,"name":"STATE","type":"variable","value":"1"})"});
    EXPECT_EQ(variables.ToJson().dump(), R"([{"id":7,"name":"STATE","value":"2"}])");
}

} // namespace
} // namespace korvel::controller
