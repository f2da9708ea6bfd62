// Scans of files that harm whoever reads them.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "HangingFile.h"
#include "HostileFiles.h"
#include "ScanHarness.h"
#include "library/ScanRecords.h"

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace korvel::media {
namespace {

class HostileScan : public testing::Test, public ScanHarness {
protected:
    using Texts = std::vector<std::string>;
};

TEST_F(HostileScan, GoesOnBehindAFileThatKillsTheReader) {
    PutWav("a.wav");
    const std::string path = folder.Write("music/b.m4a", NestedAtoms(200000));
    PutWav("c.wav");
    const ScanProgress last = Scan();
    EXPECT_EQ(last.phase, ScanPhase::Finished);
    EXPECT_EQ(last.added, 2u);
    EXPECT_EQ(last.broken, 1u);
    EXPECT_EQ(Locations(), (Texts{"a.wav", "c.wav"}));
    EXPECT_TRUE(HasMessage("Cannot play " + path + ": " + kNestedAtomsEnd));
    const auto broken = database->ListBrokenFiles();
    ASSERT_EQ(broken.size(), 1u);
    EXPECT_EQ(broken[0].location, path);
    EXPECT_EQ(broken[0].fileSize, fs::file_size(path));
    EXPECT_EQ(broken[0].reason, kNestedAtomsEnd);
}

TEST_F(HostileScan, SkipsWhatKilledTheReaderUntilItChanges) {
    const std::string path = folder.Write("music/a.m4a", NestedAtoms(200000));
    SetFileTime(path, 1s);
    Scan();
    // Were it read again, another reason would be told.
    const auto size = fs::file_size(path);
    folder.Write("music/a.m4a", std::string(size, 'x'));
    SetFileTime(path, 1s);
    EXPECT_EQ(Scan().broken, 1u);
    EXPECT_TRUE(HasMessage(kNestedAtomsEnd));
    SetFileTime(path, 2s);
    EXPECT_EQ(Scan().broken, 1u);
    EXPECT_TRUE(HasMessage("no audio can be read from it"));
}

TEST_F(HostileScan, KeepsTheSongThatTurnedHarmful) {
    const std::string path = PutWav("a.wav", {{"TITLE", "Blue"}});
    Scan();
    const std::uint32_t id = IdAt("a.wav");
    patience = 3s;
    folder.Write("music/a.wav", WavBytes(200));
    const HangingFile hanging(path);
    EXPECT_EQ(Scan().broken, 1u);
    EXPECT_EQ(IdAt("a.wav"), id);
    EXPECT_EQ(SongAt("a.wav")->title, "Blue");
    EXPECT_EQ(database->ListBrokenFiles().at(0).reason, "no answer in 3 s");
}

TEST_F(HostileScan, LeavesADiskAloneThatHangsAllTheTime) {
    patience = 3s;
    std::vector<std::unique_ptr<HangingFile>> hanging;
    for (const char* name : {"a.wav", "b.wav", "c.wav", "d.wav"})
        hanging.push_back(std::make_unique<HangingFile>(PutWav(name)));
    PutWav("e.wav");
    const ScanProgress last = Scan();
    EXPECT_EQ(last.phase, ScanPhase::Finished);
    EXPECT_EQ(last.broken, 3u);
    EXPECT_EQ(last.skipped, 2u);
    EXPECT_TRUE(HasMessage("d.wav: its disk does not answer"));
    hanging.clear();
    EXPECT_EQ(Scan().added, 2u);
}

TEST_F(HostileScan, EndsAtOnceWhileAFileHangs) {
    const HangingFile hanging(PutWav("a.wav"));
    Signal reading;
    ScanPhase last = ScanPhase::Listing;
    {
        MediaScanner scanner(databasePath, [&](const ScanProgress& progress) {
            last = progress.phase;
            if (last == ScanPhase::Reading)
                reading.Set();
        });
        ASSERT_TRUE(scanner.Start({{music, kDevice}}));
        ASSERT_TRUE(reading.Wait());
    }
    EXPECT_EQ(last, ScanPhase::Cancelled);
    EXPECT_TRUE(database->ListBrokenFiles().empty());
}

TEST_F(HostileScan, NeverWaitsForAPipe) {
    PutWav("a.wav");
    ASSERT_EQ(::mkfifo((music + "/b.mp3").c_str(), 0600), 0);
    fs::create_symlink(music + "/b.mp3", music + "/c.mp3");
    EXPECT_EQ(Scan().added, 1u);
}

TEST_F(HostileScan, FailsWithAReasonWithoutItsReader) {
    PutWav("a.wav");
    Scan();
    program = folder / "none";
    const ScanProgress last = Scan();
    EXPECT_EQ(last.phase, ScanPhase::Failed);
    EXPECT_NE(last.message.find("cannot start " + program), std::string::npos) << last.message;
    EXPECT_EQ(SongAt("a.wav")->presence, Presence::Here);
}

} // namespace
} // namespace korvel::media
