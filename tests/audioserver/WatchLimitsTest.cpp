// Watchers that go too far.
#include "Bed.h"
#include "WatchClient.h"

namespace korvel::tests {
namespace {

using nlohmann::json;

constexpr std::size_t kMaxLineBytes = 64 * 1024;
constexpr std::size_t kMaxWatchers = 8;
constexpr int kMaxNonsense = 8;

using WatchLimits = Bed;

TEST_F(WatchLimits, AFurtherWatcherTakesThePlaceOfTheOneThatIsSilentForLongest) {
    const auto driver = Connect();
    std::vector<std::unique_ptr<WatchClient>> watchers;
    for (std::size_t count = 0; count < kMaxWatchers; ++count) {
        watchers.push_back(std::make_unique<WatchClient>(ServerPort()));
        ASSERT_EQ(watchers.back()->Greet().value("hello", 0), 1);
    }
    EXPECT_EQ(watchers[0]->Ping(1)["pong"], 1);
    WatchClient further(ServerPort());
    EXPECT_EQ(further.Greet().value("hello", 0), 1);
    EXPECT_TRUE(watchers[1]->Lines().IsClosedByServer());
    EXPECT_EQ(watchers[0]->Ping(2)["pong"], 2);
    EXPECT_EQ(watchers[2]->Ping(2)["pong"], 2);
    EXPECT_NE(driver->AddStream(), 0U);
}

TEST_F(WatchLimits, NonsenseIsAnsweredAndAtLastDropped) {
    WatchClient watcher(ServerPort());
    watcher.Greet();
    for (int count = 0; count < kMaxNonsense; ++count) {
        watcher.Lines().SendRaw("{\"id\":5,\n");
        EXPECT_EQ(watcher.Next()["problem"]["code"], "malformed");
    }
    EXPECT_EQ(watcher.Ping(1)["pong"], 1) << "and is forgotten when something good comes";
    watcher.Lines().SendRaw("{\"id\":5,\"dance\":1}\n");
    EXPECT_EQ(watcher.Next()["id"], 5);
    std::string lines;
    for (int count = 0; count < kMaxNonsense; ++count)
        lines += "nonsense\n";
    watcher.Lines().SendRaw(lines);
    EXPECT_TRUE(watcher.Lines().IsClosedByServer());
}

TEST_F(WatchLimits, TheLongestLineIsReadAndALongerOneIsNone) {
    WatchClient watcher(ServerPort());
    const std::string ping = "{\"ping\":1}";
    watcher.Lines().SendRaw(ping + std::string(kMaxLineBytes - ping.size(), ' ') + "\n");
    EXPECT_EQ(watcher.Next()["pong"], 1);
    watcher.Lines().SendRaw(ping + std::string(kMaxLineBytes - ping.size() + 1, ' ') + "\n");
    EXPECT_EQ(watcher.Next()["problem"]["code"], "malformed");
    EXPECT_EQ(watcher.Ping(2)["pong"], 2);
}

TEST_F(WatchLimits, AnotherVersionIsNotSpoken) {
    WatchClient watcher(ServerPort());
    watcher.Lines().SendRaw("{\"watch\":2}\n");
    EXPECT_EQ(watcher.Next()["problem"]["code"], "version");
    EXPECT_EQ(watcher.Greet().value("hello", 0), 1);
}

TEST_F(WatchLimits, AWatcherThatDoesNotReadIsDroppedAndNobodyElseNoticesIt) {
    const auto driver = Connect();
    const std::string stream = std::to_string(driver->AddStream());
    WatchClient slow(ServerPort(), 4096);
    ASSERT_EQ(slow.Greet().value("hello", 0), 1);
    // Each is told with its whole name.
    const std::string name(kMaxLineBytes - 100, 'x');
    EXPECT_TRUE(WaitUntil([&] {
        EXPECT_EQ(driver->Ask("addmed " + stream + " " + name), "OK addmed " + stream);
        EXPECT_TRUE(driver->NextEvent().starts_with("* addmed BAD=" + stream + " "));
        return Server().Errors().find("does not read") != std::string::npos;
    })) << Server().Errors();
    EXPECT_EQ(driver->Ask("setsta " + stream + " play"), "OK setsta " + stream);
    WatchClient other(ServerPort());
    EXPECT_EQ(other.Greet()["streams"].size(), 1U);
}

} // namespace
} // namespace korvel::tests
