// What becomes of tags that are missing, odd or spread over an album.
#include <gtest/gtest.h>

#include <fstream>

#include "ScanHarness.h"

namespace korvel::media {
namespace {

class Tags : public testing::Test, public ScanHarness {
protected:
    std::vector<std::string> Albums() {
        std::vector<std::string> albums;
        for (const AlbumSummary& album : database->ListAlbums({}).items)
            albums.push_back(album.title + " by " + album.artist + ": " + std::to_string(album.songCount));
        return albums;
    }
    using Texts = std::vector<std::string>;
};

TEST_F(Tags, MissingOnesComeFromThePath) {
    PutWav("Colours/01 Blue.wav", {{"GENRE", "Jazz"}});
    Scan();
    const SongRecord song = SongAt("Colours/01 Blue.wav").value();
    EXPECT_EQ(song.title, "01 Blue");
    EXPECT_EQ(song.artist, "Unknown artist");
    EXPECT_EQ(song.album, "Colours");
    EXPECT_EQ(song.trackNumber, 0u);
}

TEST_F(Tags, OfBlanksCountAsMissing) {
    PutWav("a.wav", {{"TITLE", "   "}, {"ARTIST", "\n"}, {"ALBUM", "Real"}});
    Scan();
    EXPECT_EQ(SongAt("a.wav")->title, "a");
    EXPECT_EQ(SongAt("a.wav")->artist, "Unknown artist");
}

TEST_F(Tags, WithControlCharactersAreCleaned) {
    PutWav("a.wav", {{"TITLE", "One\nTwo\x01\x1BThree"}, {"ARTIST", "<b>&\"'"}});
    Scan();
    EXPECT_EQ(SongAt("a.wav")->title, "One Two  Three");
    EXPECT_EQ(SongAt("a.wav")->artist, "<b>&\"'");
    EXPECT_TRUE(KVXML::CreateXmlDocument(database->GetMediaRecord(IdAt("a.wav"), "SONG")->ToText()));
}

TEST_F(Tags, OfAnyLengthAreCut) {
    PutWav("a.wav", {{"TITLE", std::string(100000, 'x')}});
    Scan();
    EXPECT_EQ(SongAt("a.wav")->title.size(), 1000u);
}

TEST_F(Tags, WithOddNumbersCountAsUnknown) {
    PutWav("a.wav", {{"TRACKNUMBER", "-1"}});
    PutWav("b.wav", {{"TRACKNUMBER", "99999999999"}});
    PutWav("c.wav", {{"TRACKNUMBER", "B2"}});
    PutWav("d.wav", {{"TRACKNUMBER", "07/0"}});
    Scan();
    EXPECT_EQ(SongAt("a.wav")->trackNumber, 0u);
    EXPECT_EQ(SongAt("b.wav")->trackNumber, 0u);
    EXPECT_EQ(SongAt("c.wav")->trackNumber, 0u);
    EXPECT_EQ(SongAt("d.wav")->trackNumber, 7u);
}

TEST_F(Tags, ThatAreNoUtf8BecomeUtf8) {
    // A Vorbis comment is copied byte for byte.
    ASSERT_TRUE(Encode("flacenc", music + "/a.flac"));
    ASSERT_TRUE(Tag(music + "/a.flac", {{"TITLE", "caf@@"}}));
    std::fstream file(music + "/a.flac", std::ios::in | std::ios::out | std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    file.clear();
    file.seekp(static_cast<std::streamoff>(bytes.find("caf@@") + 3));
    file << "\xE9\xFF";
    file.close();
    Scan();
    const std::string title = SongAt("a.flac").value().title;
    EXPECT_EQ(title.find('\xFF'), std::string::npos);
    EXPECT_FALSE(title.empty());
}

TEST_F(Tags, FileNamesThatAreNoUtf8KeepTheirBytesInTheLocationAlone) {
    PutWav("caf\xE9.wav");
    Scan();
    const auto songs = database->ListSongs({}).items;
    ASSERT_EQ(songs.size(), 1u);
    EXPECT_EQ(songs[0].location, music + "/caf\xE9.wav");
    EXPECT_EQ(songs[0].title, "caf\uFFFD");
}

TEST_F(Tags, SongsOfOneFolderAndTitleAreOneAlbum) {
    PutWav("mix/a.wav", {{"ALBUM", "Mix"}, {"ARTIST", "Ann"}});
    PutWav("mix/b.wav", {{"ALBUM", "Mix"}, {"ARTIST", "Bob"}});
    PutWav("other/a.wav", {{"ALBUM", "Mix"}, {"ARTIST", "Cid"}});
    Scan();
    EXPECT_EQ(Albums(), (Texts{"Mix by Various artists: 2", "Mix by Cid: 1"}));
}

TEST_F(Tags, AnAlbumArtistJoinsSongsOfSeveralFolders) {
    PutWav("a/1.wav", {{"ALBUM", "Hits"}, {"ARTIST", "Ann"}, {"ALBUMARTIST", "Ann"}});
    PutWav("b/2.wav", {{"ALBUM", "Hits"}, {"ARTIST", "Ann feat. Bob"}, {"ALBUMARTIST", "Ann"}});
    PutWav("a/3.wav", {{"ALBUM", "Hits"}, {"ARTIST", "Bob"}, {"ALBUMARTIST", "Bob"}});
    Scan();
    EXPECT_EQ(Albums(), (Texts{"Hits by Ann: 2", "Hits by Bob: 1"}));
}

TEST_F(Tags, DiscsInFoldersOfTheirOwnAreOneAlbum) {
    PutWav("Opera/CD1/b.wav", {{"DISCNUMBER", "1"}, {"TRACKNUMBER", "2"}});
    PutWav("Opera/CD1/a.wav", {{"DISCNUMBER", "1"}, {"TRACKNUMBER", "1"}});
    PutWav("Opera/disc 2/a.wav", {{"DISCNUMBER", "2"}, {"TRACKNUMBER", "1"}});
    PutWav("Opera/CDs/a.wav");
    Scan();
    EXPECT_EQ(Albums(), (Texts{"CDs by Unknown artist: 1", "Opera by Unknown artist: 3"}));
    const std::uint32_t opera = database->ListAlbums({}).items.at(1).id;
    EXPECT_EQ(database->FindAlbum(opera)->songs,
              (std::vector<std::uint32_t>{IdAt("Opera/CD1/a.wav"), IdAt("Opera/CD1/b.wav"),
                                          IdAt("Opera/disc 2/a.wav")}));
    EXPECT_EQ(database->GetSongsForAlbums({opera}, {kDevice}).size(), 3u);
    EXPECT_EQ(database->GetAlbumInfo(opera)->FindChild("title")->GetText(), "Opera");
}

} // namespace
} // namespace korvel::media
