// Opening, refusing and sharing database files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>

#include "FullDisk.h"
#include "Songs.h"
#include "TempFolder.h"
#include "library/DatabaseError.h"
#include "library/DatabaseFile.h"
#include "library/MediaDatabase.h"
#include "library/ScanRecords.h"

using korvel::media::DatabaseError;
using korvel::media::MediaDatabase;
using korvel::media::Presence;
using testing::ElementsAre;
using testing::HasSubstr;
using Kind = korvel::media::DatabaseError::Kind;

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

void PutManySongs(const std::string& path) {
    MediaDatabase database(path);
    database.InTransaction([&] {
        for (std::uint32_t id = 1; id <= 5000; ++id)
            database.PutSong(MakeSong(id, "Song number " + std::to_string(id)));
    });
}

// The first pages hold the tables' roots; everything after them is overwritten.
void Damage(const std::string& path) {
    const auto size = std::filesystem::file_size(path);
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(16 * 4096);
    file << std::string(static_cast<std::size_t>(size) - 16 * 4096, '\xA5');
}

std::optional<DatabaseError::Kind> KindOfFailure(const std::function<void()>& body) {
    try {
        body();
    } catch (const DatabaseError& error) {
        return error.GetKind();
    }
    return std::nullopt;
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
    PutManySongs(path);
    Damage(path);

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

TEST(DatabaseFile, TellsWhatKindOfFailureItWas) {
    const TempFolder folder;
    const auto open = [](const std::string& path) {
        return KindOfFailure([&] { const MediaDatabase database(path); });
    };
    EXPECT_EQ(open(folder.Write("text.db", std::string(5000, 'x'))), Kind::Damaged);
    Execute(folder / "other.db", "CREATE TABLE addresses (name TEXT)");
    EXPECT_EQ(open(folder / "other.db"), Kind::Damaged);
    EXPECT_EQ(open(folder / "no-such-folder/media.db"), Kind::Other);
    EXPECT_EQ(open(folder / "media.db"), std::nullopt);
    Execute(folder / "media.db", "PRAGMA user_version = 99");
    EXPECT_EQ(open(folder / "media.db"), Kind::Other) << "it is whole, but not for this version";

    PutManySongs(folder / "damaged.db");
    Damage(folder / "damaged.db");
    MediaDatabase damaged(folder / "damaged.db");
    EXPECT_EQ(KindOfFailure([&] { damaged.ListSongs({}); }), Kind::Damaged);
}

TEST(DatabaseFile, OnAFullDiskStaysAsItWas) {
    const TempFolder folder;
    MediaDatabase database(folder / "media.db");
    database.PutSong(MakeSong(7, "Blue"));
    std::vector<std::string> ends;
    database.SetChangeListener(
        [&](const std::exception* failure) { ends.push_back(failure ? failure->what() : "made"); });
    {
        const FullDisk full(4096);
        EXPECT_EQ(KindOfFailure([&] { database.PutSong(MakeSong(8, "Green")); }), Kind::NoRoom);
        EXPECT_EQ(database.CreatePlaylist(100002, "Mine", {{1, "", 7, 0}}), 0u);
        EXPECT_EQ(database.FindSong(7)->title, "Blue");
        EXPECT_FALSE(database.FindSong(8));
    }
    const std::uint32_t playlist = database.CreatePlaylist(100002, "Mine", {{1, "", 7, 0}});
    EXPECT_EQ(database.GetPlaylistSongs(playlist).size(), 1u);
    EXPECT_LT(database.DeletePlaylist(playlist + 1), 0) << "no failure: there is none";
    EXPECT_THAT(ends, ElementsAre("media database: no room is left on the disk", "made"));
}

// As a driver renames a playlist: a new one, into which the songs come one by one.
TEST(DatabaseFile, OnADiskThatFillsUpTakesAllOfAChangeOrNothing) {
    const TempFolder folder;
    MediaDatabase database(folder / "media.db");
    std::vector<std::string> ends;
    database.SetChangeListener(
        [&](const std::exception* failure) { ends.push_back(failure ? failure->what() : "made"); });
    const auto copy = [&](const std::function<void()>& meanwhile) {
        database.AsOneChange([&] {
            const std::uint32_t id = database.CreatePlaylist(100002, "Mine", {});
            meanwhile();
            EXPECT_EQ(database.AddSongToPlaylist(id, 7, 0), 0);
        });
    };
    std::optional<FullDisk> full;
    copy([&] { full.emplace(4096); });
    EXPECT_EQ(database.ListPlaylists({}).total, 0u);
    full.reset();
    copy([] {});
    EXPECT_EQ(database.ListPlaylists({}).total, 1u);
    EXPECT_THAT(ends, ElementsAre("media database: no room is left on the disk", "made"));
}

TEST(DatabaseFile, OpensOnAFullDisk) {
    const TempFolder folder;
    const std::string path = folder / "media.db";
    { MediaDatabase(path).PutSong(MakeSong(7, "Blue")); }
    {
        const FullDisk full(4096);
        EXPECT_EQ(korvel::media::FindDamage(path), "");
        MediaDatabase database(path);
        EXPECT_TRUE(database.IsAlone());
        EXPECT_EQ(database.FindSong(7)->title, "Blue");
        EXPECT_EQ(KindOfFailure([&] { database.PutSong(MakeSong(8, "Green")); }), Kind::NoRoom);
    }
    MediaDatabase database(path);
    EXPECT_FALSE(database.IsAlone());
    database.PutSong(MakeSong(8, "Green"));
    EXPECT_TRUE(MediaDatabase(path).FindSong(8));
}

TEST(DatabaseFile, ShowsItsDamage) {
    const TempFolder folder;
    const std::string path = folder / "media.db";
    PutManySongs(path);
    EXPECT_EQ(korvel::media::FindDamage(path), "");
    Damage(path);
    EXPECT_NE(korvel::media::FindDamage(path), "");
    EXPECT_THAT(korvel::media::FindDamage(folder.Write("text.db", std::string(5000, 'x'))),
                HasSubstr("not a database"));
}

TEST(DatabaseFile, OfAProgramThatWasKilledShowsThat) {
    const TempFolder folder;
    std::filesystem::create_directory(folder / "killed");
    {
        MediaDatabase database(folder / "media.db");
        database.PutSong(MakeSong(7, "Blue"));
        // What a program that ends here leaves.
        for (const char* name : {"media.db", "media.db-wal"})
            std::filesystem::copy(folder / name, folder / "killed");
    }
    EXPECT_FALSE(korvel::media::WasLeftOpen(folder / "media.db"));
    EXPECT_TRUE(korvel::media::WasLeftOpen(folder / "killed/media.db"));
    EXPECT_EQ(korvel::media::FindDamage(folder / "killed/media.db"), "");
    EXPECT_EQ(MediaDatabase(folder / "killed/media.db").FindSong(7)->title, "Blue");
}

TEST(DatabaseFile, IsCopiedWhileItIsWritten) {
    const TempFolder folder;
    const std::string copy = folder.Write("copy.db", "what was there before");
    MediaDatabase database(folder / "media.db");
    database.PutSong(MakeSong(7, "Blue"));
    database.InTransaction([&] {
        database.PutSong(MakeSong(8, "Green"));
        korvel::media::CopyDatabase(folder / "media.db", copy);
    });
    EXPECT_EQ(korvel::media::FindDamage(copy), "");
    MediaDatabase copied(copy);
    EXPECT_TRUE(copied.FindSong(7));
    EXPECT_FALSE(copied.FindSong(8)) << "was not committed yet";
    EXPECT_TRUE(database.FindSong(8));
}

TEST(DatabaseFile, IsNotCopiedToAFullDisk) {
    const TempFolder folder;
    PutManySongs(folder / "media.db");
    MediaDatabase database(folder / "media.db");
    const FullDisk full(8192);
    EXPECT_EQ(KindOfFailure([&] { korvel::media::CopyDatabase(folder / "media.db", folder / "copy.db"); }),
              Kind::NoRoom);
    EXPECT_TRUE(database.FindSong(5000));
}
