// How much a catalogue's file may hold.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "Catalogue.h"

namespace korvel::catalog {
namespace {

// What is wrong with the text; "" when nothing is.
std::string WrongLimit(const std::string& text) {
    try {
        ParseCatalogue(text, "c.toml", "/music");
    } catch (const CatalogueError& error) {
        return error.what();
    }
    return "";
}

struct Texts {
    std::string id = "t";
    std::string title = "T";
    std::string media = "t.wav";
    std::string image = "";
};

std::string TrackOf(const Texts& texts) {
    return "[[track]]\nid = \"" + texts.id + "\"\ntitle = \"" + texts.title + "\"\nmedia = \"" + texts.media +
           "\"\nimage = \"" + texts.image + "\"\nduration = 3\n";
}

// So many tables of this kind, each with an id of its own and these settings.
std::string Tables(const std::string& kind, std::size_t count, const std::string& settings) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += "[[" + kind + "]]\nid = \"n" + std::to_string(i) + "\"\n" + settings;
    return text;
}

TEST(CatalogueLimits, Tracks) {
    const std::string settings = "title = \"T\"\nmedia = \"t.wav\"\nduration = 3\n";
    EXPECT_EQ(WrongLimit(Tables("track", kMaxTracks, settings)), "");
    EXPECT_EQ(WrongLimit(Tables("track", kMaxTracks + 1, settings)),
              "c.toml: [[track]] must be written so, at most 50000 times");
}

TEST(CatalogueLimits, PlaylistsAndChannels) {
    const std::string settings = "name = \"N\"\ntracks = [\"t\"]\n";
    for (const auto& [kind, most] :
         {std::pair{"playlist", kMaxPlaylists}, std::pair{"channel", kMaxChannels}}) {
        EXPECT_EQ(WrongLimit(TrackOf({}) + Tables(kind, most, settings)), "") << kind;
        EXPECT_EQ(WrongLimit(TrackOf({}) + Tables(kind, most + 1, settings)),
                  "c.toml: [[" + std::string(kind) + "]] must be written so, at most 100 times");
    }
}

TEST(CatalogueLimits, TracksOfAList) {
    const auto listOf = [](std::size_t count) {
        std::string tracks;
        for (std::size_t i = 0; i < count; ++i)
            tracks += "\"t\",";
        return TrackOf({}) + "[[playlist]]\nid = \"p\"\nname = \"P\"\ntracks = [" + tracks + "]\n";
    };
    EXPECT_EQ(WrongLimit(listOf(kMaxTracksPerList)), "");
    EXPECT_EQ(WrongLimit(listOf(kMaxTracksPerList + 1)),
              "c.toml:10: 'tracks' in [[playlist]] must be a list of at most 10000 track ids");
}

TEST(CatalogueLimits, Texts) {
    const auto x = [](std::size_t bytes) { return std::string(bytes, 'x'); };
    EXPECT_EQ(
        WrongLimit(TrackOf({x(kMaxIdBytes), x(kMaxTextBytes), x(kMaxAddressBytes), x(kMaxAddressBytes)})),
        "");
    const std::string most = " in [[track]] must be a text of at most ";
    EXPECT_EQ(WrongLimit(TrackOf({.id = x(kMaxIdBytes + 1)})),
              "c.toml:2: 'id'" + most + "64 bytes on one line");
    EXPECT_EQ(WrongLimit(TrackOf({.title = x(kMaxTextBytes + 1)})),
              "c.toml:3: 'title'" + most + "200 bytes on one line");
    EXPECT_EQ(WrongLimit(TrackOf({.media = x(kMaxAddressBytes + 1)})),
              "c.toml:4: 'media'" + most + "4096 bytes on one line");
    EXPECT_EQ(WrongLimit(TrackOf({.image = x(kMaxAddressBytes + 1)})),
              "c.toml:5: 'image'" + most + "4096 bytes on one line");
}

TEST(CatalogueLimits, TheFile) {
    const std::string path = testing::TempDir() + "korvel-catalogue-" + std::to_string(::getpid()) + ".toml";
    std::ofstream(path) << '#' << std::string(kMaxFileBytes - 1, ' ');
    EXPECT_TRUE(LoadCatalogue(path).tracks.empty());
    std::ofstream(path, std::ios::app) << ' ';
    EXPECT_THROW(LoadCatalogue(path), CatalogueError);
    std::filesystem::remove(path);
}

} // namespace
} // namespace korvel::catalog
