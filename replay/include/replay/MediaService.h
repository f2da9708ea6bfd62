#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/MediaManager.h"
#include "replay/World.h"

namespace korvel::replay {

// The media database, with a line for each operation that changes it, also when that is told to fail: it was
// tried.
class MediaService final : public IMediaManager {
public:
    explicit MediaService(World& world) : m_world(world) {}

    std::int32_t GetLocation(std::uint32_t mediaId, const std::string& category,
                             std::string& location) override;
    std::uint32_t GetStorageDevice(std::uint32_t mediaId) override;
    kv::auto_com<KVXML::INode> GetAlbumInfo(std::uint32_t albumId) override;
    kv::auto_com<KVXML::INode> GetMediaRecord(std::uint32_t mediaId, const std::string& category) override;
    kv::auto_com<KVXML::INode> GetMediaList(std::uint32_t deviceId, const std::string& category,
                                            const std::string& filter1, const std::string& filter2,
                                            std::int32_t first, std::int32_t count) override;
    std::vector<MediaItem> GetSongsForAlbums(const std::vector<std::uint32_t>& albumIds,
                                             const std::vector<std::uint32_t>& deviceIds) override;
    std::vector<MediaItem> GetSongsByArtist(const std::vector<std::uint32_t>& deviceIds,
                                            const std::string& artist) override;
    std::vector<MediaItem> GetSongsByGenre(const std::vector<std::uint32_t>& deviceIds,
                                           const std::string& genre) override;
    std::vector<MediaItem> GetSongsByArtistAndGenre(const std::vector<std::uint32_t>& deviceIds,
                                                    const std::string& artist,
                                                    const std::string& genre) override;
    std::vector<MediaItem> GetPlaylistSongs(std::uint32_t playlistId) override;
    std::string GetPlaylistName(std::uint32_t playlistId) override;
    std::uint32_t CreatePlaylist(std::uint32_t deviceId, const std::string& name,
                                 const std::vector<MediaItem>& songs) override;
    std::int32_t UpdatePlaylist(std::uint32_t playlistId, const std::vector<MediaItem>& songs) override;
    std::int32_t DeletePlaylist(std::uint32_t playlistId) override;
    std::int32_t AddMedia(std::uint32_t deviceId, const std::string& description, const std::string& filter,
                          const std::string& name, std::int32_t replace, std::uint32_t& newId) override;
    std::int32_t AddSongToPlaylist(std::uint32_t playlistId, std::uint32_t songId,
                                   std::uint32_t position) override;

private:
    World& m_world;
};

} // namespace korvel::replay
