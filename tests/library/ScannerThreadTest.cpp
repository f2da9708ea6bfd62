// The scanner beside the rest of a controller: cancelling, failing, sharing the database.
#include <gtest/gtest.h>

#include <atomic>

#include "ScanHarness.h"

namespace korvel::media {
namespace {

class ScannerThread : public testing::Test, public ScanHarness {
protected:
    bool IsOver(ScanPhase phase) { return phase != ScanPhase::Listing && phase != ScanPhase::Reading; }
    void PutMany(int count) {
        for (int i = 0; i < count; ++i)
            PutWav(std::to_string(i) + ".wav", {}, 10);
    }
};

TEST_F(ScannerThread, StopsWhenCancelledAndMarksNothing) {
    PutMany(300);
    PutWav("gone.wav");
    Scan();
    Remove("gone.wav");
    for (const ScanPhase phase : {ScanPhase::Listing, ScanPhase::Reading}) {
        Signal reached, cancelled, over;
        ScanProgress last;
        MediaScanner scanner(databasePath, [&](const ScanProgress& progress) {
            if (progress.phase == phase) {
                reached.Set();
                EXPECT_TRUE(cancelled.Wait());
            }
            last = progress;
            if (IsOver(progress.phase))
                over.Set();
        });
        ASSERT_TRUE(scanner.Start({{music, kDevice}}));
        ASSERT_TRUE(reached.Wait());
        EXPECT_TRUE(scanner.IsRunning());
        EXPECT_FALSE(scanner.Start({{music, kDevice}}));
        scanner.Cancel();
        cancelled.Set();
        ASSERT_TRUE(over.Wait());
        EXPECT_EQ(last.phase, ScanPhase::Cancelled);
        EXPECT_EQ(last.filesDone, 0u);
        EXPECT_EQ(last.missing, 0u);
        EXPECT_FALSE(scanner.IsRunning());
    }
    EXPECT_EQ(SongAt("gone.wav")->presence, Presence::Here);
}

TEST_F(ScannerThread, CanStartAgainAsSoonAsItIsOver) {
    PutWav("a.wav");
    Signal first, second;
    std::atomic<int> ended = 0;
    MediaScanner scanner(databasePath, [&](const ScanProgress& progress) {
        if (IsOver(progress.phase))
            (++ended == 1 ? first : second).Set();
    });
    ASSERT_TRUE(scanner.Start({{music, kDevice}}));
    ASSERT_TRUE(first.Wait());
    EXPECT_TRUE(scanner.Start({{music, kDevice}}));
    ASSERT_TRUE(second.Wait());
    EXPECT_EQ(Locations().size(), 1u);
}

TEST_F(ScannerThread, MayBeDestroyedInTheMiddle) {
    PutMany(200);
    ScanPhase last = ScanPhase::Listing;
    {
        MediaScanner scanner(databasePath, [&](const ScanProgress& progress) { last = progress.phase; });
        ASSERT_TRUE(scanner.Start({{music, kDevice}}));
    }
    EXPECT_TRUE(IsOver(last));
    MediaScanner idle(databasePath, {});
    idle.Cancel();
}

TEST_F(ScannerThread, FailsWithAReasonWhenThereIsNoDatabase) {
    databasePath = folder.Write("broken.db", std::string(5000, 'x'));
    const ScanProgress last = Scan();
    EXPECT_EQ(last.phase, ScanPhase::Failed);
    EXPECT_NE(last.message.find("broken.db"), std::string::npos);
}

TEST_F(ScannerThread, LetsOthersReadAndWriteMeanwhile) {
    PutMany(500);
    std::atomic<bool> over = false;
    MediaScanner scanner(databasePath, [&](const ScanProgress& progress) { over = IsOver(progress.phase); });
    ASSERT_TRUE(scanner.Start({{music, kDevice}}));
    std::uint32_t playlists = 0;
    while (!over) {
        ASSERT_NE(database->CreatePlaylist(100002, "Mine", {{1, "", 1, 0}}), 0u);
        ASSERT_EQ(database->ListPlaylists({0, 1}).total, ++playlists);
    }
    EXPECT_EQ(database->ListSongs({}).total, 500u);
}

} // namespace
} // namespace korvel::media
