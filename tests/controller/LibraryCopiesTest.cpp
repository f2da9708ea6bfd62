// Copies of the library, and how it is brought back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "TestHouse.h"
#include "actions/LibraryCopies.h"
#include "library/DatabaseError.h"
#include "library/DatabaseFile.h"
#include "store/KeptAside.h"

namespace korvel::controller {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::time_t kDay = LibraryCopies::kInterval;

class LibraryCopiesTest : public testing::Test {
protected:
    // Adds a song to the library, which is made when it is not there.
    void AddSong(const std::string& title) {
        media::SongRecord song;
        song.title = title;
        media::MediaDatabase(Library()).PutSong(song);
    }
    std::string Titles(const std::string& path) {
        std::string titles;
        media::MediaDatabase library(path);
        for (const media::SongRecord& song : library.ListSongs({}).items)
            titles += song.title + " ";
        return titles;
    }
    std::string Library() const { return LibraryPath(folder.Path()); }
    std::string NameAt(std::time_t time) const { return "library-" + StampOf(time) + ".db"; }
    std::vector<std::string> Names() const { return folder.Names("copies", ""); }
    std::string Restore() { return RestoreLibrary(folder.Path()); }
    std::string RestoreError() {
        try {
            Restore();
        } catch (const std::exception& error) {
            return error.what();
        }
        return "";
    }

    const ScratchFolder folder;
    const LibraryCopies copies{folder.Path()};
    const std::time_t now = std::time(nullptr);
};

TEST_F(LibraryCopiesTest, AreMadeOnceADay) {
    AddSong("Blue");
    copies.MakeWhenDue(now);
    copies.MakeWhenDue(now + 1);
    copies.MakeWhenDue(now + kDay - 1);
    EXPECT_THAT(Names(), ElementsAre(NameAt(now)));
    copies.MakeWhenDue(now + kDay);
    EXPECT_THAT(Names(), ElementsAre(NameAt(now), NameAt(now + kDay)));
    EXPECT_THAT(copies.List(), ElementsAre(folder.File("copies/" + NameAt(now + kDay)),
                                           folder.File("copies/" + NameAt(now))));
    EXPECT_EQ(Titles(copies.List()[0]), "Blue ");
}

TEST_F(LibraryCopiesTest, TheNewestThreeAreKept) {
    AddSong("Blue");
    for (int day = 0; day < 5; ++day)
        copies.MakeWhenDue(now + day * kDay);
    EXPECT_THAT(Names(), ElementsAre(NameAt(now + 2 * kDay), NameAt(now + 3 * kDay), NameAt(now + 4 * kDay)));
}

TEST_F(LibraryCopiesTest, AClockThatWasWrongPushesNoneOut) {
    AddSong("Blue");
    copies.MakeWhenDue(now + 1000 * kDay);
    for (int day = 0; day < 3; ++day)
        copies.MakeWhenDue(now + day * kDay);
    EXPECT_THAT(Names(), ElementsAre(NameAt(now), NameAt(now + kDay), NameAt(now + 2 * kDay)));
}

TEST_F(LibraryCopiesTest, OfADamagedLibraryNoneIsMade) {
    AddSong("Blue");
    copies.MakeWhenDue(now);
    folder.Write("media.db", std::string(8192, 'x'));
    EXPECT_THROW(copies.MakeWhenDue(now + kDay), media::DatabaseError);
    EXPECT_THAT(Names(), ElementsAre(NameAt(now)));
}

TEST_F(LibraryCopiesTest, TheNewestGoodOneBringsTheLibraryBack) {
    AddSong("Blue");
    copies.MakeWhenDue(now);
    AddSong("Green");
    copies.MakeWhenDue(now + kDay);
    AddSong("Red");
    copies.MakeWhenDue(now + 2 * kDay);
    folder.Write("copies/" + NameAt(now + 2 * kDay), std::string(8192, 'x'));
    const std::string said = Restore();
    EXPECT_THAT(said, HasSubstr(NameAt(now + kDay) + " (2 songs, 0 playlists)"));
    EXPECT_EQ(Titles(Library()), "Blue Green ");
    const auto kept = folder.Names("", "media.db.replaced-");
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_THAT(said, HasSubstr("what was there is kept as " + folder.File(kept[0])));
    EXPECT_EQ(Titles(folder.File(kept[0])), "Blue Green Red ");
    EXPECT_EQ(Names().size(), 3u);
}

TEST_F(LibraryCopiesTest, BringBackALibraryThatIsNotThere) {
    AddSong("Blue");
    copies.MakeWhenDue(now);
    fs::remove(Library());
    // What is left of the log of another file.
    folder.Write("media.db-wal", "left over");
    Restore();
    EXPECT_EQ(Titles(Library()), "Blue ");
}

TEST_F(LibraryCopiesTest, OfTheNewLibraryDoNotStandInForTheDamagedOne) {
    AddSong("Old");
    for (int day = 5; day > 0; --day)
        copies.MakeWhenDue(now - day * kDay);
    KeepAside(Library(), kDamaged);
    AddSong("New");
    for (int day = 1; day < 5; ++day)
        copies.MakeWhenDue(now + day * kDay);
    EXPECT_EQ(Names().size(), 2 * LibraryCopies::kKept);
    EXPECT_THAT(Restore(), HasSubstr(NameAt(now - kDay)));
    EXPECT_EQ(Titles(Library()), "Old ");
}

TEST_F(LibraryCopiesTest, NoneAndNoGoodOneAreSaid) {
    AddSong("Blue");
    EXPECT_EQ(RestoreError(), "there is no copy of the library in " + folder.File("copies"));
    copies.MakeWhenDue(now);
    folder.Write("copies/" + NameAt(now), std::string(8192, 'x'));
    EXPECT_THAT(RestoreError(), HasSubstr("no copy of the library is good"));
    EXPECT_EQ(Titles(Library()), "Blue ");
    EXPECT_TRUE(folder.Names("", "media.db.replaced-").empty());
    EXPECT_TRUE(folder.Names("", "media.db.next").empty());
}

TEST_F(LibraryCopiesTest, NothingIsBroughtBackBeneathAController) {
    AddSong("Blue");
    copies.MakeWhenDue(now);
    const StateFolder taken(folder.Path());
    EXPECT_THAT(RestoreError(), HasSubstr("in use by another controller"));
}

} // namespace
} // namespace korvel::controller
