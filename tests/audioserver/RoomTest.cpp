// Rooms that come, go and move, and controllers that do not disturb each other.
#include <fstream>
#include <iterator>

#include "Bed.h"

namespace korvel::tests {
namespace {

using Rooms = Bed;

TEST_F(Rooms, ALateRoomHearsTheSongAtOnce) {
    const auto first = AddRoom("first");
    const auto late = AddRoom("late");
    const auto driver = Connect();
    const std::string stream = std::to_string(driver->AddStream());
    driver->Ask("addcli " + stream + " " + first->Client());
    driver->Ask("addmed " + stream + " " + FileMedia(ToneFile("a.wav", {{500, 1.2}})));
    EXPECT_TRUE(first->Hears(500, 0.3));
    EXPECT_EQ(driver->Ask("addcli " + stream + " " + late->Client()), "OK addcli " + stream);
    EXPECT_EQ(driver->NextEvent(), "* addmed EOM=" + stream);
    EXPECT_TRUE(first->Hears(0, 0.2));
    EXPECT_TRUE(late->Hears(0, 0.2));
    EXPECT_NEAR(first->Heard().Seconds(500), 1.2, 0.15);
    EXPECT_GT(late->Heard().Seconds(500), 0.3);
    EXPECT_LT(late->Heard().Seconds(500), 1.0);
}

TEST_F(Rooms, ARoomMovesBetweenQueuesAndBack) {
    const auto room = AddRoom();
    const auto driver = Connect();
    const std::string one = std::to_string(driver->AddStream());
    const std::string other = std::to_string(driver->AddStream());
    driver->Ask("addmed " + one + " " + FileMedia(ToneFile("one.wav", {{500, 20}})));
    driver->Ask("addmed " + other + " " + FileMedia(ToneFile("other.wav", {{1000, 20}})));
    driver->Ask("addcli " + one + " " + room->Client());
    EXPECT_TRUE(room->Hears(500, 0.3));
    driver->Ask("remcli " + one + " " + room->Client());
    driver->Ask("addcli " + other + " " + room->Client());
    EXPECT_TRUE(room->Hears(1000, 0.3));
    driver->Ask("remcli " + other + " " + room->Client());
    driver->Ask("addcli " + one + " " + room->Client());
    EXPECT_TRUE(room->Hears(500, 0.3));
    EXPECT_TRUE(room->Stop());
    EXPECT_EQ(room->Heard().Order({500, 1000}), (std::vector<int>{500, 1000, 500}));
}

TEST_F(Rooms, TheNewestQueueIsHeardWhileTheOldOneStillSends) {
    const auto room = AddRoom();
    const auto driver = Connect();
    const std::string one = std::to_string(driver->AddStream());
    const std::string other = std::to_string(driver->AddStream());
    driver->Ask("addmed " + one + " " + FileMedia(ToneFile("one.wav", {{500, 20}})));
    driver->Ask("addmed " + other + " " + FileMedia(ToneFile("other.wav", {{1000, 20}})));
    driver->Ask("addcli " + one + " " + room->Client());
    EXPECT_TRUE(room->Hears(500, 0.2));
    driver->Ask("addcli " + other + " " + room->Client());
    EXPECT_TRUE(room->Hears(1000, 0.8));
    driver->Ask("remstr " + other);
    EXPECT_TRUE(room->Hears(500, 0.2));
    EXPECT_EQ(room->Heard().Order({500, 1000}), (std::vector<int>{500, 1000, 500}));
}

TEST_F(Rooms, TwoControllersOnlyTouchAndHearOfTheirOwnStreams) {
    const auto room = AddRoom();
    auto one = Connect();
    const auto other = Connect();
    const std::string mine = std::to_string(one->AddStream());
    const std::string theirs = std::to_string(other->AddStream("addann"));
    EXPECT_EQ(other->NextEvent(), "* SYS addann=" + theirs);
    EXPECT_NE(mine, theirs);
    one->Ask("addcli " + mine + " " + room->Client());
    one->Ask("addmed " + mine + " " + FileMedia(ToneFile("a.wav", {{500, 20}})));
    EXPECT_EQ(other->Ask("remstr " + mine), "NO remstr " + mine);
    EXPECT_EQ(other->Ask("addmed " + mine + " x"), "NO addmed " + mine);
    EXPECT_EQ(other->Ask("setsta " + mine + " stop"), "NO setsta " + mine);
    EXPECT_EQ(other->Ask("reset"), "OK reset");
    EXPECT_EQ(other->Ask("remmed " + theirs), "NO remmed " + theirs);
    EXPECT_TRUE(room->Hears(500, 0.2));

    one.reset();
    const std::string next = std::to_string(other->AddStream());
    other->Ask("addcli " + next + " " + room->Client());
    other->Ask("addmed " + next + " " + FileMedia(ToneFile("b.wav", {{1000, 0.4}})));
    EXPECT_EQ(other->NextEvent(), "* addmed EOM=" + next);
    EXPECT_TRUE(room->Hears(0, 0.2));
    EXPECT_EQ(room->Heard().Order({500, 1000}), (std::vector<int>{500, 1000}));
}

TEST_F(Rooms, ResetRemovesTheStreamsOfTheConnection) {
    const auto room = AddRoom();
    const auto driver = Connect();
    const std::string stream = std::to_string(driver->AddStream());
    driver->Ask("addcli " + stream + " " + room->Client());
    driver->Ask("addmed " + stream + " " + FileMedia(ToneFile("a.wav", {{500, 20}})));
    EXPECT_TRUE(room->Hears(500, 0.1));
    EXPECT_EQ(driver->Ask("reset"), "OK reset");
    EXPECT_TRUE(room->Hears(0, 0.3));
    EXPECT_EQ(driver->Ask("remstr " + stream), "NO remstr " + stream);
    EXPECT_EQ(driver->NextEvent(std::chrono::milliseconds(0)), "");
}

TEST_F(Rooms, AKilledPlayerLeavesAReadableRecording) {
    const auto driver = Connect();
    const std::string stream = std::to_string(driver->AddStream());
    {
        const auto room = AddRoom();
        driver->Ask("addcli " + stream + " " + room->Client());
        driver->Ask("addmed " + stream + " " + FileMedia(ToneFile("a.wav", {{500, 20}})));
        EXPECT_TRUE(room->Hears(500, 0.6));
    }
    std::ifstream file(PathOf("room.recording"), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    ASSERT_GT(bytes.size(), 44U);
    const auto at = [&bytes](std::size_t offset) { return static_cast<unsigned char>(bytes.at(offset)); };
    EXPECT_GT(at(40) | at(41) << 8 | at(42) << 16, 0);
}

} // namespace
} // namespace korvel::tests
