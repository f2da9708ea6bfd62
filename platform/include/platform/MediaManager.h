#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/Xml.h"

// One entry of a list of media as the database keeps it.
struct MediaItem {
    std::int32_t type = 0;      // the media type code; 1 is a song of the database
    std::string externalId;     // id in an outside catalogue, else empty
    std::uint32_t mediaId = 0;  // id in the database, else 0
    std::uint32_t extra = 0;    // carried along unchanged
};

// The media database of the controller. Implemented by the core; driver thread. Category texts are "SONG",
// "BROADCAST_AUDIO", "ALBUM", "PLAYLIST" and other media kinds. An operation that returns a number returns 0 on
// success and a negative value on failure unless it says otherwise.
class IMediaManager {
public:
    static constexpr const char* kInterfaceId = "MediaManager";

    // The place of a media: a path or an address.
    virtual std::int32_t GetLocation(std::uint32_t mediaId, const std::string& category, std::string& location) = 0;
    // The id of the device that stores a song; 0 when unknown.
    virtual std::uint32_t GetStorageDevice(std::uint32_t mediaId) = 0;

    // An element "album" with the text children "id", "title", "LOCAL_INPUT_NAME" as attributes and a child "song"
    // per song with the attribute "id", in order. Null when there is no such album.
    virtual kv::auto_com<KVXML::INode> GetAlbumInfo(std::uint32_t albumId) = 0;
    // The record of a media under a category: an element with text children ("name", "album_title", "artist", "img",
    // "genre" of a "SONG"; "name", "genre", "img" of a "BROADCAST_AUDIO"; "title" and "songs" with a child per song
    // that has the text child "id" of a "PLAYLIST"). A value that is not known has no child. Null when absent.
    virtual kv::auto_com<KVXML::INode> GetMediaRecord(std::uint32_t mediaId, const std::string& category) = 0;
    // The records of a category that belong to a device: an element with a child per record that has the text
    // children "id" and "title". The two filters select by artist and genre when not empty; -1 for `first` and
    // `count` means all.
    virtual kv::auto_com<KVXML::INode> GetMediaList(std::uint32_t deviceId, const std::string& category,
                                                    const std::string& filter1, const std::string& filter2,
                                                    std::int32_t first, std::int32_t count) = 0;

    // Songs stored on any of `deviceIds` (on any device at all when the list is empty), in album and track order.
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
    // Adds a record from its description (an "album" element with "title" and "playlist"). `replace` non-zero lets it
    // take the place of a record of the same name. `newId` is the record's id.
    virtual std::int32_t AddMedia(std::uint32_t deviceId, const std::string& description, const std::string& filter,
                                  const std::string& name, std::int32_t replace, std::uint32_t& newId) = 0;
    virtual std::int32_t AddSongToPlaylist(std::uint32_t playlistId, std::uint32_t songId,
                                           std::uint32_t position) = 0;

protected:
    ~IMediaManager() = default;
};
