#include <gtest/gtest.h>

#include <filesystem>

#include "TestHouse.h"
#include "config/Config.h"

namespace korvel::controller {
namespace {

Config Parse(const std::string& text) {
    return ParseConfig(text, "house.toml", "/opt/korvel");
}

std::string ErrorOf(const std::string& text) {
    try {
        Parse(text);
    } catch (const ConfigError& error) {
        return error.what();
    }
    return "no error";
}

TEST(Config, AnEmptyFileIsThreeRoomsAndOneServerOnThisMachine) {
    const Config config = Parse("");
    ASSERT_EQ(config.rooms.size(), 3u);
    EXPECT_EQ(config.rooms[1].name, "Kitchen");
    EXPECT_EQ(config.rooms[2].port, 6204u);
    ASSERT_EQ(config.servers.size(), 1u);
    EXPECT_EQ(config.servers[0].host, "127.0.0.1");
    EXPECT_EQ(config.httpPort, 8080);
    EXPECT_EQ(config.plugin, "/opt/korvel/korvel_digitalaudio.so");
}

TEST(Config, EverySettingIsRead) {
    const Config config = Parse(R"(
music = ["/media/a", "/media/b/"]
state = "/var/lib/korvel"
plugin = "/usr/lib/driver.so"
log = "debug"
[http]
address = "127.0.0.2"
port = 0
web = "/usr/share/page"
[[room]]
id = 7
name = "Attic"
address = "10.0.0.7"
port = 6300
channel = 2
[[server]]
host = "music.local"
port = 7001
[[station]]
name = "Night Jazz"
url = "https://radio.example/jazz?rate=128"
genre = "Jazz"
image = "https://radio.example/jazz.png"
[[input]]
name = "Line 1"
)");
    EXPECT_EQ(config.musicFolders, (std::vector<std::string>{"/media/a", "/media/b/"}));
    EXPECT_EQ(config.stateFolder, "/var/lib/korvel");
    EXPECT_EQ(config.plugin, "/usr/lib/driver.so");
    EXPECT_EQ(config.log, common::LogLevel::Debug);
    EXPECT_EQ(config.httpAddress, "127.0.0.2");
    EXPECT_EQ(config.httpPort, 0);
    EXPECT_EQ(config.webFolder, "/usr/share/page");
    ASSERT_EQ(config.rooms.size(), 1u);
    EXPECT_EQ(config.rooms[0].id, 7u);
    EXPECT_EQ(config.rooms[0].address, "10.0.0.7");
    EXPECT_EQ(config.rooms[0].channel, 2u);
    ASSERT_EQ(config.servers.size(), 1u);
    EXPECT_EQ(config.servers[0].host, "music.local");
    EXPECT_EQ(config.servers[0].port, 7001);
    ASSERT_EQ(config.stations.size(), 1u);
    EXPECT_EQ(config.stations[0].name, "Night Jazz");
    EXPECT_EQ(config.stations[0].url, "https://radio.example/jazz?rate=128");
    EXPECT_EQ(config.stations[0].genre, "Jazz");
    EXPECT_EQ(config.stations[0].image, "https://radio.example/jazz.png");
    EXPECT_EQ(config.inputs, (std::vector<std::string>{"Line 1"}));
}

TEST(Config, ARoomNeedsOnlyItsId) {
    const Config config = Parse("[[room]]\nid = 4\n");
    ASSERT_EQ(config.rooms.size(), 1u);
    EXPECT_EQ(config.rooms[0].name, "Room 4");
    EXPECT_EQ(config.rooms[0].port, 6200u);
}

struct BadConfig {
    const char* text;
    const char* error;
};

class BadConfigTest : public testing::TestWithParam<BadConfig> {};

TEST_P(BadConfigTest, IsRefusedWithOneLineThatSaysWhere) {
    EXPECT_EQ(ErrorOf(GetParam().text), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    Config, BadConfigTest,
    testing::Values(
        BadConfig{"colour = 1", "house.toml:1: 'colour' is not a setting"},
        BadConfig{"[http]\nprot = 1", "house.toml:2: 'prot' in [http] is not a setting"},
        BadConfig{"\nstate = 5", "house.toml:2: 'state' must be a text"},
        BadConfig{"music = \"/a\"", "house.toml:1: 'music' must be a list of texts"},
        BadConfig{"music = [1]", "house.toml:1: 'music' must be a list of texts"},
        BadConfig{"log = \"loud\"",
                  "house.toml:1: 'log' must be \"error\", \"warning\", \"info\" or \"debug\""},
        BadConfig{"http = 3", "house.toml:1: 'http' must be a table"},
        BadConfig{"[http]\nport = 65536", "house.toml:2: 'port' in [http] must be from 0 to 65535"},
        BadConfig{"[http]\nport = \"80\"", "house.toml:2: 'port' in [http] must be a whole number"},
        BadConfig{
            "[http]\naddress = \"0.0.0.0\"",
            "house.toml:2: 'address' in [http] must be a loopback address (127.0.0.1): the controller serves "
            "this machine only"},
        BadConfig{"room = 1", "house.toml:1: 'room' must be written as [[room]]"},
        BadConfig{"[[room]]\nname = \"A\"", "house.toml:1: 'id' in [[room]] is missing"},
        BadConfig{"[[room]]\nid = 0", "house.toml:2: 'id' in [[room]] must be from 1 to 9999"},
        BadConfig{"[[room]]\nid = 1\n[[room]]\nid = 1",
                  "house.toml:4: 'id' in [[room]] is the id of another room"},
        BadConfig{"[[room]]\nid = 1\nname = \"A\"\n[[room]]\nid = 2\nname = \"a\"",
                  "house.toml:6: 'name' in [[room]] is the name of another room"},
        BadConfig{"[[room]]\nid = 1\nname = \"12\"",
                  "house.toml:3: 'name' in [[room]] must have 1 to 100 bytes, not all of them digits"},
        BadConfig{"[[room]]\nid = 1\naddress = \"kitchen\"",
                  "house.toml:3: 'address' in [[room]] must be an IPv4 address"},
        BadConfig{"[[room]]\nid = 1\nport = 0", "house.toml:3: 'port' in [[room]] must be from 1 to 65535"},
        BadConfig{"[[station]]\nurl = \"http://a\"", "house.toml:1: 'name' in [[station]] is missing"},
        BadConfig{"[[station]]\nname = \"A\"",
                  "house.toml:1: 'url' in [[station]] must be an http or https address"},
        BadConfig{"[[station]]\nname = \"A\"\nurl = \"ftp://a\"",
                  "house.toml:3: 'url' in [[station]] must be an http or https address"},
        BadConfig{"[[station]]\nname = \"A\"\nurl = \"http://a b\"",
                  "house.toml:3: 'url' in [[station]] must be an http or https address"},
        BadConfig{"[[station]]\nname = \"A\"\nurl = \"http://a\"\n[[station]]\nname = \"a\"",
                  "house.toml:5: 'name' in [[station]] is the name of another station"},
        BadConfig{"[[input]]\nname = \"7\"",
                  "house.toml:2: 'name' in [[input]] must have 1 to 100 bytes, not all of them digits"},
        BadConfig{"[[input]]\nname = \"a=b\"",
                  "house.toml:2: 'name' in [[input]] holds a character that no input can have"},
        BadConfig{"[[input]]\nname = \"A\"\nport = 1", "house.toml:3: 'port' in [[input]] is not a setting"},
        BadConfig{"[[input]]\nname = \"a\\\"b\"",
                  "house.toml:2: 'name' in [[input]] holds a character that no input can have"},
        BadConfig{"[[input]]\nname = \"a\\nb\"",
                  "house.toml:2: 'name' in [[input]] holds a control character"},
        BadConfig{"[[room]]\nid = 1\nname = \"a\\rb\"",
                  "house.toml:3: 'name' in [[room]] holds a control character"},
        BadConfig{"[[station]]\nname = \"A\"\nurl = \"http://a\\n\"",
                  "house.toml:3: 'url' in [[station]] holds a control character"},
        BadConfig{"[[station]]\nname = \"A\"\nurl = \"http://a/\\\"\"",
                  "house.toml:3: 'url' in [[station]] must be an http or https address"},
        BadConfig{"music = [\"/a\\nb\"]", "house.toml:1: 'music' holds a control character"},
        BadConfig{"[[server]]\nport = 70000", "house.toml:2: 'port' in [[server]] must be from 1 to 65535"},
        BadConfig{"[[server]]\nhost = \"\"",
                  "house.toml:2: 'host' in [[server]] must be a host name or an IPv4 address"}));

TEST(Config, BadTomlIsRefusedWithItsLine) {
    EXPECT_EQ(ErrorOf("a = 1\nb = [").rfind("house.toml:2: ", 0), 0u) << ErrorOf("a = 1\nb = [");
}

TEST(Config, AFileThatCannotBeReadIsAnError) {
    EXPECT_THROW(LoadConfig("/nowhere/house.toml", "/opt"), ConfigError);
    EXPECT_THROW(LoadConfig("/", "/opt"), ConfigError);
}

TEST(Config, AMusicFolderMayComeAndGoAPageMayNot) {
    const ScratchFolder folder;
    Config config = Parse("");
    config.webFolder = folder.Path();
    config.musicFolders = {folder.File("missing")};
    EXPECT_NO_THROW(CheckFolders(config));
    config.webFolder = folder.File("missing");
    try {
        CheckFolders(config);
        FAIL();
    } catch (const ConfigError& error) {
        EXPECT_EQ(std::string(error.what()), "the web folder " + folder.File("missing") + " is not there");
    }
}

} // namespace
} // namespace korvel::controller
