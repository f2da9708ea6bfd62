#include <gtest/gtest.h>

#include "Songs.h"
#include "StatementCount.h"
#include "library/MediaDatabase.h"

namespace korvel::media {
namespace {

class Search : public testing::Test {
protected:
    void SetUp() override {
        Put(1, "Jóga", "Björk", "Homogenic");
        Put(2, "Army of Me", "BJÖRK", "Post");
        Put(3, "100% Pure_Love", "Crystal", "Now");
        Put(4, "Don't Stop \"Me\" Now", "Queen", "Jazz");
        Put(5, "Now", "Ann", "Army");
        Put(6, "100 and more", "", "");
        database.PutAlbum({1, "Homogénic", "", {1}});
        database.PutAlbum({2, "Post", "", {2}});
        database.RefreshAlbums();
    }
    void Put(std::uint32_t id, const std::string& title, const std::string& artist,
             const std::string& album) {
        database.PutSong(MakeSong(id, title, artist, album));
    }
    std::vector<std::uint32_t> Songs(const std::string& text) {
        std::vector<std::uint32_t> ids;
        for (const SongRecord& song : database.SearchSongs(text, {}).items)
            ids.push_back(song.id);
        return ids;
    }
    using IdList = std::vector<std::uint32_t>;

    MediaDatabase database{":memory:"};
};

TEST_F(Search, IgnoresCaseAndAccents) {
    EXPECT_EQ(Songs("JOGA"), (IdList{1}));
    EXPECT_EQ(Songs("jóga"), (IdList{1}));
    EXPECT_EQ(Songs("bjork"), (IdList{2, 1}));
}

TEST_F(Search, FindsWordsInAnyFieldAndOrder) {
    EXPECT_EQ(Songs("bjork army"), (IdList{2}));
    EXPECT_EQ(Songs("  Post   björk "), (IdList{2}));
    EXPECT_EQ(Songs("mogen"), (IdList{1})); // the middle of a word
    EXPECT_EQ(Songs("bjork queen"), IdList{});
}

TEST_F(Search, PutsTitlesFirst) {
    EXPECT_EQ(Songs("army"), (IdList{2, 5}));
    EXPECT_EQ(Songs("now"), (IdList{4, 5, 3}));
}

TEST_F(Search, TakesEveryCharacterLiterally) {
    EXPECT_EQ(Songs("%"), (IdList{3}));
    EXPECT_EQ(Songs("_"), (IdList{3}));
    EXPECT_EQ(Songs("100%"), (IdList{3}));
    EXPECT_EQ(Songs("don't"), (IdList{4}));
    EXPECT_EQ(Songs("\"me\""), (IdList{4}));
    EXPECT_EQ(Songs("*"), IdList{});
    EXPECT_EQ(Songs("') OR 1=1 --"), IdList{});
    EXPECT_EQ(Songs("\\"), IdList{});
}

TEST_F(Search, FindsNothingWithoutWords) {
    EXPECT_EQ(Songs(""), IdList{});
    EXPECT_EQ(Songs(" \t\n"), IdList{});
    EXPECT_EQ(Songs(std::string(3, '\0')), IdList{});
    EXPECT_EQ(database.SearchAlbums("", {}).total, 0u);
    EXPECT_EQ(database.SearchArtists("  ", {}).total, 0u);
}

TEST_F(Search, BearsEndlessAndBrokenTexts) {
    EXPECT_EQ(Songs(std::string(1u << 20, 'x')), IdList{});
    std::string words;
    for (int i = 0; i < 10000; ++i)
        words += "a ";
    EXPECT_EQ(Songs(words).size(), 6u);
    EXPECT_EQ(Songs("\xFF\xFE"), IdList{});
}

TEST_F(Search, FindsAlbumsByTitleAndArtist) {
    EXPECT_EQ(database.SearchAlbums("homogenic", {}).items.at(0).id, 1u);
    EXPECT_EQ(database.SearchAlbums("post bjork", {}).items.at(0).id, 2u);
    EXPECT_EQ(database.SearchAlbums("queen", {}).total, 0u);
}

TEST_F(Search, FindsArtists) {
    const auto found = database.SearchArtists("bjo", {});
    EXPECT_EQ(found.total, 2u);
    EXPECT_EQ(found.items.at(0).songCount, 1u);
    EXPECT_EQ(database.SearchArtists("bjo", {1, 1}).items.size(), 1u);
}

TEST_F(Search, FindsSongsByTitle) {
    Put(7, "now", "Bob", "");
    EXPECT_EQ(database.FindSongsByTitle("Now").at(0).id, 5u);
    EXPECT_EQ(database.FindSongsByTitle("Now").size(), 1u);
    EXPECT_EQ(database.FindSongsByTitle("NOW").size(), 2u);
    EXPECT_TRUE(database.FindSongsByTitle("No").empty());
    EXPECT_TRUE(database.FindSongsByTitle("%").empty());
}

TEST_F(Search, FindsTheOneSongThatIsMeant) {
    EXPECT_EQ(database.FindUniqueSong("joga")->id, 1u);
    EXPECT_EQ(database.FindUniqueSong("Now")->id, 5u); // exactly, though "Stop Me Now" has the word too
    EXPECT_EQ(database.FindUniqueSong("army of")->id, 2u);
    EXPECT_FALSE(database.FindUniqueSong("100"));
    EXPECT_FALSE(database.FindUniqueSong("nothing"));
    EXPECT_FALSE(database.FindUniqueSong(""));
}

TEST_F(Search, CostsAsMuchForEachSongOfALargeLibrary) {
    ExpectSameCostForEach([](std::uint32_t amount, StatementCount& count) {
        MediaDatabase library(":memory:");
        library.InTransaction([&] {
            for (std::uint32_t i = 0; i < amount; ++i) {
                const std::string number = std::to_string(i);
                library.PutSong(MakeSong(0, "Title " + number, "Artist " + number, "Album"));
            }
        });
        count.Reset();
        const std::string last = std::to_string(amount - 1);
        EXPECT_EQ(library.SearchSongs("artist title " + last, {}).total, 1u);
        EXPECT_EQ(library.SearchArtists("artist " + last, {}).total, 1u);
        EXPECT_EQ(library.ListArtists({amount - 100, 100}).items.size(), 100u);
        EXPECT_EQ(library.ListSongs({amount - 500, 500}).items.size(), 500u);
    });
}

} // namespace
} // namespace korvel::media
