// Announcements that do not go as they should.
#include <gtest/gtest.h>

#include "RecordingDriver.h"
#include "TestHouse.h"
#include "host/Refused.h"
#include "rooms/Announcements.h"

namespace korvel::controller {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kShort{1};
constexpr milliseconds kLong{1000000};

class RecordingAudio final : public IDigitalAudio {
public:
    std::vector<std::string> calls;

    void CreateAnnouncementStream() override { calls.emplace_back("create"); }
    void RemoveAnnouncementStream() override { calls.emplace_back("remove"); }
    void PlayAnnouncement(const std::string& path) override { calls.push_back("play " + path); }
};

class AnnouncementsTest : public testing::Test {
protected:
    AnnouncementsTest() {
        port.Attach(driver, &audio);
        events.Add([this](const auto& text) { states.push_back(nlohmann::json::parse(*text)["state"]); });
    }

    void Make(milliseconds stream, milliseconds play) {
        announcements.emplace(Announcements::Parts{loop.loop, port, rooms, timers, events, log,
                                                   [] { return std::string(); }, [] { return 3000u; }},
                              Announcements::Patience{stream, play});
    }
    bool IsOver() {
        return loop.RunUntil([&] { return announcements->ToJson().is_null(); });
    }

    using Texts = std::vector<std::string>;

    ScratchFolder folder;
    const std::string file = folder.Write("chime.wav", "sound");
    TestLoop loop;
    Log log{LogLevel::Error};
    EventBus events;
    RoomTable rooms{{{1, "Hall", "10.0.0.1", 6200, 1}, {2, "Bath", "10.0.0.2", 6200, 1}}};
    RecordingDriver driver;
    RecordingAudio audio;
    DriverPort port{log};
    TimerService timers{loop.loop, port};
    Texts states;
    std::optional<Announcements> announcements;
};

TEST_F(AnnouncementsTest, WithoutAStreamItIsAbandoned) {
    Make(kShort, kLong);
    announcements->Start({2, 1, 2}, file);
    ASSERT_TRUE(IsOver());
    EXPECT_EQ(audio.calls, (Texts{"create", "remove"}));
    EXPECT_EQ(driver.calls, (Texts{"ANNOUNCEMENT 1", "ANNOUNCEMENT 2", "ANNOUNCEMENT_COMPLETE 1",
                                   "ANNOUNCEMENT_COMPLETE 2"}));
    EXPECT_EQ(states, (Texts{"started", "abandoned"}));
}

TEST_F(AnnouncementsTest, AStreamThatComesTooLateIsGivenUp) {
    Make(kShort, kLong);
    announcements->Start({1}, file);
    ASSERT_TRUE(IsOver());
    announcements->AnnouncementStreamReady();
    loop.RunReady();
    EXPECT_EQ(audio.calls, (Texts{"create", "remove", "remove"}));
}

TEST_F(AnnouncementsTest, WithoutAnEndItIsAbandoned) {
    Make(kLong, kShort);
    announcements->Start({1}, file);
    announcements->AnnouncementStreamReady();
    ASSERT_TRUE(IsOver());
    EXPECT_EQ(audio.calls, (Texts{"create", "play " + file, "remove"}));
    EXPECT_EQ(states, (Texts{"started", "playing", "abandoned"}));
    EXPECT_EQ(timers.Running(), 0u);
}

TEST_F(AnnouncementsTest, ADriverWithoutAnnouncementsIsAskedForNone) {
    port.Attach(driver);
    Make(kLong, kLong);
    EXPECT_THROW(announcements->Start({1}, file), Refused);
    EXPECT_TRUE(announcements->ToJson().is_null());
}

// The driver calls from within its own calls, where it must not be called.
TEST_F(AnnouncementsTest, NothingIsAskedOfTheDriverInsideItsCalls) {
    Make(kLong, kLong);
    announcements->Start({1}, file);
    announcements->AnnouncementStreamReady();
    announcements->AnnouncementComplete();
    EXPECT_EQ(audio.calls, (Texts{"create"}));
    loop.RunReady();
    EXPECT_EQ(audio.calls, (Texts{"create", "play " + file, "remove"}));
    EXPECT_EQ(states, (Texts{"started", "playing", "complete"}));
}

} // namespace
} // namespace korvel::controller
