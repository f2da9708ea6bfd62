// Announcements that do not go as they should.
#include <gtest/gtest.h>

#include "RecordingDriver.h"
#include "Sound.h"
#include "TestHouse.h"
#include "base/Refused.h"
#include "driver/rooms/Announcements.h"

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
    // Why it was refused; "" when it has started.
    std::string Announce(const std::vector<std::uint32_t>& where) {
        std::optional<std::string> answer;
        announcements->Start(where, file, [&](const std::optional<Refused>& refused) {
            answer = refused ? refused->what() : "";
        });
        EXPECT_TRUE(loop.RunUntil([&] { return answer.has_value(); }));
        return answer.value_or("no answer");
    }
    bool IsOver() {
        return loop.RunUntil([&] { return announcements->ToJson().is_null(); });
    }

    using Texts = std::vector<std::string>;

    ScratchFolder folder;
    const std::string file = folder.Write("chime.wav", tests::WavOf({{500, 0.1}}));
    TestLoop loop;
    common::Log log{common::LogLevel::Error};
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
    EXPECT_EQ(Announce({2, 1, 2}), "");
    ASSERT_TRUE(IsOver());
    EXPECT_EQ(audio.calls, (Texts{"create", "remove"}));
    EXPECT_EQ(driver.calls, (Texts{"ANNOUNCEMENT 1", "ANNOUNCEMENT 2", "ANNOUNCEMENT_COMPLETE 1",
                                   "ANNOUNCEMENT_COMPLETE 2"}));
    EXPECT_EQ(states, (Texts{"started", "abandoned"}));
}

TEST_F(AnnouncementsTest, AStreamThatComesTooLateIsGivenUp) {
    Make(kShort, kLong);
    EXPECT_EQ(Announce({1}), "");
    ASSERT_TRUE(IsOver());
    announcements->AnnouncementStreamReady();
    loop.RunReady();
    EXPECT_EQ(audio.calls, (Texts{"create", "remove", "remove"}));
}

TEST_F(AnnouncementsTest, WithoutAnEndItIsAbandoned) {
    Make(kLong, kShort);
    EXPECT_EQ(Announce({1}), "");
    announcements->AnnouncementStreamReady();
    ASSERT_TRUE(IsOver());
    EXPECT_EQ(audio.calls, (Texts{"create", "play " + file, "remove"}));
    EXPECT_EQ(states, (Texts{"started", "playing", "abandoned"}));
    EXPECT_EQ(timers.Running(), 0u);
}

TEST_F(AnnouncementsTest, APathHasFourThousandNinetySixBytes) {
    Make(kLong, kLong);
    std::string answer;
    const auto heard = [&](const std::optional<Refused>& refused) { answer = refused.value().what(); };
    announcements->Start({1}, "/" + std::string(4095, 'x'), heard);
    ASSERT_TRUE(loop.RunUntil([&] { return !answer.empty(); }));
    EXPECT_TRUE(answer.ends_with(" is not there or cannot be read")) << answer;
    EXPECT_THROW(announcements->Start({1}, "/" + std::string(4096, 'x'), heard), Refused);
}

TEST_F(AnnouncementsTest, ADriverWithoutAnnouncementsIsAskedForNone) {
    port.Attach(driver);
    Make(kLong, kLong);
    EXPECT_THROW(announcements->Start({1}, file, [](const auto&) {}), Refused);
    EXPECT_TRUE(announcements->ToJson().is_null());
}

// The driver calls from within its own calls, where it must not be called.
TEST_F(AnnouncementsTest, NothingIsAskedOfTheDriverInsideItsCalls) {
    Make(kLong, kLong);
    EXPECT_EQ(Announce({1}), "");
    announcements->AnnouncementStreamReady();
    announcements->AnnouncementComplete();
    EXPECT_EQ(audio.calls, (Texts{"create"}));
    loop.RunReady();
    EXPECT_EQ(audio.calls, (Texts{"create", "play " + file, "remove"}));
    EXPECT_EQ(states, (Texts{"started", "playing", "complete"}));
}

// Both were free to start when their files began to be looked at.
TEST_F(AnnouncementsTest, OfTwoAtOnceTheSecondIsRefused) {
    Make(kLong, kLong);
    std::vector<std::string> answers;
    for (const std::uint32_t room : {1u, 2u}) {
        announcements->Start({room}, file, [&](const std::optional<Refused>& refused) {
            answers.push_back(refused ? refused->what() : "");
        });
    }
    EXPECT_TRUE(announcements->ToJson().is_null());
    ASSERT_TRUE(loop.RunUntil([&] { return answers.size() == 2; }));
    EXPECT_EQ(answers, (Texts{"", "another announcement is being made"}));
    EXPECT_EQ(driver.calls, Texts{"ANNOUNCEMENT 1"});
}

TEST_F(AnnouncementsTest, ThatAreBeingLookedAtMayBeDropped) {
    Make(kLong, kLong);
    announcements->Start({1}, file, [](const auto&) { FAIL(); });
    announcements.reset();
    loop.RunReady();
    EXPECT_EQ(states, Texts{});
}

} // namespace
} // namespace korvel::controller
