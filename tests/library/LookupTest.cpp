// What drivers look up: locations, records, lists and the songs of albums, artists and genres.
#include <gtest/gtest.h>

#include "Songs.h"
#include "library/MediaDatabase.h"

namespace korvel::media {
namespace {

class Lookup : public testing::Test {
protected:
    void Put(std::uint32_t id, const std::string& title, const std::string& artist, const std::string& album,
             const std::string& genre = "", std::uint32_t device = 100100) {
        SongRecord song = MakeSong(id, title, artist, album, genre);
        song.location = "/music/" + std::to_string(id);
        song.deviceId = device;
        database.PutSong(song);
    }
    std::string Location(std::uint32_t id, const std::string& category) {
        std::string location = "unchanged";
        const std::int32_t result = database.GetLocation(id, category, location);
        EXPECT_EQ(result < 0, location == "unchanged");
        return location;
    }
    static std::string Text(const kv::auto_com<KVXML::INode>& node) { return node ? node->ToText() : "none"; }
    static std::vector<std::uint32_t> Ids(const std::vector<MediaItem>& items) {
        std::vector<std::uint32_t> ids;
        for (const MediaItem& item : items) {
            EXPECT_EQ(item.type, 1);
            EXPECT_EQ(item.externalId, "");
            ids.push_back(item.mediaId);
        }
        return ids;
    }
    using IdList = std::vector<std::uint32_t>;

    MediaDatabase database{":memory:"};
};

TEST_F(Lookup, GivesTheLocationByCategory) {
    Put(1, "One", "Ann", "A");
    Put(2, "Two", "Ann", "A");
    database.PutStation({1, "http://radio", "Radio", "", ""});
    database.PutAlbum({7, "A", "", {2, 1}});
    database.PutPlaylist(8, 100002, "Mine", {{2, "Tra.1", 0, 0}, {1, "", 2, 0}});
    EXPECT_EQ(Location(1, "SONG"), "/music/1");
    EXPECT_EQ(Location(1, "SONGS"), "/music/1");
    EXPECT_EQ(Location(1, "BROADCAST_AUDIO"), "http://radio");
    for (const char* category : {"ALBUM", "ALBUM_MP3", "ALBUM_CD"})
        EXPECT_EQ(Location(7, category), "/music/2") << category;
    EXPECT_EQ(Location(8, "PLAYLIST"), "/music/2");
}

TEST_F(Lookup, FailsForAnUnknownIdOrCategory) {
    Put(1, "One", "Ann", "A");
    database.PutAlbum({7, "Empty", "line1", {}});
    for (const char* category : {"SONG", "SONGS", "BROADCAST_AUDIO", "ALBUM", "PLAYLIST"})
        EXPECT_EQ(Location(99, category), "unchanged") << category;
    EXPECT_EQ(Location(7, "ALBUM"), "unchanged");
    EXPECT_EQ(Location(1, "QUEUE"), "unchanged");
    EXPECT_EQ(Location(1, "song"), "unchanged");
    EXPECT_EQ(Location(1, ""), "unchanged");
    EXPECT_EQ(Location(4294967295u, "SONG"), "unchanged");
}

TEST_F(Lookup, KnowsTheStorageDeviceOfASong) {
    Put(1, "One", "Ann", "A", "", 100107);
    EXPECT_EQ(database.GetStorageDevice(1), 100107u);
    EXPECT_EQ(database.GetStorageDevice(2), 0u);
}

TEST_F(Lookup, DescribesAnAlbumWithItsSongsInOrder) {
    Put(1, "One", "Ann", "A");
    database.PutAlbum({7, "A & B", "line1", {12, 1, 11}});
    EXPECT_EQ(Text(database.GetAlbumInfo(7)),
              "<album><id>7</id><title>A &amp; B</title><LOCAL_INPUT_NAME>line1</LOCAL_INPUT_NAME>"
              "<song><id>12</id></song><song><id>1</id></song><song><id>11</id></song></album>");
    database.PutAlbum({8, "", "", {}});
    EXPECT_EQ(Text(database.GetAlbumInfo(8)), "<album><id>8</id></album>");
    EXPECT_EQ(Text(database.GetAlbumInfo(9)), "none");
}

TEST_F(Lookup, DescribesTheRecordsOfEachCategory) {
    SongRecord song = MakeSong(1, "One", "Ann", "A", "Jazz");
    song.image = "http://img";
    database.PutSong(song);
    database.PutStation({2, "http://radio", "Radio", "News", "r.png"});
    database.PutAlbum({3, "A", "", {1}});
    database.PutPlaylist(4, 100002, "Mine", {{1, "", 1, 0}, {2, "5", 0, 0}, {5, "x", 77, 3}});
    EXPECT_EQ(Text(database.GetMediaRecord(1, "SONG")),
              "<song><name>One</name><album_title>A</album_title><artist>Ann</artist><genre>Jazz</genre>"
              "<img>http://img</img></song>");
    EXPECT_EQ(Text(database.GetMediaRecord(2, "BROADCAST_AUDIO")),
              "<station><name>Radio</name><genre>News</genre><img>r.png</img></station>");
    EXPECT_EQ(Text(database.GetMediaRecord(3, "ALBUM")), Text(database.GetAlbumInfo(3)));
    EXPECT_EQ(Text(database.GetMediaRecord(4, "PLAYLIST")),
              "<playlist><title>Mine</title><songs><song><id>1</id></song><song><id>0</id></song>"
              "<song><id>0</id></song></songs></playlist>");
}

TEST_F(Lookup, LeavesOutWhatIsNotKnown) {
    database.PutSong(MakeSong(1, "One"));
    EXPECT_EQ(Text(database.GetMediaRecord(1, "SONG")), "<song><name>One</name></song>");
    EXPECT_EQ(Text(database.GetMediaRecord(2, "SONG")), "none");
    EXPECT_EQ(Text(database.GetMediaRecord(1, "PLAYLIST")), "none");
    EXPECT_EQ(Text(database.GetMediaRecord(1, "NOTHING")), "none");
}

TEST_F(Lookup, ListsTheRecordsOfADevice) {
    database.PutPlaylist(5, 100002, "B", {});
    database.PutPlaylist(3, 100002, "A", {});
    database.PutPlaylist(4, 100003, "Other", {});
    const auto list = [&](std::uint32_t device, std::int32_t first, std::int32_t count) {
        return Text(database.GetMediaList(device, "PLAYLIST", "", "", first, count));
    };
    EXPECT_EQ(
        list(100002, -1, -1),
        "<list><playlist><id>3</id><title>A</title></playlist><playlist><id>5</id><title>B</title></playlist>"
        "</list>");
    EXPECT_EQ(list(100002, 1, 5), "<list><playlist><id>5</id><title>B</title></playlist></list>");
    EXPECT_EQ(list(100002, 0, 1), "<list><playlist><id>3</id><title>A</title></playlist></list>");
    EXPECT_EQ(list(100009, -1, -1), "<list></list>");
    EXPECT_EQ(database.GetMediaList(0, "PLAYLIST", "", "", -1, -1)->GetChildCount(), 3u);
    EXPECT_EQ(Text(database.GetMediaList(100002, "QUEUE", "", "", -1, -1)), "none");
}

TEST_F(Lookup, FiltersListsByArtistAndGenre) {
    Put(1, "One", "Ann", "A", "Jazz");
    Put(2, "Two", "Bob", "A", "Jazz");
    Put(3, "Three", "Ann", "B", "Rock", 100101);
    database.PutAlbum({7, "A", "", {1, 2}});
    database.PutAlbum({8, "B", "", {3}});
    database.PutStation({1, "http://radio", "Radio", "", ""});
    const auto count = [&](std::uint32_t device, const char* category, const char* artist,
                           const char* genre) {
        return database.GetMediaList(device, category, artist, genre, -1, -1)->GetChildCount();
    };
    EXPECT_EQ(count(0, "SONG", "", ""), 3u);
    EXPECT_EQ(count(100100, "SONG", "", ""), 2u);
    EXPECT_EQ(count(0, "SONG", "Ann", ""), 2u);
    EXPECT_EQ(count(0, "SONG", "Ann", "Jazz"), 1u);
    EXPECT_EQ(count(0, "ALBUM", "Ann", ""), 2u);
    EXPECT_EQ(count(0, "ALBUM", "", "Rock"), 1u);
    EXPECT_EQ(count(100101, "ALBUM", "", ""), 1u);
    EXPECT_EQ(count(100101, "BROADCAST_AUDIO", "", ""), 1u);
}

TEST_F(Lookup, QueuesAlbumsInTheOrderAskedFor) {
    for (const std::uint32_t id : {1u, 2u, 3u, 4u})
        Put(id, "Song", "Ann", "A", "", id == 4 ? 100101u : 100100u);
    database.PutAlbum({7, "Z", "", {3, 1}});
    database.PutAlbum({8, "A", "", {4, 2, 99}});
    EXPECT_EQ(Ids(database.GetSongsForAlbums({7, 8}, {})), (IdList{3, 1, 4, 2}));
    EXPECT_EQ(Ids(database.GetSongsForAlbums({8, 7}, {100100})), (IdList{2, 3, 1}));
    EXPECT_EQ(Ids(database.GetSongsForAlbums({8, 7}, {1, 100101, 2})), (IdList{4}));
    EXPECT_EQ(Ids(database.GetSongsForAlbums({12}, {})), IdList{});
    EXPECT_EQ(Ids(database.GetSongsForAlbums({}, {})), IdList{});
}

TEST_F(Lookup, MatchesArtistsAndGenresByExactBytes) {
    Put(1, "One", "Ann", "A", "Jazz");
    Put(2, "Two", "ann", "A", "jazz");
    Put(3, "Three", "Ann ", "A", "Jazz Rock");
    Put(4, "Four", "100%_", "A", "Jazz", 100101);
    database.PutSong(MakeSong(5, "Five", "Bob", "", "Pop", "Ann"));
    EXPECT_EQ(Ids(database.GetSongsByArtist({}, "Ann")), (IdList{5, 1}));
    EXPECT_EQ(Ids(database.GetSongsByArtist({}, "%")), IdList{});
    EXPECT_EQ(Ids(database.GetSongsByArtist({}, "100%_")), (IdList{4}));
    EXPECT_EQ(Ids(database.GetSongsByArtist({}, "x' OR '1'='1")), IdList{});
    EXPECT_EQ(Ids(database.GetSongsByGenre({}, "Jazz")), (IdList{1, 4}));
    EXPECT_EQ(Ids(database.GetSongsByGenre({100101, 7}, "Jazz")), (IdList{4}));
    EXPECT_EQ(Ids(database.GetSongsByArtistAndGenre({}, "Ann", "Jazz")), (IdList{1}));
    EXPECT_EQ(Ids(database.GetSongsByArtistAndGenre({100101}, "Ann", "Jazz")), IdList{});
}

TEST_F(Lookup, AnEmptyArtistOrGenreIsThatOfSongsWithout) {
    Put(1, "One", "", "A", "Jazz");
    Put(2, "Two", "Ann", "A", "");
    EXPECT_EQ(Ids(database.GetSongsByArtist({}, "")), (IdList{1}));
    EXPECT_EQ(Ids(database.GetSongsByGenre({}, "")), (IdList{2}));
    EXPECT_EQ(Ids(database.GetSongsByArtistAndGenre({}, "", "")), IdList{});
}

TEST_F(Lookup, OrdersSongsByAlbumDiscTrackAndTitle) {
    const auto put = [&](std::uint32_t id, const char* album, std::uint32_t disc, std::uint32_t track,
                         const char* title) {
        SongRecord song = MakeSong(id, title, "Ann", album);
        song.discNumber = disc;
        song.trackNumber = track;
        database.PutSong(song);
    };
    put(1, "B", 1, 1, "x");
    put(2, "A", 2, 1, "x");
    put(3, "A", 1, 2, "b");
    put(4, "A", 1, 2, "a");
    put(5, "A", 1, 1, "z");
    EXPECT_EQ(Ids(database.GetSongsByArtist({}, "Ann")), (IdList{5, 4, 3, 2, 1}));
}

TEST_F(Lookup, SongsPutByHandWithoutTracksGoByTheirIds) {
    Put(3, "A", "Ann", "Same", "Jazz");
    Put(1, "C", "Ann", "Same", "Jazz");
    Put(2, "B", "Ann", "Same", "Jazz");
    EXPECT_EQ(Ids(database.GetSongsByArtist({}, "Ann")), (IdList{1, 2, 3}));
    EXPECT_EQ(Ids(database.GetSongsByGenre({}, "Jazz")), (IdList{1, 2, 3}));
}

} // namespace
} // namespace korvel::media
