// Stations and line inputs that somebody set up.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "Songs.h"
#include "TempFolder.h"
#include "library/MediaDatabase.h"

namespace korvel::media {
namespace {

using Ids = std::vector<std::uint32_t>;

class ConfiguredTest : public testing::Test {
protected:
    void SetStations(const std::vector<std::string>& names) {
        std::vector<StationRecord> stations;
        for (const std::string& name : names)
            stations.push_back({0, "http://" + name, name, "Jazz", ""});
        database.SetStations(stations);
    }
    // The ids of the stations, by name.
    Ids StationIds() {
        Ids ids;
        for (const StationRecord& station : database.ListStations({}).items)
            ids.push_back(station.id);
        return ids;
    }

    MediaDatabase database{":memory:"};
};

TEST_F(ConfiguredTest, AStationKeepsItsIdAsLongAsItKeepsItsName) {
    SetStations({"Ann", "Bob", "Cis"});
    EXPECT_EQ(StationIds(), (Ids{1, 2, 3}));
    SetStations({"Cis", "Dan", "Ann"});
    EXPECT_EQ(StationIds(), (Ids{1, 3, 4}));
    EXPECT_FALSE(database.FindStation(2));
    SetStations({"Bob"});
    EXPECT_EQ(StationIds(), (Ids{5})) << "a new station, though the name was there once";
}

TEST_F(ConfiguredTest, AStationTakesItsNewAddress) {
    SetStations({"Ann"});
    database.SetStations({{0, "http://new", "Ann", "Rock", "a.png"}});
    const StationRecord station = database.FindStation(1).value();
    EXPECT_EQ(station.location, "http://new");
    EXPECT_EQ(station.genre, "Rock");
    EXPECT_EQ(station.image, "a.png");
}

TEST_F(ConfiguredTest, OfTwoStationsOfOneNameTheFirstStays) {
    database.PutStation({0, "http://a", "Ann", "", ""});
    database.PutStation({0, "http://b", "Ann", "", ""});
    SetStations({"Ann"});
    EXPECT_EQ(StationIds(), (Ids{1}));
}

TEST_F(ConfiguredTest, AnInputIsAnAlbumThatKeepsItsId) {
    EXPECT_EQ(database.SetInputs({"Turntable", "Tape"}), (Ids{1, 2}));
    EXPECT_EQ(database.FindAlbum(2)->title, "Tape");
    EXPECT_EQ(database.FindAlbum(2)->inputName, "Tape");
    EXPECT_EQ(database.SetInputs({"Tape", "Aux"}), (Ids{2, 3}));
    EXPECT_FALSE(database.FindAlbum(1));
}

TEST_F(ConfiguredTest, OtherAlbumsAreLeftAlone) {
    database.PutSong(MakeSong(5, "Blue"));
    database.PutAlbum({9, "Tape", "", {5}});
    EXPECT_EQ(database.SetInputs({"Tape"}), (Ids{10}));
    database.SetInputs({});
    EXPECT_FALSE(database.FindAlbum(10));
    EXPECT_EQ(database.FindAlbum(9)->songs, (Ids{5}));
}

// How often others have changed the file, as far as this connection knows.
int Changes(sqlite3* database) {
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(database, "PRAGMA data_version", -1, &statement, nullptr), SQLITE_OK);
    EXPECT_EQ(sqlite3_step(statement), SQLITE_ROW);
    const int changes = sqlite3_column_int(statement, 0);
    sqlite3_finalize(statement);
    return changes;
}

// A house starts on a full disk, too.
TEST(Configured, WhatIsAsItWasIsNotWritten) {
    const TempFolder folder;
    MediaDatabase library(folder / "media.db");
    const std::vector<StationRecord> stations = {{0, "http://a", "Ann", "Jazz", ""},
                                                 {0, "http://b", "Bob", "", "b"}};
    library.SetStations(stations);
    library.SetInputs({"Tape", "Aux"});
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open((folder / "media.db").c_str(), &other), SQLITE_OK);
    const int before = Changes(other);
    library.SetStations(stations);
    library.SetInputs({"Tape", "Aux"});
    EXPECT_EQ(Changes(other), before);
    library.SetStations({stations[0]});
    EXPECT_NE(Changes(other), before);
    sqlite3_close(other);
}

} // namespace
} // namespace korvel::media
