// Which files hold sound.
#include <gtest/gtest.h>

#include <filesystem>

#include "AudioFiles.h"
#include "TempFolder.h"
#include "library/SoundFile.h"

namespace korvel::media {

void PrintTo(SoundFile outcome, std::ostream* out) {
    *out << (outcome == SoundFile::Sound     ? "Sound"
             : outcome == SoundFile::NoSound ? "NoSound"
                                             : "Unreadable");
}

namespace {

class SoundFiles : public testing::Test {
protected:
    SoundFile Look(const std::string& name, const std::string& bytes) {
        folder.Write(name, bytes);
        return LookForSound(folder / name);
    }

    TempFolder folder;
};

TEST_F(SoundFiles, OfEveryFormatHoldSound) {
    EXPECT_EQ(Look("a.wav", WavBytes(50)), SoundFile::Sound);
    for (const auto& [name, elements] :
         {std::pair{"a.flac", "flacenc"}, std::pair{"a.ogg", "vorbisenc ! oggmux"},
          std::pair{"a.opus", "opusenc ! oggmux"}, std::pair{"a.mp3", "lamemp3enc"},
          std::pair{"a.m4a", "avenc_aac ! mp4mux"}}) {
        ASSERT_TRUE(Encode(elements, folder / name)) << name;
        EXPECT_EQ(LookForSound(folder / name), SoundFile::Sound) << name;
    }
}

TEST_F(SoundFiles, MayHaveAnyName) {
    EXPECT_EQ(Look("a", WavBytes()), SoundFile::Sound);
    EXPECT_EQ(Look("a.mp3", WavBytes()), SoundFile::Sound);
    EXPECT_EQ(Look("a \"b\".txt", WavBytes()), SoundFile::Sound);
}

// A program that writes into a pipe cannot go back and tell the length.
TEST_F(SoundFiles, MayNotKnowTheirLength) {
    std::string bytes = WavBytes(1000);
    bytes.replace(4, 4, "\xFF\xFF\xFF\x7F");
    bytes.replace(40, 4, "\xFF\xFF\xFF\x7F");
    EXPECT_EQ(Look("a.wav", bytes), SoundFile::Sound);
    bytes.replace(40, 4, std::string(4, '\0'));
    EXPECT_EQ(Look("a.wav", bytes), SoundFile::Sound);
}

TEST_F(SoundFiles, OfWordsHoldNone) {
    const std::string words(5000, 'w');
    for (const char* name : {"a.wav", "a.mp3", "a.flac", "a.ogg", "a.opus", "a.m4a", "a.txt", "a"})
        EXPECT_EQ(Look(name, words), SoundFile::NoSound) << name;
}

TEST_F(SoundFiles, OfAHeaderAloneHoldNone) {
    EXPECT_EQ(Look("a.wav", ""), SoundFile::NoSound);
    EXPECT_EQ(Look("a.wav", WavBytes(0)), SoundFile::NoSound);
}

TEST_F(SoundFiles, ThatAreNotThereAreUnreadable) {
    EXPECT_EQ(LookForSound(folder / "nowhere.wav"), SoundFile::Unreadable);
    std::filesystem::create_directory(folder / "folder.wav");
    EXPECT_EQ(LookForSound(folder / "folder.wav"), SoundFile::Unreadable);
    EXPECT_EQ(LookForSound(""), SoundFile::Unreadable);
}

} // namespace
} // namespace korvel::media
