// How far a scan goes, and how much it says.
#include <gtest/gtest.h>

#include <atomic>

#include "ScanHarness.h"
#include "library/Cover.h"

namespace korvel::media {
namespace {

class ScanLimits : public testing::Test, protected ScanHarness {};

TEST_F(ScanLimits, AFolderAtTheLimitIsScannedAndOneBeneathIsNot) {
    std::string path;
    for (int depth = 0; depth < MediaScanner::kMaxFolderDepth; ++depth)
        path += "d/";
    PutWav(path + "in.wav");
    PutWav(path + "d/out.wav");
    Scan();
    EXPECT_EQ(Locations(), std::vector<std::string>{path + "in.wav"});
    EXPECT_TRUE(HasMessage("nested too deep"));
}

TEST_F(ScanLimits, AMessageIsCut) {
    // A byte that is no UTF-8 takes three of a message.
    std::string path;
    for (int depth = 0; depth < 10; ++depth)
        path += std::string(200, '\xFF') + "/";
    folder.Write("music/" + path + "a.wav", "no music");
    Scan();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_LE(messages[0].size(), 5000u);
    EXPECT_GT(messages[0].size(), 4990u);
}

TEST_F(ScanLimits, ReportsAreFewerThanFiles) {
    constexpr unsigned kFiles = 300;
    for (unsigned number = 0; number < kFiles; ++number)
        PutWav(std::to_string(number) + ".wav", {}, 1);
    std::atomic<unsigned> reports = 0;
    Signal over;
    MediaScanner scanner(databasePath, [&](const ScanProgress& progress) {
        ++reports;
        if (progress.phase == ScanPhase::Finished)
            over.Set();
    });
    ASSERT_TRUE(scanner.Start({{music, kDevice}}));
    ASSERT_TRUE(over.Wait());
    // There would be two for each file, which takes much less than the tenth of a second of a report.
    EXPECT_LT(reports, kFiles);
}

TEST_F(ScanLimits, ATracksNumberHasFourDigits) {
    PutWav("a.wav", {{"TRACKNUMBER", "9999"}});
    PutWav("b.wav", {{"TRACKNUMBER", "10000"}});
    Scan();
    EXPECT_EQ(SongAt("a.wav")->trackNumber, 9999u);
    EXPECT_EQ(SongAt("b.wav")->trackNumber, 0u);
}

TEST_F(ScanLimits, ACoverOfTheLargestSizeIsTaken) {
    const std::string path = PutWav("1.wav");
    folder.Write("music/folder.jpg", JpegBytes(std::string(kMaxCoverBytes - JpegBytes("").size(), 'x')));
    EXPECT_EQ(ReadCover(path).value().bytes.size(), kMaxCoverBytes);
}

} // namespace
} // namespace korvel::media
