// Which files a scan takes.
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <linux/securebits.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>

#include "ScanHarness.h"

namespace fs = std::filesystem;

namespace korvel::media {
namespace {

// While one lives, permissions bind the superuser as they bind any owner of a file. Threads and programs
// started meanwhile inherit that.
class PlainOwner {
public:
    PlainOwner() {
        ::syscall(SYS_capget, &m_header, m_before);
        __user_cap_data_struct plain[2] = {m_before[0], m_before[1]};
        plain[0].effective &= ~(1u << CAP_DAC_OVERRIDE | 1u << CAP_DAC_READ_SEARCH);
        ::prctl(PR_SET_SECUREBITS, SECBIT_NOROOT); // or a program that is started gets all of them back
        ::syscall(SYS_capset, &m_header, plain);
    }
    ~PlainOwner() {
        ::syscall(SYS_capset, &m_header, m_before);
        ::prctl(PR_SET_SECUREBITS, 0);
    }
    PlainOwner(const PlainOwner&) = delete;
    PlainOwner& operator=(const PlainOwner&) = delete;

private:
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_before[2]{};
};

class ScanFolders : public testing::Test, public ScanHarness {
protected:
    using Texts = std::vector<std::string>;
};

TEST_F(ScanFolders, AreScannedAllTheWayDown) {
    PutWav("a.wav");
    PutWav("x/b.WAV");
    PutWav("x/y/z/c.wav");
    folder.Write("music/x/notes.txt", "text");
    folder.Write("music/x/wav", "no extension");
    const ScanProgress last = Scan();
    EXPECT_EQ(Locations(), (Texts{"a.wav", "x/b.WAV", "x/y/z/c.wav"}));
    EXPECT_EQ(last.phase, ScanPhase::Finished);
    EXPECT_EQ(last.filesSeen, 3u);
    EXPECT_EQ(last.filesDone, 3u);
    EXPECT_EQ(last.added, 3u);
    EXPECT_EQ(last.skipped, 0u);
    EXPECT_EQ(phases, (std::vector<ScanPhase>{ScanPhase::Listing, ScanPhase::Reading, ScanPhase::Finished}));
    EXPECT_TRUE(messages.empty());
}

TEST_F(ScanFolders, GiveIdsInTheOrderOfNames) {
    for (const char* name : {"c.wav", "a.wav", "b.wav"})
        PutWav(name);
    Scan();
    EXPECT_EQ(IdAt("a.wav"), kFirstSongId);
    EXPECT_EQ(IdAt("b.wav"), kFirstSongId + 1);
    EXPECT_EQ(IdAt("c.wav"), kFirstSongId + 2);
}

TEST_F(ScanFolders, LeaveOutHiddenFiles) {
    PutWav("._a.wav");
    PutWav(".trash/b.wav");
    Scan();
    EXPECT_EQ(Locations(), Texts{});
}

TEST_F(ScanFolders, LeaveOutNamesThatNoLineCarries) {
    PutWav("new\nline.wav");
    PutWav("quo\"te.wav");
    PutWav("de\x7Fl.wav");
    PutWav("tab\tfolder/a.wav");
    PutWav("good 'n' fine, 100% \\o.wav");
    PutWav("café.wav");
    const ScanProgress last = Scan();
    EXPECT_EQ(Locations().size(), 2u);
    EXPECT_EQ(last.skipped, 4u);
    EXPECT_EQ(messages.size(), 4u);
    EXPECT_TRUE(HasMessage("quo\"te.wav is left out"));
    EXPECT_TRUE(HasMessage("new line.wav is left out"));
}

TEST_F(ScanFolders, NameBrokenFiles) {
    PutWav("good.wav");
    folder.Write("music/text.mp3", "this is no music");
    folder.Write("music/empty.flac", "");
    folder.Write("music/noise.ogg", std::string(3000, '\xA5'));
    folder.Write("music/zeros.m4a", std::string(3000, '\0'));
    folder.Write("music/riff.wav", "RIFF\xFF\xFF\xFF\xFFWAVEfmt \xFF\xFF\xFF\x7F");
    const ScanProgress last = Scan();
    EXPECT_EQ(Locations(), (Texts{"good.wav"}));
    EXPECT_EQ(last.broken, 5u);
    EXPECT_EQ(last.filesDone, 6u);
    for (const char* name : {"text.mp3", "empty.flac", "noise.ogg", "zeros.m4a", "riff.wav"})
        EXPECT_TRUE(HasMessage(std::string("Cannot play ") + music + "/" + name)) << name;
}

TEST_F(ScanFolders, PassOverWhatOnlyLooksLikeAFile) {
    ASSERT_EQ(::mkfifo((music + "/pipe.wav").c_str(), 0600), 0);
    PutWav("folder.wav/a.wav");
    Scan();
    EXPECT_EQ(Locations(), (Texts{"folder.wav/a.wav"}));
}

TEST_F(ScanFolders, MayBeLinkedInCircles) {
    PutWav("a/b/song.wav");
    fs::create_directory_symlink(music, music + "/a/b/up");
    fs::create_directory_symlink("..", music + "/a/parent");
    fs::create_directory_symlink("self", music + "/self");
    const ScanProgress last = Scan();
    EXPECT_EQ(last.phase, ScanPhase::Finished);
    EXPECT_EQ(Locations(), (Texts{"a/b/song.wav"}));
}

TEST_F(ScanFolders, AreFollowedThroughLinksToOtherPlaces) {
    const std::string other = folder.Make("elsewhere");
    folder.Write("elsewhere/a.wav", WavBytes());
    folder.Write("single.wav", WavBytes());
    PutWav("z/real.wav");
    fs::create_directory_symlink(other, music + "/linked");
    fs::create_symlink(folder / "single.wav", music + "/one.wav");
    // What is there under its own name is not there a second time.
    fs::create_directory_symlink(music + "/z", music + "/a");
    fs::create_symlink(music + "/z/real.wav", music + "/b.wav");
    Scan();
    EXPECT_EQ(Locations(), (Texts{"linked/a.wav", "one.wav", "z/real.wav"}));
}

TEST_F(ScanFolders, MayBeALinkAndEndInASlash) {
    PutWav("a.wav");
    fs::create_directory_symlink(music, folder / "link");
    Scan({{(folder / "link") + "/", kDevice}});
    EXPECT_EQ(database->ListSongs({}).items.at(0).location, folder / "link/a.wav");
}

TEST_F(ScanFolders, MayOverlap) {
    PutWav("a.wav");
    PutWav("x/b.wav");
    Scan({{music + "/x", kDevice + 1}, {music, kDevice}});
    EXPECT_EQ(Locations(), (Texts{"a.wav", "x/b.wav"}));
    EXPECT_EQ(SongAt("x/b.wav")->deviceId, kDevice + 1);
    EXPECT_EQ(SongAt("a.wav")->deviceId, kDevice);
}

TEST_F(ScanFolders, ThatAreNotThereAreReported) {
    const ScanProgress last = Scan({{music + "/none", kDevice}});
    EXPECT_EQ(last.phase, ScanPhase::Finished);
    EXPECT_EQ(last.skipped, 1u);
    EXPECT_TRUE(HasMessage("Cannot scan " + music + "/none: No such file or directory"));
    Scan({{PutWav("a.wav"), kDevice}});
    EXPECT_TRUE(HasMessage("a.wav: it is not a folder"));
}

TEST_F(ScanFolders, NestedTooDeepAreReported) {
    std::string path;
    for (int i = 0; i < MediaScanner::kMaxFolderDepth + 2; ++i)
        path += "d/";
    PutWav(path + "deep.wav");
    PutWav("a.wav");
    Scan();
    EXPECT_EQ(Locations(), (Texts{"a.wav"}));
    EXPECT_TRUE(HasMessage("nested too deep"));
}

TEST_F(ScanFolders, OfManyBrokenFilesDoNotFloodTheLog) {
    for (std::uint32_t i = 0; i < MediaScanner::kMaxMessages + 50; ++i)
        folder.Write("music/" + std::to_string(i) + ".mp3", "no music");
    EXPECT_EQ(Scan().broken, MediaScanner::kMaxMessages + 50);
    EXPECT_EQ(messages.size(), MediaScanner::kMaxMessages);
    EXPECT_TRUE(HasMessage("Further messages of this scan are left out"));
}

TEST_F(ScanFolders, ThatMayNotBeReadKeepTheirSongs) {
    PutWav("closed/a.wav");
    PutWav("b.wav");
    Scan();
    fs::permissions(music + "/closed", fs::perms::none);
    const PlainOwner plainOwner;
    const ScanProgress last = Scan();
    fs::permissions(music + "/closed", fs::perms::owner_all);
    EXPECT_EQ(SongAt("closed/a.wav")->presence, Presence::Away);
    EXPECT_EQ(last.missing, 1u);
    EXPECT_EQ(Locations(), (Texts{"b.wav", "closed/a.wav"}));
    EXPECT_TRUE(HasMessage("Cannot scan " + music + "/closed: Permission denied"));
}

} // namespace
} // namespace korvel::media
