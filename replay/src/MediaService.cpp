#include "replay/MediaService.h"

namespace korvel::replay {

namespace {

constexpr std::int32_t kFailed = -1;
constexpr std::int32_t kTypeSong = 1;

OutputLine MediaLine(const char* operation) {
    return OutputLine("media").Value(operation);
}

// Songs as their ids with commas, any other item as TYPE:externalId.
std::string ListItems(const std::vector<MediaItem>& items) {
    std::string list;
    for (const MediaItem& item : items) {
        if (!list.empty())
            list += ',';
        if (item.type == kTypeSong)
            list += std::to_string(item.mediaId);
        else
            list.append(std::to_string(item.type)).append(":").append(item.externalId);
    }
    return list;
}

} // namespace

std::int32_t MediaService::GetLocation(std::uint32_t mediaId, const std::string& category,
                                       std::string& location) {
    if (category == "SONG" && m_world.Fails(kFailSongLocation))
        return kFailed;
    return m_world.media.GetLocation(mediaId, category, location);
}

std::uint32_t MediaService::GetStorageDevice(std::uint32_t mediaId) {
    return m_world.media.GetStorageDevice(mediaId);
}

kv::auto_com<KVXML::INode> MediaService::GetAlbumInfo(std::uint32_t albumId) {
    return m_world.media.GetAlbumInfo(albumId);
}

kv::auto_com<KVXML::INode> MediaService::GetMediaRecord(std::uint32_t mediaId, const std::string& category) {
    return m_world.media.GetMediaRecord(mediaId, category);
}

kv::auto_com<KVXML::INode> MediaService::GetMediaList(std::uint32_t deviceId, const std::string& category,
                                                      const std::string& filter1, const std::string& filter2,
                                                      std::int32_t first, std::int32_t count) {
    return m_world.media.GetMediaList(deviceId, category, filter1, filter2, first, count);
}

std::vector<MediaItem> MediaService::GetSongsForAlbums(const std::vector<std::uint32_t>& albumIds,
                                                       const std::vector<std::uint32_t>& deviceIds) {
    return m_world.media.GetSongsForAlbums(albumIds, deviceIds);
}

std::vector<MediaItem> MediaService::GetSongsByArtist(const std::vector<std::uint32_t>& deviceIds,
                                                      const std::string& artist) {
    return m_world.media.GetSongsByArtist(deviceIds, artist);
}

std::vector<MediaItem> MediaService::GetSongsByGenre(const std::vector<std::uint32_t>& deviceIds,
                                                     const std::string& genre) {
    return m_world.media.GetSongsByGenre(deviceIds, genre);
}

std::vector<MediaItem> MediaService::GetSongsByArtistAndGenre(const std::vector<std::uint32_t>& deviceIds,
                                                              const std::string& artist,
                                                              const std::string& genre) {
    return m_world.media.GetSongsByArtistAndGenre(deviceIds, artist, genre);
}

std::vector<MediaItem> MediaService::GetPlaylistSongs(std::uint32_t playlistId) {
    return m_world.media.GetPlaylistSongs(playlistId);
}

std::string MediaService::GetPlaylistName(std::uint32_t playlistId) {
    return m_world.media.GetPlaylistName(playlistId);
}

std::uint32_t MediaService::CreatePlaylist(std::uint32_t deviceId, const std::string& name,
                                           const std::vector<MediaItem>& songs) {
    m_world.recorder.Output(MediaLine("CreatePlaylist").Number(deviceId).Value(name).Value(ListItems(songs)));
    return m_world.Fails(kFailCreatePlaylist) ? 0 : m_world.media.CreatePlaylist(deviceId, name, songs);
}

std::int32_t MediaService::UpdatePlaylist(std::uint32_t playlistId, const std::vector<MediaItem>& songs) {
    m_world.recorder.Output(MediaLine("UpdatePlaylist").Number(playlistId).Value(ListItems(songs)));
    return m_world.media.UpdatePlaylist(playlistId, songs);
}

std::int32_t MediaService::DeletePlaylist(std::uint32_t playlistId) {
    m_world.recorder.Output(MediaLine("DeletePlaylist").Number(playlistId));
    return m_world.media.DeletePlaylist(playlistId);
}

std::int32_t MediaService::AddMedia(std::uint32_t deviceId, const std::string& description,
                                    const std::string& filter, const std::string& name, std::int32_t replace,
                                    std::uint32_t& newId) {
    m_world.recorder.Output(
        MediaLine("AddMedia").Number(deviceId).Value(description).Value(filter).Value(name).Number(replace));
    if (m_world.Fails(kFailAddMedia))
        return kFailed;
    return m_world.media.AddMedia(deviceId, description, filter, name, replace, newId);
}

std::int32_t MediaService::AddSongToPlaylist(std::uint32_t playlistId, std::uint32_t songId,
                                             std::uint32_t position) {
    m_world.recorder.Output(
        MediaLine("AddSongToPlaylist").Number(playlistId).Number(songId).Number(position));
    if (m_world.Fails(kFailAddSongToPlaylist))
        return kFailed;
    return m_world.media.AddSongToPlaylist(playlistId, songId, position);
}

} // namespace korvel::replay
