// How much a configuration may hold.
#include <gtest/gtest.h>

#include "TestHouse.h"
#include "common/Text.h"
#include "config/Config.h"

namespace korvel::controller {
namespace {

// What is wrong with the text, without the place; "" when nothing is.
std::string Wrong(const std::string& text) {
    try {
        ParseConfig(text, "house.toml", "/opt/korvel");
    } catch (const ConfigError& error) {
        const std::string what = error.what();
        return what.substr(what.find(": ") + 2);
    }
    return "";
}

// So many tables, where `settings` writes the one of a number.
std::string Tables(const std::string& name, std::size_t count, std::string (*settings)(const std::string&)) {
    std::string text;
    for (std::size_t i = 1; i <= count; ++i)
        text += "[[" + name + "]]\n" + settings(std::to_string(i)) + "\n";
    return text;
}

std::string X(std::size_t bytes) {
    return std::string(bytes, 'x');
}

TEST(ConfigLimits, Tables) {
    const auto room = [](const std::string& number) { return "id = " + number; };
    EXPECT_EQ(Wrong(Tables("room", kMaxRooms, room)), "");
    EXPECT_EQ(Wrong(Tables("room", kMaxRooms + 1, room)), "'room' has more than 100 entries");
    const auto server = [](const std::string& number) { return "port = " + number; };
    EXPECT_EQ(Wrong(Tables("server", kMaxServers, server)), "");
    EXPECT_EQ(Wrong(Tables("server", kMaxServers + 1, server)), "'server' has more than 16 entries");
    const auto station = [](const std::string& number) {
        return "name = \"s" + number + "\"\nurl = \"http://a\"";
    };
    EXPECT_EQ(Wrong(Tables("station", kMaxStations, station)), "");
    EXPECT_EQ(Wrong(Tables("station", kMaxStations + 1, station)), "'station' has more than 500 entries");
    const auto input = [](const std::string& number) { return "name = \"i" + number + "\""; };
    EXPECT_EQ(Wrong(Tables("input", kMaxInputs, input)), "");
    EXPECT_EQ(Wrong(Tables("input", kMaxInputs + 1, input)), "'input' has more than 100 entries");
}

TEST(ConfigLimits, MusicFolders) {
    const auto foldersOf = [](std::size_t count) {
        std::string list;
        for (std::size_t i = 0; i < count; ++i)
            list += "\"/m\",";
        return "music = [" + list + "]";
    };
    EXPECT_EQ(Wrong(foldersOf(kMaxMusicFolders)), "");
    EXPECT_EQ(Wrong(foldersOf(kMaxMusicFolders + 1)), "'music' has more than 64 folders");
}

TEST(ConfigLimits, Numbers) {
    EXPECT_EQ(Wrong("[[room]]\nid = 9999\nchannel = 255\nport = 65535"), "");
    EXPECT_EQ(Wrong("[[room]]\nid = 10000"), "'id' in [[room]] must be from 1 to 9999");
    EXPECT_EQ(Wrong("[[room]]\nid = 1\nchannel = 256"), "'channel' in [[room]] must be from 0 to 255");
    EXPECT_EQ(Wrong("[[room]]\nid = 1\nport = 65536"), "'port' in [[room]] must be from 1 to 65535");
}

TEST(ConfigLimits, Texts) {
    const std::string name = X(kMaxNameLength);
    EXPECT_EQ(Wrong("[[room]]\nid = 1\nname = \"" + name + "\""), "");
    EXPECT_EQ(Wrong("[[station]]\nname = \"" + name + "\"\nurl = \"http://a\""), "");
    EXPECT_EQ(Wrong("[[input]]\nname = \"" + name + "\""), "");
    EXPECT_EQ(Wrong("[[server]]\nhost = \"" + name + "\""), "");
    const std::string tooLong = "must have 1 to 100 bytes, not all of them digits";
    EXPECT_EQ(Wrong("[[room]]\nid = 1\nname = \"x" + name + "\""), "'name' in [[room]] " + tooLong);
    EXPECT_EQ(Wrong("[[station]]\nname = \"x" + name + "\"\nurl = \"http://a\""),
              "'name' in [[station]] " + tooLong);
    EXPECT_EQ(Wrong("[[input]]\nname = \"x" + name + "\""), "'name' in [[input]] " + tooLong);
    EXPECT_EQ(Wrong("[[server]]\nhost = \"x" + name + "\""),
              "'host' in [[server]] must be a host name or an IPv4 address");
    const std::string url = "http://a/";
    const std::string station = "[[station]]\nname = \"A\"\nurl = \"" + url;
    EXPECT_EQ(Wrong(station + X(common::kMaxReferenceBytes - url.size()) + "\""), "");
    EXPECT_EQ(Wrong(station + X(common::kMaxReferenceBytes - url.size() + 1) + "\""),
              "'url' in [[station]] must be an http or https address");
    const std::string catalogue = "[catalog]\naddress = \"";
    EXPECT_EQ(Wrong(catalogue + X(kMaxNameLength - 3) + ":80\""), "");
    EXPECT_EQ(Wrong(catalogue + X(kMaxNameLength - 2) + ":80\""), "'address' in [catalog] must be HOST:PORT");
}

TEST(ConfigLimits, TheFile) {
    const ScratchFolder folder;
    EXPECT_NO_THROW(LoadConfig(folder.Write("a.toml", "#" + X(kMaxConfigBytes - 1)), "/opt"));
    EXPECT_THROW(LoadConfig(folder.Write("b.toml", "#" + X(kMaxConfigBytes)), "/opt"), ConfigError);
}

} // namespace
} // namespace korvel::controller
