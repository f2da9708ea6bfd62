// How much a playlist and a search may hold.
#include <gtest/gtest.h>

#include "Songs.h"
#include "library/MediaDatabase.h"

namespace korvel::media {
namespace {

constexpr std::uint32_t kStorage = 100002;

TEST(MediaLimits, APlaylistTakesItemsUpToItsLimitAndNoneAfter) {
    MediaDatabase database(":memory:");
    const MediaItem item{1, "", 1000, 0};
    std::vector<MediaItem> items(MediaDatabase::kMaxItems - 1, item);
    const std::uint32_t id = database.CreatePlaylist(kStorage, "Full", items);
    ASSERT_NE(id, 0u);
    EXPECT_EQ(database.AddSongToPlaylist(id, 1000, MediaDatabase::kMaxItems), 0);
    EXPECT_LT(database.AddSongToPlaylist(id, 1000, MediaDatabase::kMaxItems), 0);
    EXPECT_LT(database.AddSongToPlaylist(id, 1000, 0), 0);
    EXPECT_EQ(database.GetPlaylistSongs(id).size(), MediaDatabase::kMaxItems);
}

TEST(MediaLimits, ACommandTakesSongsUpToTheSameLimit) {
    constexpr std::uint32_t kSongs = 1000;
    MediaDatabase database(":memory:");
    std::vector<std::uint32_t> songs;
    database.InTransaction([&] {
        for (std::uint32_t id = 1; id <= kSongs; ++id) {
            database.PutSong(MakeSong(id, "Song"));
            songs.push_back(id);
        }
    });
    database.PutAlbum({1, "Album", "", songs});
    const std::vector<std::uint32_t> albums(MediaDatabase::kMaxItems / kSongs, 1);
    EXPECT_EQ(database.GetSongsForAlbums(albums, {}).size(), MediaDatabase::kMaxItems);
    std::vector<std::uint32_t> oneMore = albums;
    oneMore.push_back(1);
    EXPECT_EQ(database.GetSongsForAlbums(oneMore, {}).size(), MediaDatabase::kMaxItems);
}

class SearchLimits : public testing::Test {
protected:
    SearchLimits() { database.PutSong(MakeSong(1, "green")); }
    bool Finds(const std::string& text) { return database.SearchSongs(text, {}).total == 1; }

    MediaDatabase database{":memory:"};
};

TEST_F(SearchLimits, WhatIsBehindItsLongestTextIsNotLookedFor) {
    const std::string blanks(MediaDatabase::kMaxSearchLength - 6, ' ');
    EXPECT_FALSE(Finds("green" + blanks + "x"));
    EXPECT_TRUE(Finds("green " + blanks + "x"));
}

TEST_F(SearchLimits, ItsNinthWordIsNotLookedFor) {
    EXPECT_FALSE(Finds("g r e e n gr re x"));
    EXPECT_TRUE(Finds("g r e e n gr re ee x"));
}

} // namespace
} // namespace korvel::media
