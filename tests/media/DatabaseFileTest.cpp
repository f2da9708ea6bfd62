// Opening, refusing and sharing database files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "Songs.h"
#include "TempFolder.h"
#include "media/MediaDatabase.h"
#include "media/ScanRecords.h"

using korvel::media::MediaDatabase;
using korvel::media::Presence;
using testing::HasSubstr;

namespace {

std::string OpenError(const std::string& path) {
    try {
        MediaDatabase database(path);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

void Execute(const std::string& path, const char* sql) {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
    sqlite3_close(database);
}

} // namespace

TEST(DatabaseFile, KeepsItsRecordsBetweenUses) {
    const TempFolder folder;
    { MediaDatabase(folder / "media.db").PutSong(MakeSong(0, "Blue")); }
    MediaDatabase again(folder / "media.db");
    EXPECT_EQ(again.FindSong(korvel::media::kFirstSongId)->title, "Blue");
}

TEST(DatabaseFile, NamesTheFileThatCannotBeOpened) {
    const TempFolder folder;
    EXPECT_THAT(OpenError(folder / "no-such-folder/media.db"),
                HasSubstr("cannot open " + (folder / "no-such")));
    EXPECT_THAT(OpenError(folder.Path().native()), HasSubstr("cannot open " + folder.Path().native()));
}

TEST(DatabaseFile, RefusesAFileThatIsNoDatabase) {
    const TempFolder folder;
    const std::string path = folder.Write("media.db", std::string(5000, 'x'));
    EXPECT_THAT(OpenError(path), HasSubstr("not a database"));
    EXPECT_EQ(std::filesystem::file_size(path), 5000u);
}

TEST(DatabaseFile, RefusesADatabaseOfSomethingElse) {
    const TempFolder folder;
    Execute(folder / "other.db", "CREATE TABLE addresses (name TEXT)");
    EXPECT_THAT(OpenError(folder / "other.db"), HasSubstr("not a media database"));
}

TEST(DatabaseFile, RefusesANewerSchema) {
    const TempFolder folder;
    { MediaDatabase database(folder / "media.db"); }
    Execute(folder / "media.db", "PRAGMA user_version = 99");
    EXPECT_THAT(OpenError(folder / "media.db"), HasSubstr("newer version of this program (schema 99"));
}

// What the first version made. Its steps are never changed, so this is its file.
TEST(DatabaseFile, OfAnEarlierVersionKeepsAllThatIsInIt) {
    const TempFolder folder;
    const std::string path = folder / "media.db";
    std::uint32_t playlist = 0;
    {
        MediaDatabase database(path);
        database.PutSong(MakeSong(1005, "Blue", "Ann"));
        playlist = database.PutPlaylist(0, 100002, "Mine", {{1, "", 1005, 0}});
        database.PutBrokenFile({0, "/music/broken.wav", 0, 7, 8, false, Presence::Here, ""});
    }
    Execute(path,
            "DROP INDEX songs_not_here; ALTER TABLE songs DROP COLUMN presence;"
            "ALTER TABLE broken_files DROP COLUMN reason; PRAGMA user_version = 1");
    for (int round = 0; round < 2; ++round) {
        MediaDatabase database(path);
        const auto song = database.FindSong(1005);
        ASSERT_TRUE(song);
        EXPECT_EQ(song->title, "Blue");
        EXPECT_EQ(song->presence, Presence::Here);
        EXPECT_EQ(database.GetPlaylistSongs(playlist).size(), 1u);
        ASSERT_EQ(database.ListBrokenFiles().size(), 1u);
        EXPECT_EQ(database.ListBrokenFiles()[0].fileSize, 7u);
        EXPECT_EQ(database.PutSong(MakeSong(0, "New")), 1006u + static_cast<std::uint32_t>(round));
        database.SetSongPresence(1005, Presence::Here);
    }
}

TEST(DatabaseFile, ReportsDamageInsteadOfCrashing) {
    const TempFolder folder;
    const std::string path = folder / "media.db";
    {
        MediaDatabase database(path);
        database.InTransaction([&] {
            for (std::uint32_t id = 1; id <= 5000; ++id)
                database.PutSong(MakeSong(id, "Song number " + std::to_string(id)));
        });
    }
    const auto size = std::filesystem::file_size(path);
    // The first pages hold the table's roots; everything after them is overwritten.
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(16 * 4096);
    file << std::string(static_cast<std::size_t>(size) - 16 * 4096, '\xA5');
    file.close();

    MediaDatabase damaged(path);
    EXPECT_THROW(damaged.ListSongs({}), std::runtime_error);
    std::string location = "unchanged";
    EXPECT_LT(damaged.GetLocation(2500, "SONG", location), 0);
    EXPECT_EQ(location, "unchanged");
    EXPECT_FALSE(damaged.GetMediaRecord(2500, "SONG"));
    EXPECT_TRUE(damaged.GetSongsByArtist({}, "Ann").empty());
}

TEST(DatabaseFile, IsSharedByTwoConnections) {
    const TempFolder folder;
    MediaDatabase reader(folder / "media.db");
    MediaDatabase writer(folder / "media.db");
    writer.InTransaction([&] {
        writer.PutSong(MakeSong(7, "Blue"));
        // The reader neither waits nor sees what is not committed.
        EXPECT_FALSE(reader.FindSong(7));
    });
    EXPECT_TRUE(reader.FindSong(7));
}

TEST(DatabaseFile, LeavesNothingOfAFailedTransaction) {
    MediaDatabase database(":memory:");
    EXPECT_THROW(database.InTransaction([&] {
        database.PutSong(MakeSong(7, "Blue"));
        throw std::runtime_error("stop");
    }),
                 std::runtime_error);
    EXPECT_FALSE(database.FindSong(7));

    database.InTransaction([&] {
        database.PutSong(MakeSong(8, "Green"));
        EXPECT_THROW(database.InTransaction([&] {
            database.PutSong(MakeSong(9, "Red"));
            throw std::runtime_error("stop");
        }),
                     std::runtime_error);
    });
    EXPECT_TRUE(database.FindSong(8));
    EXPECT_FALSE(database.FindSong(9));
}
