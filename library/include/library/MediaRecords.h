// The records of the media database as its users see them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/MediaManager.h"

namespace korvel::media {

// Ids of all kinds are 1 to this, so that they stay positive wherever a 32-bit number carries them.
inline constexpr std::uint32_t kMaxId = 2147483647;
// The first id that the database gives to a song; albums, stations and playlists start at 1.
inline constexpr std::uint32_t kFirstSongId = 1000;

// Where the file of a song is, as far as the last scan could tell.
enum class Presence : std::uint8_t {
    Here = 0,
    Gone = 1, // its folder was looked into and it was not there
    Away = 2  // its folder could not be looked into, or stood empty, as when a disk is not mounted
};

// Texts are UTF-8 and "" when not known, numbers 0 when not known.
struct SongRecord {
    std::uint32_t id = 0;
    // The path of the file, byte for byte. A file's name need not be UTF-8: see CleanText().
    std::string location;
    std::uint32_t deviceId = 0; // the storage device
    std::string title;
    std::string artist;
    std::string album; // the album's title
    std::string albumArtist;
    std::string genre;
    // Where a user interface finds the picture; of a scanned song "cover/<id>", served from ReadCover().
    std::string image;
    std::uint32_t trackNumber = 0;
    std::uint32_t discNumber = 0;
    std::uint32_t durationMs = 0;
    // What the scanner compares to notice a change. A song with fileSize 0 was not found by a scan and is
    // left alone by all scans.
    std::uint64_t fileSize = 0;
    std::int64_t fileTimeNs = 0;
    Presence presence = Presence::Here;
};

struct StationRecord {
    std::uint32_t id = 0;
    std::string location; // the address
    std::string name;
    std::string genre;
    std::string image;
};

struct AlbumRecord {
    std::uint32_t id = 0;
    std::string title;
    std::string inputName;            // the local input that the album stands for, else ""
    std::vector<std::uint32_t> songs; // in order; ids that are not in the database are kept
};

// An album in a list.
struct AlbumSummary {
    std::uint32_t id = 0;
    std::string title;
    std::string artist; // "Various artists" when its songs have several
    std::string image;  // of its first song with one
    std::uint32_t songCount = 0;
};

// An artist or genre in a list.
struct NameSummary {
    std::string name;
    std::uint32_t songCount = 0;
};

struct PlaylistSummary {
    std::uint32_t id = 0;
    std::uint32_t deviceId = 0;
    std::string title;
    std::uint32_t itemCount = 0;
};

// An item of a playlist; `song` when it is a song of the database.
struct PlaylistEntry {
    MediaItem item;
    std::optional<SongRecord> song;
};

// The most records that one page has; a larger limit is cut down to it.
inline constexpr std::uint32_t kMaxPageSize = 500;

// Which part of a list is wanted.
struct Window {
    std::uint32_t offset = 0;
    std::uint32_t limit = kMaxPageSize;
};

template <class Record>
struct Page {
    std::vector<Record> items;
    std::uint32_t total = 0; // of the whole list, not of this page
};

} // namespace korvel::media
