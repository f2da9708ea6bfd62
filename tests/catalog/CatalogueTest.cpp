// The catalogue's file.
#include <gtest/gtest.h>

#include "Catalogue.h"

namespace korvel::catalog {
namespace {

const std::string kTrack = "[[track]]\nid = \"t\"\ntitle = \"T\"\nmedia = \"t.wav\"\nduration = 3\n";

Catalogue Parse(const std::string& text) {
    return ParseCatalogue(text, "c.toml", "/music");
}

// What is wrong with the text; "" when nothing is.
std::string Wrong(const std::string& text) {
    try {
        Parse(text);
    } catch (const CatalogueError& error) {
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
        return error.what();
    }
    return "";
}

TEST(Catalogue, HoldsTracksPlaylistsAndChannels) {
    const Catalogue catalogue = Parse(R"(
        [[track]]
        id = "t1"
        title = "Morning"
        artist = "Ann"
        album = "Day"
        image = "http://covers/1.png"
        media = "http://music/1.flac"
        duration = 2.5

        [[track]]
        id = "t2"
        title = "Evening"
        media = "/abs/2.wav"
        duration = 60

        [[playlist]]
        id = "p"
        name = "Mine"
        tracks = ["t2", "t1", "t2"]

        [[channel]]
        id = "c"
        name = "Always"
        tracks = ["t1"]
    )");
    const Track& track = catalogue.tracks.at("t1");
    EXPECT_EQ(track.title, "Morning");
    EXPECT_EQ(track.artist, "Ann");
    EXPECT_EQ(track.album, "Day");
    EXPECT_EQ(track.image, "http://covers/1.png");
    EXPECT_EQ(track.media, "http://music/1.flac");
    EXPECT_EQ(track.duration.count(), 2500);
    EXPECT_EQ(catalogue.tracks.at("t2").media, "/abs/2.wav");
    ASSERT_EQ(catalogue.playlists.size(), 1u);
    EXPECT_EQ(catalogue.playlists[0].name, "Mine");
    EXPECT_EQ(catalogue.playlists[0].tracks, (std::vector<std::string>{"t2", "t1", "t2"}));
    ASSERT_EQ(catalogue.channels.size(), 1u);
    EXPECT_EQ(catalogue.channels[0].id, "c");
}

TEST(Catalogue, MayBeEmpty) {
    EXPECT_TRUE(Parse("").tracks.empty());
}

TEST(Catalogue, AMediaPathStartsAtItsFolder) {
    EXPECT_EQ(Parse(kTrack).tracks.at("t").media, "/music/t.wav");
}

TEST(Catalogue, APlaylistMayBeEmptyAndAChannelMayNot) {
    EXPECT_EQ(Wrong("[[playlist]]\nid = \"p\"\nname = \"P\"\ntracks = []\n"), "");
    EXPECT_EQ(Wrong("[[channel]]\nid = \"c\"\nname = \"C\"\ntracks = []\n"),
              "c.toml:4: 'tracks' in [[channel]] must name at least one track");
}

TEST(Catalogue, WhatIsWrongIsNamedWithItsLine) {
    EXPECT_EQ(Wrong("colour = 1"), "c.toml:1: 'colour' is not a setting");
    EXPECT_EQ(Wrong("[track]\nid = 1"), "c.toml: [[track]] must be written so, at most 50000 times");
    EXPECT_EQ(Wrong("[[track]]\ntitle = \"T\"\n"), "c.toml:1: 'id' in [[track]] is missing");
    EXPECT_EQ(Wrong("[[track]]\nid = 5\n"),
              "c.toml:2: 'id' in [[track]] must be a text of at most 64 bytes on one line");
    EXPECT_EQ(Wrong("[[track]]\nid = \"a b\"\n"),
              "c.toml:2: 'id' in [[track]] must be made of letters, digits and . _ - : only");
    EXPECT_EQ(Wrong("[[track]]\nid = \"channel-t\"\n"),
              "c.toml:2: 'id' in [[track]] must not begin with channel-");
    EXPECT_EQ(Wrong("[[track]]\nid = \"t\"\ntitle = \"a\\nb\"\n"),
              "c.toml:3: 'title' in [[track]] must be a text of at most 200 bytes on one line");
    EXPECT_EQ(Wrong(kTrack + "speed = 2\n"), "c.toml:6: 'speed' in [[track]] is not a setting");
    EXPECT_EQ(Wrong(kTrack + kTrack), "c.toml:7: 'id' in [[track]] is used twice");
    EXPECT_EQ(Wrong(kTrack + "[[playlist]]\nid = \"p\"\nname = \"P\"\ntracks = [\"t\", \"x\"]\n"),
              "c.toml:9: 'tracks' in [[playlist]] names 'x', which is no track");
    EXPECT_EQ(Wrong("[[playlist]]\nid = \"p\"\nname = \"P\"\ntracks = [7]\n"),
              "c.toml:4: 'tracks' in [[playlist]] must hold texts only");
    EXPECT_EQ(Wrong("[[channel]]\nid = \"c\"\nname = \"C\"\n").rfind("c.toml:1: 'tracks' in [[channel]]", 0),
              0u);
    EXPECT_NE(
        Wrong("[[track]]\nid = \"a\"\ntitle = \"A\"\nartist = \"B\"\nalbum = \"C\"\nmedia = \"http://\"\n")
            .find("must be a path or a web address"),
        std::string::npos);
    EXPECT_EQ(Wrong("[[track]").rfind("c.toml:1: ", 0), 0u);
    EXPECT_EQ(Wrong("a = \"\xff\"").rfind("c.toml:1: ", 0), 0u);
}

TEST(Catalogue, ADurationIsANumberOfSecondsWithinReason) {
    const std::string track = "[[track]]\nid = \"t\"\ntitle = \"T\"\nmedia = \"t.wav\"\n";
    EXPECT_EQ(Wrong(track + "duration = 0.1\n"), "");
    EXPECT_EQ(Wrong(track + "duration = 86400\n"), "");
    for (const char* duration :
         {"", "duration = 0", "duration = -1", "duration = nan", "duration = inf", "duration = 1e300",
          "duration = 86401", "duration = \"3\"", "duration = true", "duration = 9223372036854775807"})
        EXPECT_NE(Wrong(track + duration).find("must be the track's length in seconds"), std::string::npos)
            << duration;
}

TEST(Catalogue, AFileThatCannotBeReadSaysSo) {
    EXPECT_THROW(LoadCatalogue("/nowhere/c.toml"), CatalogueError);
    EXPECT_THROW(LoadCatalogue("/"), CatalogueError);
    EXPECT_THROW(LoadCatalogue("/dev/zero"), CatalogueError);
}

} // namespace
} // namespace korvel::catalog
