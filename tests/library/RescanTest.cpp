// What a later scan does with what an earlier one found.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "ScanHarness.h"
#include "library/ScanRecords.h"

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace korvel::media {
namespace {

class Rescan : public testing::Test, public ScanHarness {
protected:
    // Replaces what is in the file but neither its size nor its time.
    void SpoilUnnoticed(const std::string& path) {
        const auto time = fs::last_write_time(path);
        const auto size = fs::file_size(path);
        std::ofstream(path, std::ios::binary | std::ios::trunc) << std::string(size, 'x');
        fs::last_write_time(path, time);
    }
    Presence PresenceOf(const std::string& name) { return SongAt(name).value().presence; }
    using Texts = std::vector<std::string>;
};

TEST_F(Rescan, ReadsNoFileThatHasNotChanged) {
    SpoilUnnoticed(PutWav("never-read.wav"));
    EXPECT_EQ(Scan().broken, 1u); // it is read when it is new
    Remove("never-read.wav");

    const std::string path = PutWav("a.wav", {{"TITLE", "Blue"}});
    Scan();
    const std::uint32_t id = IdAt("a.wav");
    SpoilUnnoticed(path);
    const ScanProgress last = Scan();
    EXPECT_EQ(last.filesSeen, 1u);
    EXPECT_EQ(last.filesDone, 1u);
    EXPECT_EQ(last.added + last.changed + last.missing + last.broken, 0u);
    EXPECT_EQ(SongAt("a.wav")->title, "Blue");
    EXPECT_EQ(IdAt("a.wav"), id);
}

TEST_F(Rescan, ReadsChangedFilesUnderTheirIds) {
    PutWav("a.wav", {{"TITLE", "Old"}, {"ALBUM", "First"}});
    PutWav("b.wav", {{"ALBUM", "First"}});
    Scan();
    const std::uint32_t id = IdAt("a.wav");
    PutWav("a.wav", {{"TITLE", "New"}, {"ALBUM", "Second"}}, 200);
    const ScanProgress last = Scan();
    EXPECT_EQ(last.changed, 1u);
    EXPECT_EQ(last.added, 0u);
    const SongRecord song = SongAt("a.wav").value();
    EXPECT_EQ(song.id, id);
    EXPECT_EQ(song.title, "New");
    EXPECT_EQ(song.durationMs, 200u);
    const auto albums = database->ListAlbums({}).items;
    ASSERT_EQ(albums.size(), 2u);
    EXPECT_EQ(albums[0].songCount, 1u);
    EXPECT_EQ(albums[1].songCount, 1u);
}

TEST_F(Rescan, NoticesATimeThatChangedAlone) {
    const std::string path = PutWav("a.wav");
    SetFileTime(path, 2s);
    Scan();
    SetFileTime(path, 1s); // older than before, as from a backup
    EXPECT_EQ(Scan().changed, 1u);
    EXPECT_EQ(Scan().changed, 0u);
}

TEST_F(Rescan, MarksWhatIsGoneAndTakesItBackAsItWas) {
    const std::string path = PutWav("a.wav", {{"TITLE", "Blue"}, {"ALBUM", "Gone"}});
    PutWav("b.wav", {{"ALBUM", "Here"}});
    Scan();
    const std::uint32_t gone = IdAt("a.wav");
    const SongRecord before = SongAt("a.wav").value();
    database->PutPlaylist(1, 100002, "Mine", {{1, "", gone, 0}, {1, "", IdAt("b.wav"), 0}});
    fs::rename(path, folder / "elsewhere.wav");
    EXPECT_EQ(Scan().missing, 1u);
    EXPECT_EQ(PresenceOf("a.wav"), Presence::Gone);
    EXPECT_EQ(PresenceOf("b.wav"), Presence::Here);
    EXPECT_EQ(database->ListAlbums({}).total, 2u);
    EXPECT_EQ(database->GetPlaylistSongs(1).size(), 2u);

    fs::rename(folder / "elsewhere.wav", path);
    const ScanProgress last = Scan();
    EXPECT_EQ(last.missing + last.added + last.changed, 0u);
    const SongRecord again = SongAt("a.wav").value();
    EXPECT_EQ(again.presence, Presence::Here);
    EXPECT_EQ(again.id, gone);
    EXPECT_EQ(again.title, before.title);
    EXPECT_EQ(again.album, before.album);
}

TEST_F(Rescan, TakesBackAFileThatChangedMeanwhile) {
    const std::string path = PutWav("a.wav", {{"TITLE", "Old"}});
    Scan();
    const std::uint32_t id = IdAt("a.wav");
    Remove("a.wav");
    PutWav("b.wav");
    Scan();
    PutWav("a.wav", {{"TITLE", "New"}}, 200);
    EXPECT_EQ(Scan().changed, 1u);
    EXPECT_EQ(IdAt("a.wav"), id);
    EXPECT_EQ(SongAt("a.wav")->title, "New");
    EXPECT_EQ(PresenceOf("a.wav"), Presence::Here);
}

TEST_F(Rescan, ForgetsWhatIsGoneOnRequestAlone) {
    PutWav("a.wav", {{"ALBUM", "Gone"}});
    PutWav("b.wav", {{"ALBUM", "Here"}});
    PutWav("disk/c.wav", {{"ALBUM", "Away"}});
    Scan();
    const std::uint32_t gone = IdAt("a.wav");
    database->PutPlaylist(1, 100002, "Mine",
                          {{1, "", gone, 0}, {1, "", IdAt("b.wav"), 0}, {1, "", IdAt("disk/c.wav"), 0}});
    Remove("a.wav");
    Remove("disk/c.wav");
    EXPECT_EQ(Scan().missing, 2u);
    EXPECT_EQ(database->ForgetGoneSongs(), 1u);
    EXPECT_EQ(database->CountSongs(Presence::Away), 1u);
    EXPECT_EQ(Locations(), (Texts{"b.wav", "disk/c.wav"}));
    EXPECT_EQ(database->ListAlbums({}).total, 2u);
    EXPECT_EQ(database->GetPlaylistSongs(1).size(), 2u);
    // The same path again is another song.
    PutWav("a.wav");
    Scan();
    EXPECT_GT(IdAt("a.wav"), gone);
}

TEST_F(Rescan, KeepsTheSongsOfAFolderThatIsNotThere) {
    PutWav("a.wav");
    Scan();
    fs::rename(music, folder / "unplugged");
    EXPECT_EQ(Scan().missing, 1u);
    EXPECT_TRUE(HasMessage("Cannot scan " + music));
    EXPECT_EQ(PresenceOf("a.wav"), Presence::Away);
    // An empty folder stands where a disk will be mounted.
    fs::create_directory(music);
    const ScanProgress empty = Scan();
    EXPECT_EQ(empty.missing, 1u);
    ASSERT_EQ(empty.away.size(), 1u);
    EXPECT_EQ(empty.away[0].path, music);
    EXPECT_EQ(empty.away[0].reason, "it is empty, as when a disk is not mounted");
    EXPECT_EQ(PresenceOf("a.wav"), Presence::Away);
    fs::remove(music);
    fs::rename(folder / "unplugged", music);
    const ScanProgress last = Scan();
    EXPECT_EQ(last.added + last.changed + last.missing, 0u);
    EXPECT_TRUE(last.away.empty());
    EXPECT_EQ(PresenceOf("a.wav"), Presence::Here);
}

TEST_F(Rescan, KeepsTheSongsOfAMountPointThatIsEmptyToday) {
    PutWav("here.wav");
    PutWav("disk/x/a.wav");
    folder.Make("music/never-used");
    Scan();
    fs::rename(music + "/disk", folder / "unplugged");
    folder.Make("music/disk");
    const ScanProgress last = Scan();
    EXPECT_EQ(last.missing, 1u);
    ASSERT_EQ(last.away.size(), 1u);
    EXPECT_EQ(last.away[0].path, music + "/disk");
    EXPECT_EQ(PresenceOf("disk/x/a.wav"), Presence::Away);
    EXPECT_EQ(database->ForgetGoneSongs(), 0u);
    EXPECT_EQ(Locations(), (Texts{"disk/x/a.wav", "here.wav"}));
}

TEST_F(Rescan, ListsSomeOfThePlacesThatAreAway) {
    PutWav("a.wav");
    for (std::size_t i = 0; i <= MediaScanner::kMaxAwayPlaces; ++i)
        fs::create_symlink(folder / "nowhere", music + "/disk " + std::to_string(i));
    EXPECT_EQ(Scan().away.size(), MediaScanner::kMaxAwayPlaces);
}

TEST_F(Rescan, KeepsTheSongsBehindALinkToNowhere) {
    folder.Write("disk/a.wav", WavBytes());
    PutWav("b.wav");
    fs::create_directory_symlink(folder / "disk", music + "/disk");
    Scan();
    fs::rename(folder / "disk", folder / "unplugged");
    PutWav("disk2.wav"); // no part of the folder, though its name begins so
    Scan();
    Remove("disk2.wav");
    Scan();
    EXPECT_EQ(PresenceOf("disk/a.wav"), Presence::Away);
    EXPECT_EQ(PresenceOf("disk2.wav"), Presence::Gone);
}

TEST_F(Rescan, MarksTheSongsOfAFolderThatIsNoLongerAskedFor) {
    PutWav("x/a.wav");
    PutWav("y/b.wav");
    Scan({{music + "/x", kDevice}, {music + "/y", kDevice + 1}});
    EXPECT_EQ(Scan({{music + "/y", kDevice + 1}}).missing, 1u);
    EXPECT_EQ(PresenceOf("x/a.wav"), Presence::Gone);
    EXPECT_EQ(PresenceOf("y/b.wav"), Presence::Here);
}

TEST_F(Rescan, KeepsTheIdsWhenAFolderGetsAnotherDevice) {
    const std::string path = PutWav("x/a.wav");
    Scan({{music + "/x", kDevice + 5}});
    const std::uint32_t id = IdAt("x/a.wav");
    SpoilUnnoticed(path); // it need not be read for that
    Scan({{music + "/x", kDevice}});
    EXPECT_EQ(IdAt("x/a.wav"), id);
    EXPECT_EQ(database->GetStorageDevice(id), kDevice);
}

TEST_F(Rescan, LeavesSongsPutByHandAlone) {
    SongRecord song;
    song.id = 5;
    song.location = "/nowhere/song.wav";
    database->PutSong(song);
    database->PutAlbum({1, "By hand", "", {5}});
    database->PutAlbum({2, "Line in", "line1", {}});
    PutWav("a.wav");
    EXPECT_EQ(Scan().missing, 0u);
    EXPECT_TRUE(database->FindSong(5));
    EXPECT_EQ(database->FindAlbum(1)->songs, (std::vector<std::uint32_t>{5}));
    EXPECT_TRUE(database->FindAlbum(2));
}

TEST_F(Rescan, LeavesAlbumsPutByHandTheirSongs) {
    PutWav("a.wav", {{"ALBUM", "Scanned"}});
    Scan();
    const std::uint32_t id = IdAt("a.wav");
    const std::uint32_t album = database->PutAlbum({0, "Favourites", "", {id}});
    PutWav("a.wav", {{"ALBUM", "Renamed"}}, 200);
    Scan();
    EXPECT_EQ(database->FindAlbum(album)->songs, (std::vector<std::uint32_t>{id}));
    EXPECT_EQ(database->ListAlbums({}).total, 2u);
}

TEST_F(Rescan, RemembersBrokenFiles) {
    const std::string path = folder.Write("music/a.wav", std::string(WavBytes().size(), 'x'));
    SetFileTime(path, 1s);
    const auto time = fs::last_write_time(path);
    EXPECT_EQ(Scan().broken, 1u);
    // Were it read again, it would be found whole now.
    folder.Write("music/a.wav", WavBytes());
    fs::last_write_time(path, time);
    EXPECT_EQ(Scan().broken, 1u);
    EXPECT_TRUE(HasMessage("Cannot play " + path));
    SetFileTime(path, 2s);
    EXPECT_EQ(Scan().added, 1u);
    EXPECT_TRUE(database->ListBrokenFiles().empty());
}

TEST_F(Rescan, ForgetsBrokenFilesThatAreGone) {
    folder.Write("music/a.wav", "broken");
    PutWav("b.wav");
    Scan();
    EXPECT_EQ(database->ListBrokenFiles().size(), 1u);
    Remove("a.wav");
    Scan();
    EXPECT_TRUE(database->ListBrokenFiles().empty());
}

TEST_F(Rescan, KeepsTheRecordOfASongThatIsBrokenForAWhile) {
    PutWav("a.wav", {{"TITLE", "Blue"}});
    Scan();
    const std::uint32_t id = IdAt("a.wav");
    folder.Write("music/a.wav", "half a co");
    EXPECT_EQ(Scan().broken, 1u);
    EXPECT_EQ(IdAt("a.wav"), id);
    PutWav("a.wav", {{"TITLE", "Blue"}});
    EXPECT_EQ(Scan().broken, 0u);
    EXPECT_EQ(IdAt("a.wav"), id);
}

TEST_F(Rescan, NoticesACoverThatWasAdded) {
    const std::string path = PutWav("a.wav");
    Scan();
    folder.Write("music/cover.png", "\x89PNG\r\n\x1A\n");
    SpoilUnnoticed(path);
    EXPECT_EQ(Scan().changed, 0u);
    EXPECT_EQ(SongAt("a.wav")->image, "cover/" + std::to_string(IdAt("a.wav")));
}

} // namespace
} // namespace korvel::media
