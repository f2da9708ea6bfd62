// Saving, renaming and deleting playlists as drivers do.
#include <gtest/gtest.h>

#include <stdexcept>

#include "Songs.h"
#include "StatementCount.h"
#include "library/MediaDatabase.h"
#include "platform/Text.h"

bool operator==(const MediaItem& a, const MediaItem& b) {
    return a.type == b.type && a.externalId == b.externalId && a.mediaId == b.mediaId && a.extra == b.extra;
}

namespace korvel::media {
namespace {

constexpr std::uint32_t kDevice = 100002;

MediaItem Song(std::uint32_t id) {
    return {1, "", id, 0};
}

// The description that a renaming driver sends.
std::string Description(const std::string& title) {
    return "<album>\n <title>" + title + "</title>\n <playlist>True</playlist>\n</album>\n";
}

class Playlists : public testing::Test {
protected:
    std::vector<std::uint32_t> Ids(std::uint32_t playlist) {
        std::vector<std::uint32_t> ids;
        for (const MediaItem& item : database.GetPlaylistSongs(playlist))
            ids.push_back(item.mediaId);
        return ids;
    }
    using IdList = std::vector<std::uint32_t>;

    MediaDatabase database{":memory:"};
};

TEST_F(Playlists, ThatAreChangedTogetherAreChangedAllOrNone) {
    int told = 0;
    database.SetChangeListener([&](const std::exception*) { ++told; });
    database.AsOneChange([&] {
        database.CreatePlaylist(kDevice, "One", {});
        database.AsOneChange([&] { database.CreatePlaylist(kDevice, "Two", {}); });
    });
    EXPECT_EQ(database.ListPlaylists({}).total, 2u);
    EXPECT_EQ(told, 1);
    EXPECT_THROW(database.AsOneChange([&] {
        database.CreatePlaylist(kDevice, "Three", {});
        throw std::runtime_error("stop");
    }),
                 std::runtime_error);
    EXPECT_EQ(database.ListPlaylists({}).total, 2u);
    EXPECT_EQ(told, 1) << "whoever stopped it knows";
    database.CreatePlaylist(kDevice, "Three", {});
    EXPECT_EQ(told, 2);
}

TEST_F(Playlists, KeepItemsOfEveryTypeInOrder) {
    const std::vector<MediaItem> items = {{1, "", 1050, 0},        {2, "Tra.1", 0, 0},
                                          {3, "Ch 'x'\"\n", 0, 0}, {5, "st", 9, 100009},
                                          {0, "", 0, 0},           {1, "", 1050, 4294967295u}};
    const std::uint32_t id = database.CreatePlaylist(kDevice, "Mine", items);
    EXPECT_NE(id, 0u);
    EXPECT_EQ(database.GetPlaylistSongs(id), items);
    EXPECT_EQ(database.GetPlaylistName(id), "Mine");
}

TEST_F(Playlists, AreUpdatedAndDeleted) {
    const std::uint32_t id = database.CreatePlaylist(kDevice, "Mine", {Song(1), Song(2)});
    EXPECT_EQ(database.UpdatePlaylist(id, {Song(3)}), 0);
    EXPECT_EQ(Ids(id), (IdList{3}));
    EXPECT_EQ(database.DeletePlaylist(id), 0);
    EXPECT_EQ(Ids(id), IdList{});
    EXPECT_EQ(database.GetPlaylistName(id), "");
    EXPECT_LT(database.DeletePlaylist(id), 0);
    EXPECT_LT(database.UpdatePlaylist(id, {Song(3)}), 0);
    EXPECT_LT(database.DeletePlaylist(0), 0);
    EXPECT_GT(database.CreatePlaylist(kDevice, "Mine", {}), id);
}

TEST_F(Playlists, MayShareATitle) {
    const std::uint32_t first = database.CreatePlaylist(kDevice, "Mine", {});
    const std::uint32_t second = database.CreatePlaylist(kDevice, "Mine", {});
    EXPECT_NE(first, second);
}

TEST_F(Playlists, OfTooManyItemsAreRefusedAsAWhole) {
    const std::uint32_t id = database.CreatePlaylist(kDevice, "Mine", {Song(1)});
    const std::vector<MediaItem> tooMany(MediaDatabase::kMaxItems + 1, Song(1));
    EXPECT_LT(database.UpdatePlaylist(id, tooMany), 0);
    EXPECT_EQ(Ids(id), (IdList{1}));
    EXPECT_EQ(database.CreatePlaylist(kDevice, "Big", tooMany), 0u);
    EXPECT_EQ(database.ListPlaylists({}).total, 1u);
}

TEST_F(Playlists, AddMediaMakesAnEmptyPlaylist) {
    std::uint32_t id = 0;
    EXPECT_EQ(database.AddMedia(kDevice, Description("Rock & Roll"), "", "", 1, id), 0);
    EXPECT_EQ(database.GetPlaylistName(id), "Rock & Roll");
    EXPECT_EQ(Ids(id), IdList{});
    EXPECT_EQ(database.GetMediaList(kDevice, "PLAYLIST", "", "", -1, -1)->GetChildCount(), 1u);
}

TEST_F(Playlists, AddMediaTakesTitlesThatAreNotEscaped) {
    for (const char* title :
         {"R&B", "I <3 you", "a </b> c", "<b>bold</b>", "1 > 0", "\"quoted\" 'too'", "<title>", "<!--"}) {
        std::uint32_t id = 0;
        EXPECT_EQ(database.AddMedia(kDevice, Description(title), "", "", 1, id), 0) << title;
        EXPECT_EQ(database.GetPlaylistName(id), title);
    }
    std::uint32_t id = 0;
    EXPECT_EQ(database.AddMedia(kDevice, Description("R&amp;B &lt;3"), "", "", 1, id), 0);
    EXPECT_EQ(database.GetPlaylistName(id), "R&B <3");
}

TEST_F(Playlists, AddMediaEmptiesThePlaylistOfThatTitleAndDevice) {
    const std::uint32_t other = database.CreatePlaylist(kDevice + 1, "Mine", {Song(1)});
    const std::uint32_t mine = database.CreatePlaylist(kDevice, "Mine", {Song(2)});
    std::uint32_t id = 0;
    EXPECT_EQ(database.AddMedia(kDevice, Description("Mine"), "", "", 1, id), 0);
    EXPECT_EQ(id, mine);
    EXPECT_EQ(Ids(mine), IdList{});
    EXPECT_EQ(Ids(other), (IdList{1}));
    EXPECT_EQ(database.AddMedia(kDevice, Description("Mine"), "", "", 0, id), 0);
    EXPECT_NE(id, mine);
}

TEST_F(Playlists, AddMediaTakesTheNameWhenTheDescriptionHasNoTitle) {
    std::uint32_t id = 0;
    EXPECT_EQ(database.AddMedia(kDevice, "<album><playlist>True</playlist></album>", "", "Named", 1, id), 0);
    EXPECT_EQ(database.GetPlaylistName(id), "Named");
}

TEST_F(Playlists, AddMediaRefusesEverythingElse) {
    std::uint32_t id = 77;
    for (const char* description :
         {"", "no xml", "<album>", "<title>", "</title><title>", "<album><title>A</title></album>",
          "<album><title>A</title><playlist>False</playlist></album>",
          "<song><title>A</title><playlist>True</playlist></song>",
          "<album><playlist>True</playlist></album>"})
        EXPECT_LT(database.AddMedia(kDevice, description, "", "", 1, id), 0) << description;
    EXPECT_EQ(id, 77u);
    EXPECT_EQ(database.ListPlaylists({}).total, 0u);
}

TEST_F(Playlists, TakeASongAtAPosition) {
    const std::uint32_t id = database.CreatePlaylist(kDevice, "Mine", {});
    EXPECT_EQ(database.AddSongToPlaylist(id, 10, 0), 0);
    EXPECT_EQ(database.AddSongToPlaylist(id, 11, 1), 0);
    EXPECT_EQ(database.AddSongToPlaylist(id, 12, 1), 0);
    EXPECT_EQ(database.AddSongToPlaylist(id, 13, 0), 0);
    EXPECT_EQ(database.AddSongToPlaylist(id, 14, 4294967295u), 0);
    EXPECT_EQ(Ids(id), (IdList{13, 10, 12, 11, 14}));
    EXPECT_EQ(database.AddSongToPlaylist(id, 0, 5), 0);
    EXPECT_EQ(Ids(id).size(), 5u);
    EXPECT_LT(database.AddSongToPlaylist(99, 10, 0), 0);
}

TEST_F(Playlists, CountPositionsWithoutTheGapsOfRemovedSongs) {
    for (const std::uint32_t id : {1u, 2u, 3u})
        database.PutSong(MakeSong(id));
    const std::uint32_t id = database.CreatePlaylist(kDevice, "Mine", {Song(1), Song(2), Song(3)});
    database.RemoveSong(1);
    EXPECT_EQ(database.AddSongToPlaylist(id, 9, 1), 0);
    EXPECT_EQ(Ids(id), (IdList{2, 9, 3}));
}

// What a driver does to rename: read the record, add one of the new name, add its songs one by one.
TEST_F(Playlists, AreRenamedBySongs) {
    const std::uint32_t old = database.CreatePlaylist(kDevice, "Old", {Song(3), {2, "Tra.1", 0, 0}, Song(1)});
    const auto songs = database.GetMediaRecord(old, "PLAYLIST");
    std::uint32_t id = 0;
    ASSERT_EQ(database.AddMedia(kDevice, Description("New"), "", "", 1, id), 0);
    const KVXML::INode* list = songs->FindChild("songs");
    for (std::size_t i = 0; i < list->GetChildCount(); ++i) {
        const std::uint32_t songId = kv::ToULong(list->GetChild(i).FindChild("id")->GetText());
        EXPECT_EQ(database.AddSongToPlaylist(id, songId, static_cast<std::uint32_t>(i)), 0);
    }
    EXPECT_EQ(Ids(id), (IdList{3, 1}));
    EXPECT_EQ(database.GetPlaylistSongs(old).size(), 3u);
}

TEST_F(Playlists, FilledOneByOneCostAsMuchForEachOfManySongs) {
    ExpectSameCostForEach([](std::uint32_t amount, StatementCount&) {
        MediaDatabase library(":memory:");
        const std::uint32_t id = library.CreatePlaylist(kDevice, "Mine", {});
        for (std::uint32_t i = 0; i < amount; ++i)
            ASSERT_EQ(library.AddSongToPlaylist(id, 1000 + i, i), 0);
        EXPECT_EQ(library.FindPlaylist(id)->itemCount, amount);
    });
}

} // namespace
} // namespace korvel::media
