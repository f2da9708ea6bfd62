#include "config/Config.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "common/Text.h"
#include "config/TomlTable.h"

namespace korvel::controller {
namespace {

namespace fs = std::filesystem;

constexpr std::uint16_t kDefaultServerPort = 7000;
constexpr std::uint32_t kDefaultEndpointPort = 6200;
constexpr std::int64_t kMaxPort = 65535;

std::string DefaultStateFolder() {
    if (const char* folder = std::getenv("XDG_STATE_HOME"); folder && *folder == '/')
        return std::string(folder) + "/korvel";
    if (const char* home = std::getenv("HOME"); home && *home == '/')
        return std::string(home) + "/.local/state/korvel";
    return fs::absolute("korvel-state").string();
}

bool IsIPv4(const std::string& address) {
    in_addr parsed{};
    return inet_pton(AF_INET, address.c_str(), &parsed) == 1;
}

std::string LowerCase(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

bool IsNumber(const std::string& text) {
    return text.find_first_not_of("0123456789") == std::string::npos;
}

RoomConfig ReadRoom(TomlTable& table) {
    RoomConfig room;
    room.address = "127.0.0.1";
    room.port = kDefaultEndpointPort;
    if (!table.Has("id"))
        table.Fail("id", "is missing");
    table.Integer("id", room.id, 1, kMaxRoomId);
    room.name = "Room " + std::to_string(room.id);
    table.Text("name", room.name);
    // A name of digits only could not be told from an id.
    if (room.name.empty() || room.name.size() > kMaxNameLength || IsNumber(room.name))
        table.Fail("name",
                   "must have 1 to " + std::to_string(kMaxNameLength) + " bytes, not all of them digits");
    table.Text("address", room.address);
    if (!IsIPv4(room.address))
        table.Fail("address", "must be an IPv4 address");
    table.Integer("port", room.port, 1, kMaxPort);
    table.Integer("channel", room.channel, 0, kMaxChannel);
    table.RefuseOtherKeys();
    return room;
}

void ReadRooms(TomlTable& top, const std::string& source, Config& config) {
    if (!top.Has("room"))
        return;
    config.rooms.clear();
    std::set<std::uint32_t> ids;
    std::set<std::string> names;
    for (const toml::table* entry : top.Tables("room")) {
        TomlTable table(*entry, source, "[[room]]");
        RoomConfig room = ReadRoom(table);
        if (!ids.insert(room.id).second)
            table.Fail("id", "is the id of another room");
        if (!names.insert(LowerCase(room.name)).second)
            table.Fail("name", "is the name of another room");
        config.rooms.push_back(std::move(room));
    }
    if (config.rooms.size() > kMaxRooms)
        top.Fail("room", "has more than " + std::to_string(kMaxRooms) + " entries");
}

void ReadServers(TomlTable& top, const std::string& source, Config& config) {
    if (!top.Has("server"))
        return;
    config.servers.clear();
    for (const toml::table* entry : top.Tables("server")) {
        TomlTable table(*entry, source, "[[server]]");
        common::HostPort server{"127.0.0.1", kDefaultServerPort};
        table.Text("host", server.host);
        if (server.host.empty() || server.host.size() > kMaxNameLength)
            table.Fail("host", "must be a host name or an IPv4 address");
        table.Integer("port", server.port, 1, kMaxPort);
        table.RefuseOtherKeys();
        config.servers.push_back(std::move(server));
    }
    if (config.servers.size() > kMaxServers)
        top.Fail("server", "has more than " + std::to_string(kMaxServers) + " entries");
}

// A name that people choose by; `names` are those that are taken.
std::string ReadName(TomlTable& table, const std::string& what, std::set<std::string>& names) {
    std::string name;
    if (!table.Has("name"))
        table.Fail("name", "is missing");
    table.Text("name", name);
    if (name.empty() || name.size() > kMaxNameLength || IsNumber(name))
        table.Fail("name",
                   "must have 1 to " + std::to_string(kMaxNameLength) + " bytes, not all of them digits");
    if (!names.insert(LowerCase(name)).second)
        table.Fail("name", "is the name of another " + what);
    return name;
}

void ReadStations(TomlTable& top, const std::string& source, Config& config) {
    std::set<std::string> names;
    for (const toml::table* entry : top.Tables("station")) {
        TomlTable table(*entry, source, "[[station]]");
        StationConfig station;
        station.name = ReadName(table, "station", names);
        table.Text("url", station.url);
        if (!common::IsReference(station.url) || !common::ParseWebAddress(station.url))
            table.Fail("url", "must be an http or https address");
        table.Text("genre", station.genre);
        table.Text("image", station.image);
        table.RefuseOtherKeys();
        config.stations.push_back(std::move(station));
    }
    if (config.stations.size() > kMaxStations)
        top.Fail("station", "has more than " + std::to_string(kMaxStations) + " entries");
}

void ReadInputs(TomlTable& top, const std::string& source, Config& config) {
    std::set<std::string> names;
    for (const toml::table* entry : top.Tables("input")) {
        TomlTable table(*entry, source, "[[input]]");
        const std::string name = ReadName(table, "input", names);
        // The audio server takes quotes for a reference to media, and what follows a "=" for the source.
        if (!common::FitsInQuotes(name) || name.find('=') != std::string::npos)
            table.Fail("name", "holds a character that no input can have");
        table.RefuseOtherKeys();
        config.inputs.push_back(name);
    }
    if (config.inputs.size() > kMaxInputs)
        top.Fail("input", "has more than " + std::to_string(kMaxInputs) + " entries");
}

void ReadHttp(TomlTable& top, const std::string& source, Config& config) {
    const toml::table* entry = top.Table("http");
    if (!entry)
        return;
    TomlTable table(*entry, source, "[http]");
    table.Text("address", config.httpAddress);
    // Whoever reaches the address commands the house.
    if (!IsIPv4(config.httpAddress) || config.httpAddress.rfind("127.", 0) != 0)
        table.Fail("address",
                   "must be a loopback address (127.0.0.1): the controller serves this machine only");
    table.Integer("port", config.httpPort, 0, kMaxPort);
    table.Text("web", config.webFolder);
    table.RefuseOtherKeys();
}

void ReadCatalog(TomlTable& top, const std::string& source, Config& config) {
    const toml::table* entry = top.Table("catalog");
    if (!entry)
        return;
    TomlTable table(*entry, source, "[catalog]");
    std::string& address = config.catalogAddress;
    table.Text("address", address);
    if (address.size() > kMaxNameLength || !common::ParseHostPort(address))
        table.Fail("address", "must be HOST:PORT");
    table.RefuseOtherKeys();
}

void ReadLog(TomlTable& top, Config& config) {
    std::string level;
    top.Text("log", level);
    if (level.empty() && !top.Has("log"))
        return;
    if (level == "error")
        config.log = common::LogLevel::Error;
    else if (level == "warning")
        config.log = common::LogLevel::Warning;
    else if (level == "info")
        config.log = common::LogLevel::Info;
    else if (level == "debug")
        config.log = common::LogLevel::Debug;
    else
        top.Fail("log", "must be \"error\", \"warning\", \"info\" or \"debug\"");
}

void ReadPaths(TomlTable& top, Config& config) {
    top.TextList("music", config.musicFolders);
    if (config.musicFolders.size() > kMaxMusicFolders)
        top.Fail("music", "has more than " + std::to_string(kMaxMusicFolders) + " folders");
    for (std::string& folder : config.musicFolders) {
        if (folder.empty())
            top.Fail("music", "holds an empty path");
        folder = fs::absolute(folder).lexically_normal().string();
    }
    top.Text("state", config.stateFolder);
    if (config.stateFolder.empty())
        top.Fail("state", "must be a folder");
    top.Text("plugin", config.plugin);
    if (config.plugin.empty())
        top.Fail("plugin", "must be a file");
}

} // namespace

Config DefaultConfig(const std::string& programFolder) {
    Config config;
    config.rooms = {{1, "Living room", "127.0.0.1", 6200, 1},
                    {2, "Kitchen", "127.0.0.1", 6202, 1},
                    {3, "Bedroom", "127.0.0.1", 6204, 1}};
    config.servers = {{"127.0.0.1", kDefaultServerPort}};
    config.stateFolder = DefaultStateFolder();
    config.plugin = programFolder + "/korvel_digitalaudio.so";
    return config;
}

Config ParseConfig(const std::string& text, const std::string& source, const std::string& programFolder) {
    Config config = DefaultConfig(programFolder);
    try {
        const toml::table document = toml::parse(text);
        TomlTable top(document, source, "");
        ReadPaths(top, config);
        ReadLog(top, config);
        ReadHttp(top, source, config);
        ReadCatalog(top, source, config);
        ReadRooms(top, source, config);
        ReadServers(top, source, config);
        ReadStations(top, source, config);
        ReadInputs(top, source, config);
        top.RefuseOtherKeys();
    } catch (const toml::parse_error& error) {
        throw ConfigError(source + ":" + std::to_string(error.source().begin.line) + ": " +
                          std::string(error.description()));
    }
    return config;
}

Config LoadConfig(const std::string& path, const std::string& programFolder) {
    std::error_code failed;
    if (!fs::is_regular_file(path, failed))
        throw ConfigError(path + ": cannot be read as a configuration file");
    if (fs::file_size(path, failed) > kMaxConfigBytes || failed)
        throw ConfigError(path + ": is too long for a configuration file");
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file)
        throw ConfigError(path + ": cannot be read");
    return ParseConfig(text, path, programFolder);
}

void CheckFolders(const Config& config) {
    if (config.webFolder.empty())
        return;
    std::error_code failed;
    if (!fs::is_directory(config.webFolder, failed))
        throw ConfigError("the web folder " + config.webFolder + " is not there");
    if (access(config.webFolder.c_str(), R_OK | X_OK) != 0)
        throw ConfigError("the web folder " + config.webFolder + " cannot be read");
}

} // namespace korvel::controller
