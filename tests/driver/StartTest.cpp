// What happens between the creation of the driver and its end, as only a core can see it.
#include <gtest/gtest.h>

#include <stdexcept>

#include "TestCore.h"
#include "driver/korvel_digitalaudio.h"

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

TEST(Start, AgainForgetsTheActiveServerAndTheNewestBindings) {
    TestCore core;
    core.Run({"start", "online 3000 127.0.0.1", "bound 3000", "bound 3501"});
    const auto config = KVXML::CreateXmlNode("config");
    EXPECT_EQ(core.Driver().Initialize(100002, *config, nullptr), 0);
    core.TakeLines();
    EXPECT_EQ(core.Run("command GET_SETTINGS"), std::vector<std::string>{});
    EXPECT_TRUE(Has(core.Run("bound 3000"),
                    "< binding 3001 6 false \"Digital Audio\" DIGITAL_AUDIO_SERVER false true"));
    EXPECT_TRUE(Has(core.Run("bound 3501"),
                    "< binding 3502 6 false \"Audio Media Storage\" AUDIO_MEDIA_STORAGE false true"));
}

TEST(Start, MakesADriverThatCanShowErrors) {
    TestCore core;
    core.Run("start");
    dynamic_cast<korvel_digitalaudio&>(core.Driver()).SendErrorToUI("a <b>");
    EXPECT_EQ(core.TakeLines(), std::vector<std::string>{"< ui <DA_ERROR Error=\"a &lt;b&gt;\"></DA_ERROR>"});
}

} // namespace
