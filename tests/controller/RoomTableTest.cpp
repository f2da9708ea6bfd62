#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "driver/rooms/RoomRouter.h"
#include "driver/rooms/RoomTable.h"

namespace korvel::controller {
namespace {

TEST(RoomTable, ReadsWhatPlaysFromTheMediaInfo) {
    const auto media = ParseMediaInfo(
        "<mediainfo><deviceid>100002</deviceid><title>A &amp; B</title><genre>SmF6eg==</genre>"
        "<img>Y292ZXIvMTA1MA==</img></mediainfo>");
    EXPECT_EQ(media.at("title"), "A & B");
    EXPECT_EQ(media.at("genre"), "Jazz");
    EXPECT_EQ(media.at("img"), "cover/1050");
}

TEST(RoomTable, AMediaInfoThatIsNoneIsEmpty) {
    EXPECT_TRUE(ParseMediaInfo("").empty());
    EXPECT_TRUE(ParseMediaInfo("<mediainfo>").empty());
    EXPECT_TRUE(ParseMediaInfo("<mediainfo></mediainfo>").empty());
}

TEST(RoomTable, ShowsARoomThatHearsNothing) {
    const RoomTable rooms({{3, "Bath", "10.0.0.3", 6200, 1}});
    const nlohmann::json room = ToJson(*rooms.Find(3));
    EXPECT_EQ(room["name"], "Bath");
    EXPECT_EQ(room["routed"], false);
    EXPECT_EQ(room["queue"], 0);
    EXPECT_EQ(room["source"], 0);
    EXPECT_TRUE(room["media"].is_null());
    EXPECT_EQ(room["endpoint"]["port"], 6200);
    EXPECT_EQ(rooms.Find(4), nullptr);
}

TEST(RoomRouter, ReadsAQueueIdFromAnAnswer) {
    EXPECT_EQ(QueueIdOf("<queueid>10000</queueid>"), 10000u);
    EXPECT_EQ(QueueIdOf(""), 0u);
    EXPECT_EQ(QueueIdOf("<queues></queues>"), 0u);
}

} // namespace
} // namespace korvel::controller
