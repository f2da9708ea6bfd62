// Every format of music file, as its encoder writes it.
#include <gtest/gtest.h>

#include "AudioFiles.h"
#include "ScanHarness.h"
#include "library/Cover.h"

namespace korvel::media {
namespace {

struct Format {
    const char* name;
    const char* fileName;
    const char* elements; // "" for a WAV file written by hand
};

void PrintTo(const Format& format, std::ostream* out) {
    *out << format.name;
}

class Formats : public testing::TestWithParam<Format>, public ScanHarness {
protected:
    std::string Make() {
        const std::string path = music + "/" + GetParam().fileName;
        if (*GetParam().elements == '\0')
            folder.Write(std::string("music/") + GetParam().fileName, WavBytes(1000));
        else
            EXPECT_TRUE(Encode(GetParam().elements, path)) << GetParam().elements;
        return path;
    }
};

TEST_P(Formats, TellsTagsDurationAndPicture) {
    const std::string path = Make();
    ASSERT_TRUE(Tag(path, {{"TITLE", "Blåa \"Bird\""},
                           {"ARTIST", "Ann"},
                           {"ALBUM", "Birds & Bees"},
                           {"ALBUMARTIST", "Ann and Bob"},
                           {"GENRE", "Jazz"},
                           {"TRACKNUMBER", "3/12"},
                           {"DISCNUMBER", "2"}}));
    ASSERT_TRUE(AddPicture(path, JpegBytes("inside")));
    const ScanProgress last = Scan();
    EXPECT_EQ(last.added, 1u);
    EXPECT_EQ(last.broken, 0u);
    const SongRecord song = SongAt(GetParam().fileName).value();
    EXPECT_EQ(song.title, "Blåa \"Bird\"");
    EXPECT_EQ(song.artist, "Ann");
    EXPECT_EQ(song.album, "Birds & Bees");
    EXPECT_EQ(song.albumArtist, "Ann and Bob");
    EXPECT_EQ(song.genre, "Jazz");
    EXPECT_EQ(song.trackNumber, 3u);
    EXPECT_EQ(song.discNumber, 2u);
    EXPECT_NEAR(song.durationMs, 1000, 150);
    EXPECT_EQ(song.deviceId, kDevice);
    EXPECT_EQ(song.image, "cover/" + std::to_string(song.id));
    const auto cover = ReadCover(song.location);
    ASSERT_TRUE(cover);
    EXPECT_EQ(cover->mimeType, "image/jpeg");
    EXPECT_EQ(cover->bytes, JpegBytes("inside"));
}

TEST_P(Formats, WithoutTagsIsNamedAfterItsFile) {
    Make();
    EXPECT_EQ(Scan().added, 1u);
    const SongRecord song = SongAt(GetParam().fileName).value();
    EXPECT_EQ(song.title, "tone");
    EXPECT_EQ(song.artist, "Unknown artist");
    EXPECT_EQ(song.album, "music");
    EXPECT_EQ(song.image, "");
}

TEST_P(Formats, CutOffAnywhereDoesNoHarm) {
    const std::string path = Make();
    const auto size = std::filesystem::file_size(path);
    for (const std::uintmax_t length : {std::uintmax_t{0}, std::uintmax_t{3}, std::uintmax_t{40}, size / 2}) {
        std::filesystem::resize_file(path, length);
        const ScanProgress last = Scan();
        EXPECT_EQ(last.phase, ScanPhase::Finished);
        EXPECT_EQ(last.added + last.changed + last.broken, 1u) << length;
        std::filesystem::resize_file(path, size);
    }
}

INSTANTIATE_TEST_SUITE_P(All, Formats,
                         testing::Values(Format{"Wav", "tone.wav", ""},
                                         Format{"Flac", "tone.flac", "flacenc"},
                                         Format{"OggVorbis", "tone.ogg", "vorbisenc ! oggmux"},
                                         Format{"VorbisNamedOga", "tone.oga", "vorbisenc ! oggmux"},
                                         Format{"Opus", "tone.opus", "opusenc ! oggmux"},
                                         Format{"OpusNamedOgg", "tone.OGG", "opusenc ! oggmux"},
                                         Format{"Mp3", "tone.Mp3", "lamemp3enc ! xingmux ! id3v2mux"},
                                         Format{"M4a", "tone.m4a", "avenc_aac ! mp4mux"}),
                         [](const auto& format) { return format.param.name; });

} // namespace
} // namespace korvel::media
