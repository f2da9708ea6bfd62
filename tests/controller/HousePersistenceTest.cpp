// What the house remembers, with the real driver.
#include "HouseWithDriver.h"

namespace korvel::controller {
namespace {

using nlohmann::json;

class HousePersistenceTest : public HouseWithDriver {};

TEST_F(HousePersistenceTest, SettingsSurviveARestart) {
    house->Command("SET_PLAYLIST_CLEAR_DELAY", {{"DELAY_VALUE", 17}});
    house->Command("SET_PLAYLIST_CLEAR_FLAG", {{"FLAG_VALUE", "false"}});
    house->Command("SET_PLAY_PREFERENCE", {{"PLAY_PREF", 3}});
    house->Command("SHUFFLE", {{"ROOM_ID", 2}, {"SHUFFLE", 1}});
    Restart();
    EXPECT_NE(Variable("ROOM_QUEUE_SETTINGS").find("2"), std::string::npos)
        << Variable("ROOM_QUEUE_SETTINGS");
    EXPECT_EQ(Variable("PLAY_PREFERENCE"), "3");
    const std::string xml = ReadFile(state.File("driver-state.xml"));
    EXPECT_NE(xml.find("<ClearPlayListDelay>17</ClearPlayListDelay>"), std::string::npos) << xml;
    EXPECT_NE(xml.find("<ClearPlayList>false</ClearPlayList>"), std::string::npos) << xml;
}

TEST_F(HousePersistenceTest, SettingsAreOnDiskBeforeAnythingEnds) {
    house->Command("SET_PLAYLIST_CLEAR_DELAY", {{"DELAY_VALUE", 23}});
    const std::string xml = ReadFile(state.File("driver-state.xml"));
    EXPECT_NE(xml.find("<ClearPlayListDelay>23</ClearPlayListDelay>"), std::string::npos) << xml;
}

TEST_F(HousePersistenceTest, ACorruptStateMeansDefaults) {
    house->Command("SET_PLAY_PREFERENCE", {{"PLAY_PREF", 3}});
    house->Stop();
    house.reset();
    state.Write("driver-state.xml", "<korvel_digital_audio><PlayPref");
    StartHouse();
    EXPECT_EQ(Variable("PLAY_PREFERENCE"), "0");
    ASSERT_EQ(state.Names("", "driver-state.xml.damaged-").size(), 1u);
}

TEST_F(HousePersistenceTest, AServerKeepsItsBindingOverRestarts) {
    for (int i = 0; i < 3; ++i)
        Restart();
    const std::string xml = ReadFile(state.File("driver-state.xml"));
    EXPECT_NE(xml.find("<lastserverid>3001</lastserverid>"), std::string::npos) << xml;
}

TEST_F(HousePersistenceTest, SavedPlaylistsArePlayedAfterARestart) {
    PlayInRoom1();
    house->Command("SAVE_PLAYLIST", {{"ROOM_ID", 1}, {"NAME", "Evening"}});
    Restart();
    const json playlists = house->Get("/api/library/playlists").Json();
    EXPECT_EQ(playlists["total"], 1) << playlists.dump();
}

} // namespace
} // namespace korvel::controller
