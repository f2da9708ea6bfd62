#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ScanHarness.h"
#include "library/Cover.h"

namespace korvel::media {
namespace {

class Covers : public testing::Test, public ScanHarness {};

TEST_F(Covers, LieBesideTheSongs) {
    PutWav("a/1.wav");
    folder.Write("music/a/Folder.JPG", JpegBytes("beside"));
    PutWav("b/1.wav");
    Scan();
    EXPECT_EQ(SongAt("a/1.wav")->image, "cover/" + std::to_string(IdAt("a/1.wav")));
    EXPECT_EQ(ReadCover(music + "/a/1.wav")->bytes, JpegBytes("beside"));
    EXPECT_EQ(SongAt("b/1.wav")->image, "");
    EXPECT_FALSE(ReadCover(music + "/b/1.wav"));
}

TEST_F(Covers, InsideTheSongComeFirst) {
    const std::string path = PutWav("1.wav");
    ASSERT_TRUE(AddPicture(path, JpegBytes("inside")));
    folder.Write("music/cover.jpg", JpegBytes("beside"));
    EXPECT_EQ(ReadCover(path)->bytes, JpegBytes("inside"));
}

TEST_F(Covers, OfTheFrontComeBeforeOthers) {
    const std::string path = PutWav("1.wav");
    ASSERT_TRUE(AddPicture(path, JpegBytes("back"), PictureSide::kBack));
    EXPECT_EQ(ReadCover(path)->bytes, JpegBytes("back"));
    ASSERT_TRUE(AddPicture(path, JpegBytes("front")));
    EXPECT_EQ(ReadCover(path)->bytes, JpegBytes("front"));
}

TEST_F(Covers, AreChosenByName) {
    const std::string path = PutWav("1.wav");
    folder.Write("music/back.jpg", JpegBytes("back"));
    EXPECT_FALSE(ReadCover(path));
    folder.Write("music/front.png", "\x89PNG\r\n\x1A\n");
    EXPECT_EQ(ReadCover(path)->mimeType, "image/png");
    folder.Write("music/cover.jpg", JpegBytes("cover"));
    EXPECT_EQ(ReadCover(path)->bytes, JpegBytes("cover"));
}

TEST_F(Covers, ThatAreNoPicturesAreNone) {
    const std::string path = PutWav("1.wav");
    ASSERT_TRUE(AddPicture(path, "<script>alert(1)</script>"));
    folder.Write("music/folder.jpg", "<html>");
    EXPECT_FALSE(ReadCover(path));
}

TEST_F(Covers, AreLimitedInSize) {
    const std::string path = PutWav("1.wav");
    folder.Write("music/folder.jpg", JpegBytes(std::string(kMaxCoverBytes, 'x')));
    EXPECT_FALSE(ReadCover(path));
}

TEST_F(Covers, NeverWaitForAPipe) {
    const std::string path = PutWav("1.wav");
    ASSERT_EQ(::mkfifo((music + "/folder.jpg").c_str(), 0600), 0);
    EXPECT_FALSE(ReadCover(path));
    EXPECT_FALSE(ReadCover(music + "/folder.jpg"));
}

TEST_F(Covers, OfFilesThatAreNotThereAreNone) {
    EXPECT_FALSE(ReadCover("/no/such/song.flac"));
    EXPECT_FALSE(ReadCover(""));
}

} // namespace
} // namespace korvel::media
