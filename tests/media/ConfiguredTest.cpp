// Stations and line inputs that somebody set up.
#include <gtest/gtest.h>

#include "Songs.h"
#include "media/MediaDatabase.h"

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

} // namespace
} // namespace korvel::media
