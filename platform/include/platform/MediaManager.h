#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/Xml.h"

// One entry of a list of media as the database keeps it.
struct MediaItem {
    std::int32_t type = 0;     // the media type code; 1 is a song of the database
    std::string externalId;    // id in an outside catalogue, else empty
    std::uint32_t mediaId = 0; // id in the database, else 0
    std::uint32_t extra = 0;   // carried along unchanged
};

// The media database of the controller. Implemented by the core; driver thread. Categories are "SONG",
// "BROADCAST_AUDIO", "ALBUM" and "PLAYLIST"; "SONGS" is the same as "SONG", "ALBUM_MP3" and "ALBUM_CD" as
// "ALBUM". Each category has ids of its own. In every record a value is the text of a child element of that
// name, and a value that is not known has no child. An operation that returns a number returns 0 on success
// and a negative value on failure unless it says otherwise.
class IMediaManager {
public:
    static constexpr const char* kInterfaceId = "MediaManager";

    // The place of a media: the path of a song, the address of a broadcast, the path of the first song of an
    // album or playlist. Negative, with `location` unchanged, for an unknown id or category.
    virtual std::int32_t GetLocation(std::uint32_t mediaId, const std::string& category,
                                     std::string& location) = 0;
    // The id of the device that stores a song; 0 when unknown.
    virtual std::uint32_t GetStorageDevice(std::uint32_t mediaId) = 0;

    // An element "album" with the values "id", "title" and "LOCAL_INPUT_NAME" and then, in order, a child
    // "song" per song that has the value "id". Null when there is no such album.
    virtual kv::auto_com<KVXML::INode> GetAlbumInfo(std::uint32_t albumId) = 0;
    // The record of a media under a category. Null when absent.
    //   "SONG": an element "song" with the values "name", "album_title", "artist", "genre", "img"
    //   "BROADCAST_AUDIO": an element "station" with the values "name", "genre", "img"
    //   "ALBUM": as GetAlbumInfo
    //   "PLAYLIST": an element "playlist" with the value "title" and a child "songs" with a child "song" per
    //   item that has the value "id": the song's id, or 0 for an item that is no song of the database
    virtual kv::auto_com<KVXML::INode> GetMediaRecord(std::uint32_t mediaId, const std::string& category) = 0;
    // The records of a category that belong to a device (0 stands for all; broadcasts belong to every
    // device), by ascending id: an element "list" with a child per record, named "song", "station", "album"
    // or "playlist", that has the values "id" and "title". The two filters select songs, and albums with such
    // songs, by exact artist and genre when not empty. -1 for `first` and `count` means all. Null for an
    // unknown category.
    virtual kv::auto_com<KVXML::INode> GetMediaList(std::uint32_t deviceId, const std::string& category,
                                                    const std::string& filter1, const std::string& filter2,
                                                    std::int32_t first, std::int32_t count) = 0;

    // Songs stored on any of `deviceIds` (on any device at all when the list is empty). For albums: the
    // albums in the order given, each with its songs in its order. By artist (the song's or the album's,
    // exact bytes) and by genre (exact bytes): ordered by album title, disc, track, title and id.
    virtual std::vector<MediaItem> GetSongsForAlbums(const std::vector<std::uint32_t>& albumIds,
                                                     const std::vector<std::uint32_t>& deviceIds) = 0;
    virtual std::vector<MediaItem> GetSongsByArtist(const std::vector<std::uint32_t>& deviceIds,
                                                    const std::string& artist) = 0;
    virtual std::vector<MediaItem> GetSongsByGenre(const std::vector<std::uint32_t>& deviceIds,
                                                   const std::string& genre) = 0;
    virtual std::vector<MediaItem> GetSongsByArtistAndGenre(const std::vector<std::uint32_t>& deviceIds,
                                                            const std::string& artist,
                                                            const std::string& genre) = 0;

    virtual std::vector<MediaItem> GetPlaylistSongs(std::uint32_t playlistId) = 0;
    // "" when there is no such playlist.
    virtual std::string GetPlaylistName(std::uint32_t playlistId) = 0;
    // The new playlist's id; 0 on failure.
    virtual std::uint32_t CreatePlaylist(std::uint32_t deviceId, const std::string& name,
                                         const std::vector<MediaItem>& songs) = 0;
    virtual std::int32_t UpdatePlaylist(std::uint32_t playlistId, const std::vector<MediaItem>& songs) = 0;
    virtual std::int32_t DeletePlaylist(std::uint32_t playlistId) = 0;
    // Adds an empty playlist from its description: an "album" element with the values "title" and "playlist"
    // ("True"). A title that is not escaped is taken as it stands between its tags; a description without one
    // takes `name`; `filter` is not used. With `replace` non-zero a playlist of the same device and title is
    // emptied instead and keeps its id, so that what refers to it stays valid. `newId` is the record's id.
    // Other records are refused.
    virtual std::int32_t AddMedia(std::uint32_t deviceId, const std::string& description,
                                  const std::string& filter, const std::string& name, std::int32_t replace,
                                  std::uint32_t& newId) = 0;
    // Puts a song in at `position`, before the item that is there; at the end when the list is shorter. The
    // song id 0 (an item that is no song of the database) adds nothing and is no failure.
    virtual std::int32_t AddSongToPlaylist(std::uint32_t playlistId, std::uint32_t songId,
                                           std::uint32_t position) = 0;

protected:
    ~IMediaManager() = default;
};
