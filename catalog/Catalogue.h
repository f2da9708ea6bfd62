// What the streaming service offers, as its file says.
#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace korvel::catalog {

inline constexpr std::size_t kMaxFileBytes = 16u << 20;
inline constexpr std::size_t kMaxTracks = 50000;
// So that the list of all of them fits the line that a reader takes.
inline constexpr std::size_t kMaxPlaylists = 100;
inline constexpr std::size_t kMaxChannels = 100;
inline constexpr std::size_t kMaxTracksPerList = 10000;
inline constexpr std::size_t kMaxIdBytes = 64;
inline constexpr std::size_t kMaxTextBytes = 200;
inline constexpr std::size_t kMaxAddressBytes = 4096;
inline constexpr double kMinTrackSeconds = 0.1;
inline constexpr double kMaxTrackSeconds = 24 * 3600;

struct Track {
    std::string id;
    std::string title;
    std::string artist;
    std::string album;
    std::string image; // address of a cover, or empty
    std::string media; // absolute path of a sound file, or an http or https address
    std::chrono::milliseconds duration{0};
};

// A member's playlist, or a channel: the ids of its tracks all exist, and a channel has at least one.
struct TrackList {
    std::string id;
    std::string name;
    std::vector<std::string> tracks;
};

struct Catalogue {
    std::map<std::string, Track, std::less<>> tracks;
    std::vector<TrackList> playlists; // in the order of the file
    std::vector<TrackList> channels;
};

// What is wrong with a catalogue, in one line that names the file, the line and the setting.
class CatalogueError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Reads a TOML text. `source` names it in errors; media paths that are not absolute start at `folder`. Throws
// CatalogueError.
Catalogue ParseCatalogue(const std::string& text, const std::string& source, const std::string& folder);

// ParseCatalogue of a file, with the file's own folder. Throws CatalogueError, also when it cannot be read.
Catalogue LoadCatalogue(const std::string& path);

} // namespace korvel::catalog
