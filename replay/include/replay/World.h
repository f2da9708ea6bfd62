// The simulated outside of a run: what a transcript declares and the services read.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "library/MediaDatabase.h"
#include "replay/LiveWorld.h"
#include "replay/RandomSource.h"
#include "replay/Recorder.h"
#include "replay/VirtualTime.h"

namespace korvel::replay {

// The driver's own device id.
inline constexpr std::uint32_t kDriverDeviceId = 100002;

// Names of the operations that can be told to fail.
inline constexpr const char* kFailCreatePlaylist = "CreatePlaylist";
inline constexpr const char* kFailAddMedia = "AddMedia";
inline constexpr const char* kFailAddSongToPlaylist = "AddSongToPlaylist";
inline constexpr const char* kFailSongLocation = "SongLocation";
inline constexpr const char* kFailCreateMessage = "CreateMessage";
inline constexpr const char* kFailCreateBindMessage = "CreateBindMessage";
inline constexpr const char* kFailStartTimer = "StartTimer";
inline constexpr const char* kFailCreateClient = "CreateClient";

// An input that the core makes inside a call of the driver: the next whose output starts with that text.
struct InsideCall {
    std::string output;
    std::string input;
};

struct World {
    explicit World(std::ostream* echo) : recorder(echo) {}

    bool Fails(const char* operation) const { return failing.contains(operation); }

    Recorder recorder;
    VirtualClock clock;
    TimerQueue timers;
    RandomSource random;
    LiveWorld live;
    media::MediaDatabase media{":memory:"};

    std::uint32_t systemType = 0;
    std::set<std::string> localAddresses{"127.0.0.1"};
    std::map<std::uint32_t, std::string> names;
    std::map<std::uint32_t, std::vector<std::uint32_t>> mp3Devices;
    std::map<std::uint32_t, std::vector<std::uint32_t>> analogSources;    // by room, the devices on the way
    std::map<std::pair<std::uint32_t, std::string>, std::string> replies; // by device and message name
    std::set<std::string> failing;
    std::vector<InsideCall> insideCalls; // those that wait, in the order declared
};

} // namespace korvel::replay
