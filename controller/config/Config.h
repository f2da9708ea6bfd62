// The settings of a controller.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/Address.h"
#include "common/Log.h"

namespace korvel::controller {

inline constexpr std::size_t kMaxConfigBytes = 1u << 20;
inline constexpr std::size_t kMaxRooms = 100; // as many as one list of rooms in a command may name
inline constexpr std::uint32_t kMaxRoomId = 9999;
inline constexpr std::uint32_t kMaxChannel = 255;
inline constexpr std::size_t kMaxServers = 16;
inline constexpr std::size_t kMaxMusicFolders = 64;
inline constexpr std::size_t kMaxStations = 500;
inline constexpr std::size_t kMaxInputs = 100;
inline constexpr std::size_t kMaxNameLength = 100;

// A room and the endpoint that plays in it.
struct RoomConfig {
    std::uint32_t id = 0; // 1 to kMaxRoomId, unique
    std::string name;     // unique, whatever the case of its letters
    std::string address;  // IPv4 address of the room's player
    std::uint32_t port = 0;
    std::uint32_t channel = 1;
};

// An internet radio station.
struct StationConfig {
    std::string name; // unique, whatever the case of its letters
    std::string url;  // http or https
    std::string genre;
    std::string image; // address of a picture
};

struct Config {
    std::vector<RoomConfig> rooms;
    std::vector<common::HostPort> servers;
    std::vector<StationConfig> stations;
    std::vector<std::string> inputs;       // line inputs, as the audio server calls them; unique as stations
    std::vector<std::string> musicFolders; // absolute
    std::string stateFolder;
    std::string plugin;
    std::string httpAddress = "127.0.0.1";
    std::uint16_t httpPort = 8080; // 0: any free port
    std::string webFolder;         // empty: no page is served
    std::string catalogAddress;    // HOST:PORT; empty: the one that the driver connects to
    common::LogLevel log = common::LogLevel::Info;
};

// What is wrong with a configuration, in one line that names the file, the line and the setting.
class ConfigError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Three rooms and one audio server on this machine. `programFolder` is where the driver's plug-in is looked
// for.
Config DefaultConfig(const std::string& programFolder);

// Reads the TOML text on top of the defaults: a setting that is absent keeps its default, a list that is
// present replaces the default one. `source` names the text in errors; relative paths start at the present
// folder. Throws ConfigError.
Config ParseConfig(const std::string& text, const std::string& source, const std::string& programFolder);

// ParseConfig of a file. Throws ConfigError, also when it cannot be read.
Config LoadConfig(const std::string& path, const std::string& programFolder);

// Checks what the text alone cannot tell: the page's folder can be read. Throws ConfigError. A music folder
// may come and go, and a disk that does not answer must not hold up the start: the scan looks at it.
void CheckFolders(const Config& config);

} // namespace korvel::controller
