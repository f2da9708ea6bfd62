// Storing and removing records, and the ids they get.
#include <gtest/gtest.h>

#include <stdexcept>

#include "Songs.h"
#include "StatementCount.h"
#include "library/MediaDatabase.h"
#include "library/ScanRecords.h"

namespace korvel::media {
namespace {

TEST(Records, ASongComesBackAsItWasPut) {
    MediaDatabase database(":memory:");
    SongRecord song = MakeSong(1050, "It's \"Blue\" -- 100% _all_; DROP TABLE songs");
    song.location = "/media/music/a\xE9'.flac";
    song.deviceId = 100100;
    song.artist = "Ann";
    song.album = "Colours";
    song.albumArtist = "Ann & Bob";
    song.genre = "Jazz";
    song.image = "a.jpg";
    song.trackNumber = 3;
    song.discNumber = 2;
    song.durationMs = 4294967295;
    song.fileSize = 5000000000;
    song.fileTimeNs = -1;
    EXPECT_EQ(database.PutSong(song), 1050u);

    const SongRecord found = database.FindSong(1050).value();
    EXPECT_EQ(found.title, song.title);
    EXPECT_EQ(found.location, song.location);
    EXPECT_EQ(found.deviceId, song.deviceId);
    EXPECT_EQ(found.artist, song.artist);
    EXPECT_EQ(found.album, song.album);
    EXPECT_EQ(found.albumArtist, song.albumArtist);
    EXPECT_EQ(found.genre, song.genre);
    EXPECT_EQ(found.image, song.image);
    EXPECT_EQ(found.trackNumber, song.trackNumber);
    EXPECT_EQ(found.discNumber, song.discNumber);
    EXPECT_EQ(found.durationMs, song.durationMs);
    EXPECT_EQ(found.fileSize, song.fileSize);
    EXPECT_EQ(found.fileTimeNs, song.fileTimeNs);
}

TEST(Records, PuttingAnIdAgainReplacesTheRecord) {
    MediaDatabase database(":memory:");
    database.PutSong(MakeSong(5, "Old"));
    database.PutAlbum({9, "Album", "", {5}});
    database.PutSong(MakeSong(5, "New"));
    EXPECT_EQ(database.FindSong(5)->title, "New");
    EXPECT_EQ(database.FindAlbum(9)->songs, (std::vector<std::uint32_t>{5}));
    database.PutAlbum({9, "Other", "line1", {7, 5, 7}});
    EXPECT_EQ(database.FindAlbum(9)->title, "Other");
    EXPECT_EQ(database.FindAlbum(9)->inputName, "line1");
    EXPECT_EQ(database.FindAlbum(9)->songs, (std::vector<std::uint32_t>{7, 5, 7}));
    database.PutStation({3, "http://a", "A", "", ""});
    database.PutStation({3, "http://b", "B", "", ""});
    EXPECT_EQ(database.FindStation(3)->location, "http://b");
}

TEST(Records, SongIdsAscendFromAThousandAndAreNeverGivenTwice) {
    MediaDatabase database(":memory:");
    EXPECT_EQ(database.PutSong(MakeSong(0, "A")), 1000u);
    EXPECT_EQ(database.PutSong(MakeSong(0, "B")), 1001u);
    database.RemoveSong(1001);
    EXPECT_EQ(database.PutSong(MakeSong(0, "C")), 1002u);
    database.PutSong(MakeSong(20000, "D"));
    database.RemoveSong(20000);
    EXPECT_EQ(database.PutSong(MakeSong(0, "E")), 20001u);
}

TEST(Records, EachKindCountsForItself) {
    MediaDatabase database(":memory:");
    EXPECT_EQ(database.PutAlbum({}), 1u);
    EXPECT_EQ(database.PutStation({}), 1u);
    EXPECT_EQ(database.PutPlaylist(0, 100002, "Mine", {}), 1u);
}

TEST(Records, IdsStayWithinThirtyOneBits) {
    MediaDatabase database(":memory:");
    EXPECT_THROW(database.PutSong(MakeSong(kMaxId + 1, "A")), std::invalid_argument);
    EXPECT_THROW(database.PutStation({kMaxId + 1, "", "", "", ""}), std::invalid_argument);
    EXPECT_THROW(database.PutAlbum({kMaxId + 1, "", "", {}}), std::invalid_argument);
    EXPECT_THROW(database.PutPlaylist(kMaxId + 1, 0, "", {}), std::invalid_argument);
    EXPECT_EQ(database.PutSong(MakeSong(kMaxId, "A")), kMaxId);
    EXPECT_THROW(database.PutSong(MakeSong(0, "One too many")), std::runtime_error);
}

TEST(Records, ARemovedSongLeavesItsAlbumsAndPlaylists) {
    MediaDatabase database(":memory:");
    for (const std::uint32_t id : {1u, 2u, 3u})
        database.PutSong(MakeSong(id, "Song"));
    database.PutAlbum({9, "Album", "", {3, 2, 1}});
    // Item 2 of an outside catalogue is not song 2.
    database.PutPlaylist(4, 100002, "Mine", {{1, "", 3, 0}, {1, "", 2, 0}, {5, "radio", 2, 0}});
    database.RemoveSong(2);
    EXPECT_EQ(database.FindAlbum(9)->songs, (std::vector<std::uint32_t>{3, 1}));
    const auto items = database.GetPlaylistSongs(4);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].mediaId, 3u);
    EXPECT_EQ(items[1].externalId, "radio");
    database.RemoveSong(12345);
}

TEST(Records, AStationCanBeRemoved) {
    MediaDatabase database(":memory:");
    database.PutStation({3, "http://a", "A", "", ""});
    database.RemoveStation(3);
    database.RemoveStation(3);
    EXPECT_FALSE(database.FindStation(3));
}

TEST(Records, ManySongsCostAsMuchEachAsFew) {
    ExpectSameCostForEach([](std::uint32_t amount, StatementCount&) {
        MediaDatabase database(":memory:");
        database.InTransaction([&] {
            for (std::uint32_t i = 0; i < amount; ++i) {
                SongRecord song = MakeSong(0, "Title " + std::to_string(i));
                song.artist = "Artist " + std::to_string(i % 300);
                song.album = "Album " + std::to_string(i % 900);
                database.PutSong(song);
            }
        });
        EXPECT_EQ(database.ListSongs({}).total, amount);
    });
}

TEST(Records, AScanOfManyAlbumsCostsAsMuchEachAsOfFew) {
    ExpectSameCostForEach([](std::uint32_t amount, StatementCount&) {
        MediaDatabase database(":memory:");
        database.InTransaction([&] {
            for (std::uint32_t i = 0; i < amount; ++i) {
                ScannedSong scanned;
                scanned.song = MakeSong(0, "Title", "Ann", "Album " + std::to_string(i));
                scanned.song.location = "/music/" + std::to_string(i) + ".flac";
                scanned.song.fileSize = 1;
                scanned.albumGroup = "by Ann";
                database.PutScannedSong(scanned);
            }
            database.RefreshAlbums();
        });
        EXPECT_EQ(database.ListAlbumsOfArtist("Ann", {}).total, amount);
    });
}

} // namespace
} // namespace korvel::media
