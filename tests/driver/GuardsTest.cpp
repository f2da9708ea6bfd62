// Whatever a service does, no exception leaves an entry and the driver goes on.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <stdexcept>

#include "Sessions.h"
#include "TestCore.h"
#include "korvel_digitalaudio/IDigitalAudio.h"
#include "replay/ScriptError.h"
#include "replay/Words.h"

namespace {

const std::string kFailed = "< log 3 Exception in ";

// Where in a session an operation was called: the line's index, then the operation's name.
using Place = std::pair<std::size_t, std::string>;

// Plays the session; `disturb` is called before each call of a service.
std::vector<std::string> Play(TestCore& core,
                              const std::function<void(std::size_t line, const ServiceCall&)>& disturb) {
    const auto session = LongSession();
    std::vector<std::string> all;
    for (std::size_t i = 0; i < session.size(); ++i) {
        core.SetHook([&, i](const ServiceCall& call) { disturb(i, call); });
        try {
            const auto lines = core.Run(session[i]);
            all.insert(all.end(), lines.begin(), lines.end());
        } catch (const korvel::replay::FormatError&) {
            // No driver runs: it could not be created.
        }
        core.ClearHook();
    }
    return all;
}

std::set<Place> AllPlaces() {
    TestCore core;
    std::set<Place> places;
    Play(core, [&](std::size_t line, const ServiceCall& call) { places.insert({line, call.name}); });
    return places;
}

TEST(Guards, TheUndisturbedSessionHasNoFault) {
    TestCore core;
    const auto lines = Play(core, [](std::size_t, const ServiceCall&) {});
    EXPECT_EQ(Only(lines, "< fault"), std::vector<std::string>{});
}

// What the core and the driver say in the session without the line `left`, timers that expire included.
std::vector<std::string> PlayWithout(std::size_t left) {
    const auto session = LongSession();
    TestCore core;
    std::vector<std::string> all;
    for (std::size_t i = 0; i < session.size(); ++i) {
        if (i == left)
            continue;
        const auto lines = core.Run(session[i]);
        all.insert(all.end(), lines.begin(), lines.end());
    }
    return all;
}

// A line that does nothing would disturb nothing, and no other test would tell.
TEST(Guards, EveryLineOfTheSessionMatters) {
    const auto session = LongSession();
    const auto whole = PlayWithout(session.size());
    for (std::size_t i = 0; i < session.size(); ++i) {
        if (session[i].starts_with("start"))
            continue; // nothing goes without it
        if (session[i] == "create")
            continue; // gives the driver that runs, and changes nothing
        EXPECT_TRUE(PlayWithout(i) != whole) << session[i];
    }
}

TEST(Guards, AServiceThatFailsOnceStopsNothingButTheEntry) {
    std::set<std::string> entries;
    for (const Place& place : AllPlaces()) {
        SCOPED_TRACE(LongSession()[place.first] + " / " + place.second);
        TestCore core;
        bool thrown = false;
        const auto lines = Play(core, [&](std::size_t line, const ServiceCall& call) {
            if (thrown || line != place.first || call.name != place.second)
                return;
            thrown = true;
            throw std::runtime_error("the service failed");
        });
        EXPECT_TRUE(thrown);
        for (const std::string& fault : Only(lines, "< fault"))
            EXPECT_EQ(fault, "< fault no driver was created");
        for (const std::string& line : Only(lines, kFailed))
            entries.insert(line.substr(kFailed.size(), line.find(':') - kFailed.size()));
        // A driver that could not be made leaves nothing behind, and one that was destroyed does not either.
        EXPECT_EQ(kv::GetService<IDigitalAudio>(core.Instances()), nullptr);
    }
    // The log names what was left.
    EXPECT_EQ(entries,
              (std::set<std::string>{
                  "BoundCall", "Destroy variables", "ExecuteCommand", "GetPersistState", "Initialize",
                  "OnAVDeselected", "OnAVRoomOff", "OnAVSelected", "OnBindingChanged", "OnTimerExpired",
                  "PlayAnnouncement", "RC_Completed playlist tracks", "RC_Completed playlists",
                  "RC_Completed track", "RC_ErrorHandler", "ServerUtility", "~ServerUtility"}));
}

TEST(Guards, AnOperationThatAlwaysFailsBringsNothingDown) {
    std::set<std::string> names;
    for (const Place& place : AllPlaces())
        names.insert(place.second);
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        TestCore core;
        const auto lines = Play(core, [&](std::size_t, const ServiceCall& call) {
            if (call.name == name)
                throw 42;
        });
        for (const std::string& fault : Only(lines, "< fault"))
            EXPECT_EQ(fault, "< fault no driver was created");
        EXPECT_EQ(kv::GetService<IDigitalAudio>(core.Instances()), nullptr);
    }
}

TEST(Guards, AFailureIsLoggedWithTheEntrysName) {
    TestCore core;
    core.Run({"start", "online 3000 127.0.0.1"});
    core.SetHook([](const ServiceCall& call) {
        if (call.name == "SendDataToUI")
            throw std::runtime_error("no user interface");
    });
    const auto lines = core.Run("command GET_SETTINGS");
    EXPECT_TRUE(Has(lines, "< log 3 Exception in ExecuteCommand: no user interface"));
}

TEST(Guards, AFailureOfAnAnnouncementIsLoggedWithTheEntrysName) {
    for (const auto& [line, entry] : {std::pair{"announce create", "CreateAnnouncementStream"},
                                      std::pair{"announce remove", "RemoveAnnouncementStream"},
                                      std::pair{"announce play /a.wav", "PlayAnnouncement"}}) {
        TestCore core;
        core.Run({"engine 3000", "start", "online 3000 127.0.0.1", "announce create", "announce create"});
        core.SetHook([](const ServiceCall& call) {
            if (call.name != "Log")
                throw std::runtime_error("no more");
        });
        EXPECT_TRUE(Has(core.Run(line), std::string(kFailed) + entry + ": no more")) << line;
        core.ClearHook();
    }
}

TEST(Guards, AServerGoesOnAfterALineThatCouldNotBeHandedOver) {
    TestCore core;
    core.Run("start");
    core.SetHook([](const ServiceCall& call) {
        if (call.name == "SendBindMessage")
            throw std::runtime_error("the binding failed");
    });
    core.Run("online 3000 127.0.0.1");
    core.ClearHook();
    // The lost line is not sent again, and nothing waits for its answer.
    const auto lines = core.Run({"online 3000 127.0.0.1", "announce create"});
    EXPECT_EQ(Only(lines, "< send"), std::vector<std::string>{R"(< send 3000 "1 addann\r\n")"});
}

TEST(Guards, TheLinksOfServersThatLeftAreDroppedThoughOtherStepsOfTheEndFail) {
    TestCore core;
    core.Run({"song 1 location=/media/a.flac", "start", "online 3000 127.0.0.1",
              "command ADD_SONG ROOM_ID=7 MEDIA_ID=1",
              "select 7 queue=10000 kind=QUEUE ip=10.0.0.7 port=6200", "offline 3000"});
    core.SetHook([](const ServiceCall& call) {
        if (call.name == "VmRemove")
            throw std::runtime_error("no variables");
    });
    const auto lines = core.Run("stop");
    EXPECT_TRUE(Has(lines, "< timer-stop 2"));
    EXPECT_EQ(kv::GetService<IDigitalAudio>(core.Instances()), nullptr);
}

TEST(Guards, ADriverThatIsDestroyedTakesNoCallsAnyMore) {
    TestCore core;
    core.Run({"start", "online 3000 127.0.0.1", "online 3001 10.0.0.9", "announce create"});
    IDriver& driver = core.Driver();
    const AV_Class room{kAvClassRoomEndpoint, 0};
    const AV_Class source{kAvClassDigitalAudio, 0};
    bool connects = false;
    core.SetHook([&](const ServiceCall& call) {
        if (call.name == "Log" || call.name == "StartTimer")
            return;
        driver.BoundCall(3002, 6, "", kv::BindMessage("EVENT", kv::CreateCmdMessage("SERVER_ONLINE"), ""),
                         nullptr);
        connects = connects || driver.IsAVOutputToInputValid({}, source, room);
    });
    const auto lines = core.Run("stop");
    EXPECT_FALSE(connects);
    EXPECT_FALSE(HasStart(lines, "< timer ")); // would call into nothing
    EXPECT_FALSE(HasStart(lines, "< send 3002"));
}

// What a core may do while the driver is inside a call to it.
constexpr const char* kCallsBack[] = {
    "offline 3000",
    "offline 3001",
    "deselect 7",
    "off 8",
    "data 3000 \"1 addstr stream=1\\r\\n\"",
    "data 3000 \"* addmed BAD=1 broken\\r\\n\"",
    "command REMOVE_SONG ROOM_ID=7 MEDIA_ID=1",
    "command ADD_SONG ROOM_ID=7 MEDIA_ID=3",
    "command GET_QUEUE_STATUSV2",
    "select 7 queue=10001 kind=QUEUE ip=10.0.0.7 port=6200 channel=1",
};

class CallBack : public testing::TestWithParam<std::size_t> {};

// Every place gets a third of the calls back, every call back a third of the places.
TEST_P(CallBack, InsideAnyCallDoesNoHarm) {
    constexpr std::size_t kShare = 3;
    const auto session = LongSession();
    const auto running =
        static_cast<std::size_t>(std::find(session.begin(), session.end(), "create") - session.begin());
    std::size_t number = GetParam();
    for (const Place& place : AllPlaces()) {
        // While the driver is being made or destroyed nobody calls it.
        if (place.first < running || place.first + 1 == session.size() || ++number % kShare != 0)
            continue;
        SCOPED_TRACE(session[place.first] + " / " + place.second);
        TestCore core;
        bool answered = false;
        const auto lines = Play(core, [&](std::size_t line, const ServiceCall& call) {
            if (answered || line != place.first || call.name != place.second)
                return;
            answered = true;
            core.Session().Execute(kCallsBack[GetParam()]);
        });
        EXPECT_TRUE(answered);
        EXPECT_EQ(Only(lines, "< fault"), std::vector<std::string>{});
    }
}

INSTANTIATE_TEST_SUITE_P(Guards, CallBack, testing::Range(std::size_t{0}, std::size(kCallsBack)));

} // namespace
