// What a person types, with the real driver.
#include <filesystem>
#include <sstream>

#include "HouseWithDriver.h"
#include "Sound.h"
#include "ctl/Actions.h"

namespace korvel::controller {
namespace {

using ctl::Actions;

class HouseCtlTest : public HouseWithDriver {
protected:
    void Adjust(Config& config) override {
        config.stations = {{"News", "http://radio.example/news", "", ""}};
        config.inputs = {"Turntable"};
    }
    // What the action prints, or its failure.
    std::string Run(const std::function<void(Actions&)>& action) {
        std::ostringstream out;
        EXPECT_TRUE(loop.RunBeside([&] {
            try {
                ctl::Client client("http://127.0.0.1:" + std::to_string(house->GetPort()));
                Actions actions(client, out);
                action(actions);
            } catch (const std::exception& error) {
                out << "failure: " << error.what();
            }
        }));
        return out.str();
    }
};

TEST_F(HouseCtlTest, PlaysAStation) {
    EXPECT_EQ(Run([](Actions& a) { a.PlayStation("kitchen", "news"); }), "");
    EXPECT_TRUE(Hears("addmed 1 \"file:/stream-http://radio.example/news\""));
    EXPECT_EQ(Run([](Actions& a) { a.PlayStation("kitchen", "olds"); }),
              "failure: there is no station 'olds'");
}

TEST_F(HouseCtlTest, SaysWhyAStationDoesNotPlay) {
    server.EndMedia("BAD", "Could not connect to server");
    EXPECT_EQ(Run([](Actions& a) { a.PlayStation("kitchen", "news"); }),
              "failure: the station 'news' cannot be played: Could not connect to server");
}

TEST_F(HouseCtlTest, PlaysALineInputAndShowsIt) {
    EXPECT_EQ(Run([](Actions& a) { a.PlayInput("1", "turntable"); }), "");
    EXPECT_TRUE(Hears("addmed 1 Turntable"));
    EXPECT_EQ(Run([](Actions& a) { a.Rooms(); }),
              "1  Living room: queue 10000, Turntable\n2  Kitchen: off\n");
}

TEST_F(HouseCtlTest, PlaysASavedPlaylist) {
    house->GetCore().GetLibrary().Database().PutPlaylist(0, 0, "Evening", {{1, "", kFirstSong + 1, 0}});
    EXPECT_EQ(Run([](Actions& a) { a.PlayPlaylist("1", "evening"); }), "");
    EXPECT_TRUE(Hears("addmed 1 \"file://music/1.flac\""));
}

TEST_F(HouseCtlTest, AnnouncesAFileOfTheFolderItIsInAndWaitsForItsEnd) {
    const std::string chime = state.Write("chime.wav", tests::WavOf({{500, 0.1}}));
    const std::string relative = std::filesystem::relative(chime).string();
    server.EndMedia("EOM");
    EXPECT_EQ(Run([&](Actions& a) { a.Announce(relative, {"Kitchen", "1"}); }), "");
    EXPECT_TRUE(server.Heard("addmed 1 \"file:/" + chime + "\""));
    EXPECT_TRUE(house->Get("/api/status").Json()["announcement"].is_null());
    EXPECT_TRUE(Told({{"type", "announcement"}, {"state", "complete"}, {"rooms", {1, 2}}}));
}

TEST_F(HouseCtlTest, SaysWhyAnAnnouncementCannotBeMade) {
    EXPECT_EQ(Run([](Actions& a) { a.Announce("/nowhere.wav", {"Kitchen"}); }),
              "failure: /nowhere.wav is not there or cannot be read");
    EXPECT_EQ(Run([](Actions& a) { a.Announce("/nowhere.wav", {"Attic"}); }),
              "failure: there is no room 'Attic'; the rooms are: Living room, Kitchen");
    const std::string words = state.Write("words.wav", "words");
    EXPECT_EQ(Run([&](Actions& a) { a.Announce(words, {"Kitchen"}); }),
              "failure: " + words + " holds no sound that can be played");
}

TEST_F(HouseCtlTest, SaysWhyAnAnnouncementFailed) {
    const std::string chime = state.Write("chime.wav", tests::WavOf({{500, 0.1}}));
    server.EndMedia("BAD", "not a sound");
    EXPECT_EQ(Run([&](Actions& a) { a.Announce(chime, {"Kitchen"}); }),
              "failure: the announcement failed: not a sound");
    server.EndMedia("");
    house->GetCore().GetEvents().Add([this](const auto& text) {
        if (nlohmann::json::parse(*text).value("state", "") == "playing")
            asio::post(loop.loop, [this] { house->GetCore().GetRouter().TurnOff(2); });
    });
    EXPECT_EQ(Run([&](Actions& a) { a.Announce(chime, {"Kitchen"}); }),
              "failure: the announcement was abandoned: a room was switched off");
}

} // namespace
} // namespace korvel::controller
