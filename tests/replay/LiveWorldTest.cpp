#include <gtest/gtest.h>

#include "platform/CmdMessage.h"
#include "replay/LiveWorld.h"

namespace korvel::replay {
namespace {

TEST(LiveEngine, NumbersStreamsFromOne) {
    LiveWorld live;
    live.AddEngine(3000);
    live.OnLine(3000, "1 addstr\r\n");
    live.OnLine(3000, "2 addann\r\n");
    EXPECT_EQ(live.TakeAnswer(), R"(data 3000 "1 addstr stream=1\r\n")");
    EXPECT_EQ(live.TakeAnswer(), R"(data 3000 "* SYS addann=2\r\n")");
    EXPECT_EQ(live.TakeAnswer(), R"(data 3000 "2 addann stream=2\r\n")");
    EXPECT_EQ(live.TakeAnswer(), std::nullopt);
}

TEST(LiveEngine, AcceptsEverythingElse) {
    LiveWorld live;
    live.AddEngine(3000);
    live.OnLine(3000, "0 reset\r\n");
    live.OnLine(3000, "3 addcli 1 10.0.0.7 6200\r\n");
    live.OnLine(3000, "4 \r\n");
    EXPECT_EQ(live.TakeAnswer(), R"(data 3000 "0 OK reset\r\n")");
    EXPECT_EQ(live.TakeAnswer(), R"(data 3000 "3 OK addcli 1\r\n")");
    EXPECT_EQ(live.TakeAnswer(), R"(data 3000 "4 OK\r\n")");
}

TEST(LiveEngine, EachCountsForItself) {
    LiveWorld live;
    live.AddEngine(3000);
    live.AddEngine(3001);
    live.OnLine(3000, "1 addstr\r\n");
    live.OnLine(3001, "1 addstr\r\n");
    live.OnLine(3002, "1 addstr\r\n");
    live.AddEngine(3000);
    live.OnLine(3000, "2 addstr\r\n");
    EXPECT_EQ(live.TakeAnswer(), R"(data 3000 "1 addstr stream=1\r\n")");
    EXPECT_EQ(live.TakeAnswer(), R"(data 3001 "1 addstr stream=1\r\n")");
    EXPECT_EQ(live.TakeAnswer(), R"(data 3000 "2 addstr stream=2\r\n")");
    EXPECT_EQ(live.TakeAnswer(), std::nullopt);
}

TEST(LiveRoom, AnswersTheTwoMessagesThatConcernIt) {
    LiveWorld live;
    live.AddRoom(7, {"10.0.0.7", 6200, 1});
    auto select = kv::CreateCmdMessage("SELECT_AUDIO_DEVICE");
    select->AddParam("deviceid", "INT", "100002");
    select->AddParam("queueid", "INT", "10000");
    live.OnMessage(7, *select);
    live.OnMessage(8, *select);
    live.OnMessage(7, *kv::CreateCmdMessage("UPDATE_MEDIA_INFO"));
    live.OnMessage(7, *kv::CreateCmdMessage("DESELECT_AUDIO_PATH"));
    EXPECT_EQ(live.TakeAnswer(), "select 7 queue=10000 kind=QUEUE ip=10.0.0.7 port=6200 channel=1 target=7");
    EXPECT_EQ(live.TakeAnswer(), "deselect 7");
    EXPECT_EQ(live.TakeAnswer(), std::nullopt);
}

TEST(LiveWorld, AnswersCanBeDropped) {
    LiveWorld live;
    live.AddEngine(3000);
    live.OnLine(3000, "1 addstr\r\n");
    live.DropAnswers();
    EXPECT_EQ(live.TakeAnswer(), std::nullopt);
}

} // namespace
} // namespace korvel::replay
