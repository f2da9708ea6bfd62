// Songs for tests.
#pragma once

#include <string>

#include "library/MediaRecords.h"

inline korvel::media::SongRecord MakeSong(std::uint32_t id, const std::string& title = "",
                                          const std::string& artist = "", const std::string& album = "",
                                          const std::string& genre = "",
                                          const std::string& albumArtist = "") {
    korvel::media::SongRecord song;
    song.id = id;
    song.title = title;
    song.artist = artist;
    song.album = album;
    song.genre = genre;
    song.albumArtist = albumArtist;
    return song;
}
