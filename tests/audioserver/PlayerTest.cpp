// A player that starts is heard, and one that falls silent knows it.
#include <algorithm>

#include "Bed.h"

namespace korvel::tests {
namespace {

class Players : public Bed {
protected:
    // A stream that plays a tone for a long time.
    std::string PlayTone(LineClient& driver) {
        const std::string stream = std::to_string(driver.AddStream());
        driver.Ask("addmed " + stream + " " + FileMedia(ToneFile("tone.wav", {{500, 60}})));
        return stream;
    }
    void ExpectAllHear(LineClient& driver, const std::string& stream,
                       const std::vector<std::unique_ptr<Room>>& rooms) {
        for (const auto& room : rooms)
            driver.Ask("addcli " + stream + " " + room->Client());
        for (const auto& room : rooms) {
            EXPECT_TRUE(WaitUntil([&] { return room->Heard().Seconds(500) >= 0.2; })) << room->Log();
            driver.Ask("remcli " + stream + " " + room->Client());
        }
    }
};

TEST_F(Players, EachOfFortyIsHeard) {
    const auto driver = Connect();
    const std::string stream = PlayTone(*driver);
    for (int started = 0; started < 40; started += 8) {
        std::vector<std::unique_ptr<Room>> rooms;
        for (int room = 0; room < 8; ++room)
            rooms.push_back(AddRoom("room" + std::to_string(room)));
        ExpectAllHear(*driver, stream, rooms);
    }
}

TEST_F(Players, AStartOnABusyMachineIsHeard) {
    const auto driver = Connect();
    const std::string stream = PlayTone(*driver);
    std::vector<std::unique_ptr<Room>> rooms;
    rooms.push_back(AddRoom("plain"));
    rooms.push_back(AddRoom("clock", "clock"));
    rooms.push_back(AddRoom("silence", "silence"));
    ExpectAllHear(*driver, stream, rooms);
    for (const auto& room : rooms) {
        EXPECT_EQ(room->Log().find("no sound"), std::string::npos);
        // A mixer that reckons with another start of time runs ahead: it has more than one that began before.
        const double length = room->Heard().Length();
        EXPECT_LT(length, rooms.front()->Heard().Length() + 0.3);
    }
}

TEST_F(Players, SoundThatStopsComingOutIsReportedAndComesBack) {
    const auto driver = Connect();
    const std::string stream = PlayTone(*driver);
    const auto room = AddRoom("room", "stall");
    driver->Ask("addcli " + stream + " " + room->Client());
    EXPECT_EQ(room->NextReport(), "stalled");
    EXPECT_NE(room->Log().find("no sound comes out: starting anew"), std::string::npos);
    EXPECT_TRUE(room->Hears(500, 0.5));
    EXPECT_EQ(room->NextReport(), "playing");
    EXPECT_NE(room->Log().find("sound comes out again"), std::string::npos);
    // The stall is in the recording, as the silence that it was.
    EXPECT_TRUE(room->Stop());
    EXPECT_EQ(room->Heard().Order({0, 500}), (std::vector<int>{500, 0, 500}));
    EXPECT_GT(room->Heard().Seconds(0), 1.5);
}

TEST_F(Players, AStallThatLastsIsReportedOnce) {
    const auto room = AddRoom("room", "stalls");
    EXPECT_EQ(room->NextReport(), "stalled");
    const auto starts = [&room] {
        const std::string log = room->Log();
        return std::count(log.begin(), log.end(), '\n') / 2; // of each start and of each stall
    };
    EXPECT_TRUE(WaitUntil([&] { return starts() >= 2; }));
    EXPECT_TRUE(room->Stop());
    EXPECT_EQ(room->NextReport(), "");
}

TEST_F(Players, OneThatCannotStopPlayingEnds) {
    const auto room = AddRoom("room", "hang");
    EXPECT_EQ(room->NextReport(), "stalled");
    EXPECT_EQ(room->WaitForExit(), 1);
    EXPECT_NE(room->Log().find("does not stop"), std::string::npos);
}

} // namespace
} // namespace korvel::tests
