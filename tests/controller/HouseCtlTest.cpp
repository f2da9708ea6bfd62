// What a person types, with the real driver.
#include <filesystem>
#include <sstream>

#include "HouseWithDriver.h"
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

TEST_F(HouseCtlTest, AnnouncesAFileOfTheFolderItIsIn) {
    const std::string chime = state.Write("chime.wav", "sound");
    const std::string relative = std::filesystem::relative(chime).string();
    EXPECT_EQ(Run([&](Actions& a) { a.Announce(relative, {"Kitchen", "1"}); }), "");
    EXPECT_EQ(house->Get("/api/status").Json()["announcement"]["rooms"], (nlohmann::json{1, 2}));
    EXPECT_EQ(Run([&](Actions& a) { a.Announce("/nowhere.wav", {"Kitchen"}); }),
              "failure: /nowhere.wav is not there or cannot be read");
}

} // namespace
} // namespace korvel::controller
