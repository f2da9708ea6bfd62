// What watchers are told.
#include <algorithm>

#include "Bed.h"
#include "WatchClient.h"
#include "WebServer.h"

namespace korvel::tests {
namespace {

using nlohmann::json;

class Watching : public Bed {
protected:
    std::unique_ptr<WatchClient> Watch() {
        auto watcher = std::make_unique<WatchClient>(ServerPort());
        EXPECT_EQ(watcher->Greet().value("hello", 0), 1);
        return watcher;
    }
};

// The position at this time of the server's clock.
double PositionAt(const json& stream, double clock) {
    const json& position = stream.at("position");
    return position["ms"].get<double>() +
           position["rate"].get<double>() * (clock - position["clock"].get<double>());
}

TEST_F(Watching, BeginsWithAllStreamsThatThereAre) {
    const auto driver = Connect();
    EXPECT_EQ(driver->AddStream(), 1U);
    EXPECT_EQ(driver->AddStream("addann"), 2U);
    EXPECT_EQ(driver->Ask("addcli 1 127.0.0.1 40000"), "OK addcli 1");
    WatchClient watcher(ServerPort());
    const json hello = watcher.Greet();
    EXPECT_EQ(hello["hello"], 1);
    EXPECT_EQ(hello["run"].get<std::string>().size(), 16U);
    EXPECT_TRUE(hello["clock"].is_number_unsigned());
    EXPECT_EQ(hello["streams"], (json{1, 2}));
    json idle = {{"stream", 1},
                 {"media", nullptr},
                 {"serial", 0},
                 {"state", "stopped"},
                 {"position", nullptr},
                 {"duration", nullptr},
                 {"buffer", nullptr},
                 {"live", false},
                 {"canSeek", false},
                 {"error", nullptr},
                 {"clients", {{{"ip", "127.0.0.1"}, {"port", 40000}}}}};
    EXPECT_EQ(watcher.Next(), idle);
    idle["stream"] = 2;
    idle["clients"] = json::array();
    EXPECT_EQ(watcher.Next(), idle);
    const json again = watcher.Greet();
    EXPECT_EQ(again["run"], hello["run"]);
}

TEST_F(Watching, ARunHasItsOwnName) {
    const auto run = [this] {
        Process server(m_serverProgram, {"--port", "0"}, PathOf("other.log"));
        WatchClient watcher(PortOf(server.ReadLine().value_or("")));
        return watcher.Greet()["run"];
    };
    EXPECT_NE(run(), run());
}

TEST_F(Watching, StreamsComeChangeAndGo) {
    const auto watcher = Watch();
    const auto driver = Connect();
    const std::uint32_t stream = driver->AddStream();
    EXPECT_TRUE(watcher->SeesState(stream, "stopped"));
    driver->Ask("addcli " + std::to_string(stream) + " 127.0.0.1 40000");
    EXPECT_TRUE(watcher->Sees(stream, [](const json& now) { return now["clients"].size() == 1; }));
    driver->Ask("remcli " + std::to_string(stream) + " 127.0.0.1 40000");
    EXPECT_TRUE(watcher->Sees(stream, [](const json& now) { return now["clients"].empty(); }));
    driver->Ask("remstr " + std::to_string(stream));
    EXPECT_EQ(watcher->Next(), (json{{"gone", stream}}));

    const std::uint32_t other = driver->AddStream();
    EXPECT_TRUE(watcher->SeesState(other, "stopped"));
    driver->Ask("reset");
    EXPECT_EQ(watcher->Next(), (json{{"gone", other}}));
}

TEST_F(Watching, AConnectionThatEndsTakesItsStreamsWithIt) {
    const auto watcher = Watch();
    auto driver = Connect();
    const std::uint32_t stream = driver->AddStream();
    EXPECT_TRUE(watcher->SeesState(stream, "stopped"));
    driver.reset();
    EXPECT_EQ(watcher->Next(), (json{{"gone", stream}}));
}

TEST_F(Watching, ASongIsToldFewTimesAndItsPositionIsWhatIsHeard) {
    const auto room = AddRoom();
    const auto watcher = Watch();
    const auto driver = Connect();
    const std::uint32_t stream = driver->AddStream();
    const std::string number = std::to_string(stream);
    const std::string song = FileMedia(ToneFile("a.wav", {{500, 30}}));
    driver->Ask("addcli " + number + " " + room->Client());
    driver->Ask("addmed " + number + " " + song);
    EXPECT_TRUE(watcher->SeesState(stream, "playing"));
    EXPECT_TRUE(watcher->Sees(stream, [](const json& now) { return now["canSeek"] == true; }));
    const json playing = watcher->Stream(stream);
    EXPECT_EQ(playing["media"], song);
    EXPECT_EQ(playing["serial"], 1);
    EXPECT_NEAR(playing["duration"].get<double>(), 30000, 10);
    EXPECT_EQ(playing["position"]["rate"], 1);
    EXPECT_EQ(playing["live"], false);
    EXPECT_EQ(playing["buffer"], nullptr);

    EXPECT_TRUE(room->Hears(500, 1.5));
    driver->Ask("setsta " + number + " pause");
    EXPECT_TRUE(watcher->SeesState(stream, "paused"));
    const json paused = watcher->Stream(stream);
    EXPECT_EQ(paused["position"]["rate"], 0);
    EXPECT_TRUE(room->Hears(0, 0.3));
    const double heard = room->Heard().Seconds(500) * 1000;
    EXPECT_NEAR(paused["position"]["ms"].get<double>(), heard, 150);
    // The last that was told before foretold it.
    const std::vector<json>& told = watcher->Told(stream);
    const json& before = told.at(told.size() - 2);
    EXPECT_EQ(before["state"], "playing");
    EXPECT_NEAR(PositionAt(before, paused["position"]["clock"].get<double>()),
                paused["position"]["ms"].get<double>(), 250);

    driver->Ask("setsta " + number + " play");
    EXPECT_TRUE(watcher->Sees(stream, [](const json& now) { return now["position"]["rate"] == 1; }));
    EXPECT_NEAR(watcher->Stream(stream)["position"]["ms"].get<double>(),
                paused["position"]["ms"].get<double>(), 50);
    EXPECT_LT(told.size(), 12U) << json(told).dump(1);
}

TEST_F(Watching, TheSameSongTwiceIsToldApart) {
    const auto watcher = Watch();
    const auto driver = Connect();
    const std::uint32_t stream = driver->AddStream();
    const std::string line =
        "addmed " + std::to_string(stream) + " " + FileMedia(ToneFile("a.wav", {{500, 0.2}}));
    driver->Ask(line);
    EXPECT_TRUE(watcher->SeesState(stream, "ended"));
    const json ended = watcher->Stream(stream);
    EXPECT_EQ(ended["serial"], 1);
    EXPECT_NE(ended["media"], nullptr);
    EXPECT_EQ(ended["position"], nullptr);
    driver->Ask(line);
    EXPECT_TRUE(
        watcher->Sees(stream, [](const json& now) { return now["serial"] == 2 && now["state"] == "ended"; }));
    driver->Ask("remmed " + std::to_string(stream));
    EXPECT_TRUE(watcher->SeesState(stream, "stopped"));
    EXPECT_EQ(watcher->Stream(stream)["media"], nullptr);
}

TEST_F(Watching, WhatIsBadSaysWhy) {
    const auto watcher = Watch();
    const auto driver = Connect();
    const std::uint32_t stream = driver->AddStream();
    driver->Ask("addmed " + std::to_string(stream) + " " + FileMedia(PathOf("missing.wav")));
    EXPECT_TRUE(watcher->SeesState(stream, "bad"));
    EXPECT_EQ(watcher->Stream(stream)["error"], "No such file or directory");
    driver->Ask("addmed " + std::to_string(stream) + " " + FileMedia(ToneFile("a.wav", {{500, 0.2}})));
    EXPECT_TRUE(watcher->SeesState(stream, "ended"));
    EXPECT_EQ(watcher->Stream(stream)["error"], nullptr);
}

TEST_F(Watching, AStationIsLiveAndSaysThatItIsLost) {
    const WebServer web(WavOf({{500, 0.25}}), false);
    const auto watcher = Watch();
    const auto driver = Connect();
    const std::uint32_t stream = driver->AddStream();
    driver->Ask("addmed " + std::to_string(stream) + " \"file:/stream-" + web.Url() + "live\"");
    EXPECT_TRUE(watcher->SeesState(stream, "reconnecting"));
    const json lost = watcher->Stream(stream);
    EXPECT_EQ(lost["live"], true);
    EXPECT_EQ(lost["canSeek"], false);
    EXPECT_EQ(lost["duration"], nullptr);
    EXPECT_EQ(lost["position"], nullptr);
    EXPECT_EQ(lost["error"], "it has ended");
    EXPECT_TRUE(watcher->SeesState(stream, "playing"));
    EXPECT_EQ(watcher->Stream(stream)["error"], nullptr);
    EXPECT_EQ(watcher->Stream(stream)["buffer"], 100);
}

TEST_F(Watching, APingIsAnsweredWithTheClock) {
    const auto watcher = Watch();
    const json first = watcher->Ping(7);
    EXPECT_EQ(first["pong"], 7);
    EXPECT_GE(watcher->Ping(8)["clock"], first["clock"]);
}

TEST_F(Watching, TheDriversLinesStayAsTheyAre) {
    const auto watcher = Watch();
    const auto driver = Connect();
    EXPECT_EQ(driver->Ask("reset"), "OK reset");
    EXPECT_EQ(driver->Ask("{\"watch\":1}"), "NO {\"watch\":1}");
    EXPECT_TRUE(driver->SendRaw("{\"watch\":1}\r\n"));
    EXPECT_EQ(driver->ReadLine(), "0 NO unknown") << "it has begun as a driver";
    EXPECT_EQ(driver->AddStream(), 1U);
    EXPECT_TRUE(watcher->SeesState(1, "stopped"));
    watcher->Lines().SendRaw("9 remstr 1\r\n");
    EXPECT_EQ(watcher->Next()["problem"]["code"], "malformed") << "it has begun as a watcher";
    EXPECT_EQ(driver->Ask("setsta 1 play"), "OK setsta 1");
    EXPECT_EQ(driver->NextEvent(std::chrono::milliseconds(0)), "");
}

} // namespace
} // namespace korvel::tests
