// Audio servers that go away while music plays.
#include "HouseWithDriver.h"

namespace korvel::controller {
namespace {

using nlohmann::json;

class HouseLossTest : public HouseWithDriver {
protected:
    void LoseServer() {
        server.Kill();
        ASSERT_TRUE(loop.RunUntil([&] { return !house->GetCore().GetBindings().WhyNotReady().empty(); }));
    }
};

TEST_F(HouseLossTest, RoomsHearNothingWhenTheirServerIsLost) {
    PlayInRoom1();
    house->Post("/api/rooms/2/select", R"({"join":1})");
    LoseServer();
    EXPECT_FALSE(house->IsRouted(1));
    EXPECT_FALSE(house->IsRouted(2));
    EXPECT_EQ(Add(1).status, 503);
    EXPECT_EQ(house->Post("/api/rooms/1/select", "").status, 503);
}

TEST_F(HouseLossTest, TheNextCommandPlaysOnTheServerThatCameBack) {
    PlayInRoom1();
    for (int round = 0; round < 2; ++round) {
        LoseServer();
        server.Restart();
        ASSERT_TRUE(Ready());
        ASSERT_TRUE(Hears("reset"));
        EXPECT_FALSE(house->IsRouted(1));
        EXPECT_EQ(Add(1).status, 200);
        EXPECT_TRUE(house->IsRouted(1));
        EXPECT_TRUE(Hears("addstr"));
        EXPECT_TRUE(loop.RunUntil([&] {
            const json media = house->Room(1)["media"];
            return media.is_object() && media.value("title", "") == "Song 0";
        }));
    }
}

TEST_F(HouseLossTest, AServerLostBeforeItAnsweredIsNoDifferent) {
    server.Mute();
    ASSERT_EQ(Add(1).status, 200);
    LoseServer();
    EXPECT_FALSE(house->IsRouted(1));
    server.Unmute();
    server.Restart();
    ASSERT_TRUE(Ready());
    EXPECT_EQ(Add(1).status, 200);
    EXPECT_TRUE(house->IsRouted(1));
}

TEST_F(HouseLossTest, StoppingWhileMusicPlaysIsClean) {
    PlayInRoom1();
    house->Stop();
    EXPECT_TRUE(loop.RunUntil([&] { return !server.IsConnected(); }));
}

} // namespace
} // namespace korvel::controller
