// The lists of user interfaces.
#include <gtest/gtest.h>

#include "Songs.h"
#include "library/MediaDatabase.h"

namespace korvel::media {
namespace {

class Browse : public testing::Test {
protected:
    void Put(std::uint32_t id, const std::string& title, const std::string& artist = "",
             const std::string& album = "", const std::string& genre = "",
             const std::string& albumArtist = "") {
        database.PutSong(MakeSong(id, title, artist, album, genre, albumArtist));
    }
    template <class Record>
    static std::vector<std::string> Titles(const Page<Record>& page) {
        std::vector<std::string> titles;
        for (const Record& record : page.items)
            titles.push_back(record.title);
        return titles;
    }
    static std::vector<std::string> Names(const Page<NameSummary>& page) {
        std::vector<std::string> names;
        for (const NameSummary& name : page.items)
            names.push_back(name.name + ":" + std::to_string(name.songCount));
        return names;
    }
    using Texts = std::vector<std::string>;

    MediaDatabase database{":memory:"};
};

TEST_F(Browse, SortsWithoutRegardToCaseAndAccents) {
    Put(1, "zebra");
    Put(2, "Éclair");
    Put(3, "Apple");
    Put(4, "eclipse");
    EXPECT_EQ(Titles(database.ListSongs({})), (Texts{"Apple", "Éclair", "eclipse", "zebra"}));
}

TEST_F(Browse, GivesOnePageAndTheTotal) {
    for (std::uint32_t id = 1; id <= 7; ++id)
        Put(id, "Song " + std::to_string(id));
    const auto page = database.ListSongs({2, 3});
    EXPECT_EQ(Titles(page), (Texts{"Song 3", "Song 4", "Song 5"}));
    EXPECT_EQ(page.total, 7u);
    EXPECT_EQ(database.ListSongs({0, 0}).total, 7u);
    EXPECT_TRUE(database.ListSongs({0, 0}).items.empty());
    EXPECT_TRUE(database.ListSongs({4294967295u, 4294967295u}).items.empty());
    EXPECT_EQ(database.ListSongs({4294967295u, 5}).total, 7u);
}

TEST_F(Browse, NeverGivesMoreThanThePageSize) {
    database.InTransaction([&] {
        for (std::uint32_t id = 1; id <= kMaxPageSize + 20; ++id)
            Put(id, "Song", "Ann", "A", "Jazz");
    });
    EXPECT_EQ(database.ListSongs({0, 4294967295u}).items.size(), kMaxPageSize);
    EXPECT_EQ(database.ListSongsOfArtist("Ann", {0, 100000}).items.size(), kMaxPageSize);
    EXPECT_EQ(database.SearchSongs("song", {0, 100000}).items.size(), kMaxPageSize);
    EXPECT_EQ(database.FindSongsByTitle("Song").size(), kMaxPageSize);
}

TEST_F(Browse, ListsArtistsOfSongsAndAlbumsWithTheirSongs) {
    Put(1, "One", "Ann", "A");
    Put(2, "Two", "Ann", "A", "", "Ann");
    Put(3, "Three", "Bob", "A", "", "Ann");
    Put(4, "Four", "ábel");
    Put(5, "Five");
    const auto artists = database.ListArtists({});
    EXPECT_EQ(Names(artists), (Texts{"ábel:1", "Ann:3", "Bob:1"}));
    EXPECT_EQ(artists.total, 3u);
    for (const NameSummary& artist : artists.items)
        EXPECT_EQ(database.ListSongsOfArtist(artist.name, {}).total, artist.songCount) << artist.name;
}

TEST_F(Browse, ListsGenresWithTheirSongs) {
    Put(1, "One", "", "", "rock");
    Put(2, "Two", "", "", "Jazz");
    Put(3, "Three", "", "", "Jazz");
    Put(4, "Four");
    EXPECT_EQ(Names(database.ListGenres({})), (Texts{"Jazz:2", "rock:1"}));
    EXPECT_EQ(Titles(database.ListSongsOfGenre("Jazz", {})), (Texts{"Two", "Three"}));
    EXPECT_EQ(database.ListSongsOfGenre("jazz", {}).total, 0u);
}

TEST_F(Browse, ListsAlbumsWithArtistPictureAndCount) {
    Put(1, "", "Ann");
    SongRecord pictured = MakeSong(2, "", "Ann");
    pictured.image = "two.jpg";
    database.PutSong(pictured);
    Put(3, "", "Bob");
    database.PutAlbum({7, "solo", "", {1, 2}});
    database.PutAlbum({8, "Both", "", {3, 1, 99}});
    database.PutAlbum({9, "Line in", "line1", {}});
    database.RefreshAlbums();
    const auto albums = database.ListAlbums({});
    EXPECT_EQ(Titles(albums), (Texts{"Both", "Line in", "solo"}));
    EXPECT_EQ(albums.total, 3u);
    EXPECT_EQ(albums.items[0].artist, "Various artists");
    EXPECT_EQ(albums.items[0].songCount, 2u);
    EXPECT_EQ(albums.items[1].artist, "");
    EXPECT_EQ(albums.items[1].image, "");
    EXPECT_EQ(albums.items[2].artist, "Ann");
    EXPECT_EQ(albums.items[2].image, "two.jpg");
    EXPECT_EQ(Titles(database.ListAlbumsOfArtist("Ann", {})), (Texts{"Both", "solo"}));
    EXPECT_EQ(Titles(database.ListAlbumsOfArtist("Bob", {})), (Texts{"Both"}));
}

TEST_F(Browse, ListsTheSongsOfAnAlbumInItsOrder) {
    for (const std::uint32_t id : {1u, 2u, 3u})
        Put(id, "Song " + std::to_string(id));
    database.PutAlbum({7, "A", "", {3, 99, 1, 2}});
    const auto songs = database.ListSongsOfAlbum(7, {});
    EXPECT_EQ(Titles(songs), (Texts{"Song 3", "Song 1", "Song 2"}));
    EXPECT_EQ(songs.total, 3u);
    EXPECT_EQ(database.ListSongsOfAlbum(8, {}).total, 0u);
}

TEST_F(Browse, ListsStations) {
    database.PutStation({2, "http://b", "beta", "News", "b.png"});
    database.PutStation({1, "http://a", "Alpha", "", ""});
    const auto stations = database.ListStations({});
    ASSERT_EQ(stations.total, 2u);
    EXPECT_EQ(stations.items[0].name, "Alpha");
    EXPECT_EQ(stations.items[1].id, 2u);
    EXPECT_EQ(stations.items[1].genre, "News");
}

TEST_F(Browse, ListsPlaylistsAndTheirEntries) {
    Put(1, "One");
    database.PutPlaylist(4, 100002, "party", {{1, "", 1, 0}, {5, "radio", 1, 9}, {1, "", 77, 0}});
    database.PutPlaylist(5, 100002, "Calm", {});
    const auto playlists = database.ListPlaylists({});
    EXPECT_EQ(Titles(playlists), (Texts{"Calm", "party"}));
    EXPECT_EQ(playlists.items[1].itemCount, 3u);
    EXPECT_EQ(playlists.items[1].deviceId, 100002u);

    const auto entries = database.ListPlaylistEntries(4, {});
    ASSERT_EQ(entries.items.size(), 3u);
    EXPECT_EQ(entries.items[0].song->title, "One");
    EXPECT_EQ(entries.items[1].item.externalId, "radio");
    EXPECT_FALSE(entries.items[1].song); // another kind of media with the id of a song
    EXPECT_EQ(entries.items[2].item.mediaId, 77u);
    EXPECT_FALSE(entries.items[2].song);
    EXPECT_EQ(database.ListPlaylistEntries(4, {1, 1}).total, 3u);
}

TEST_F(Browse, FindsNothingUnderUnknownIds) {
    EXPECT_FALSE(database.FindSong(1));
    EXPECT_FALSE(database.FindStation(1));
    EXPECT_FALSE(database.FindAlbum(0));
    EXPECT_FALSE(database.FindPlaylist(4294967295u));
}

} // namespace
} // namespace korvel::media
