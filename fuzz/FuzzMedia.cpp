// The media database of the fuzzed core: a few media are known, and what they hold comes from the input.
#include "FuzzCore.h"
#include "platform/XmlHelper.h"

namespace fuzz {

namespace {
constexpr std::uint32_t kLastKnownMedia = 30;
}

std::int32_t FuzzCore::GetLocation(std::uint32_t mediaId, const std::string&, std::string& location) {
    Interrupt();
    if (mediaId == 0 || mediaId > kLastKnownMedia || Fails())
        return -1;
    location = "/media/" + std::to_string(mediaId) + ".flac";
    return 0;
}
std::uint32_t FuzzCore::GetStorageDevice(std::uint32_t mediaId) {
    Interrupt();
    return mediaId % 3;
}

kv::auto_com<KVXML::INode> FuzzCore::GetAlbumInfo(std::uint32_t albumId) {
    Interrupt();
    if (albumId == 0 || albumId > kLastKnownMedia || Fails())
        return nullptr;
    auto album = KVXML::CreateXmlNode("album");
    XmlHelper::toXml(albumId, *album, "id");
    if (albumId % 4 == 0)
        XmlHelper::toXml("line" + std::to_string(albumId), *album, "LOCAL_INPUT_NAME");
    for (const MediaItem& song : SomeSongs())
        XmlHelper::toXml(song.mediaId, *XmlHelper::AddChild(*album, "song"), "id");
    return album;
}

kv::auto_com<KVXML::INode> FuzzCore::GetMediaRecord(std::uint32_t mediaId, const std::string& category) {
    Interrupt();
    if (mediaId == 0 || mediaId > kLastKnownMedia || Fails())
        return nullptr;
    auto record = KVXML::CreateXmlNode(category == "SONG" ? "song" : "station");
    for (const char* value : {"name", "album_title", "artist", "genre", "img"})
        XmlHelper::toXml(std::string(value) + "<&>", *record, value);
    auto songs = XmlHelper::AddChild(*record, "songs");
    for (const MediaItem& song : SomeSongs())
        XmlHelper::toXml(song.mediaId, *XmlHelper::AddChild(*songs, "song"), "id");
    return record;
}

kv::auto_com<KVXML::INode> FuzzCore::GetMediaList(std::uint32_t, const std::string&, const std::string&,
                                                  const std::string&, std::int32_t, std::int32_t) {
    Interrupt();
    if (Fails())
        return nullptr;
    auto list = KVXML::CreateXmlNode("list");
    auto playlist = XmlHelper::AddChild(*list, "playlist");
    XmlHelper::toXml(std::uint32_t{1}, *playlist, "id");
    XmlHelper::toXml("Blue", *playlist, "title");
    return list;
}

std::vector<MediaItem> FuzzCore::SomeSongs() {
    std::vector<MediaItem> songs;
    const std::size_t count = m_data.ConsumeIntegralInRange<std::size_t>(0, 4);
    for (std::size_t i = 0; i < count; ++i) {
        MediaItem item;
        item.type = Fails() ? m_data.ConsumeIntegralInRange<std::int32_t>(-1, 6) : 1;
        item.mediaId = m_data.ConsumeIntegralInRange<std::uint32_t>(0, 9);
        songs.push_back(item);
    }
    return songs;
}

std::vector<MediaItem> FuzzCore::GetSongsForAlbums(const std::vector<std::uint32_t>&,
                                                   const std::vector<std::uint32_t>&) {
    Interrupt();
    return SomeSongs();
}
std::vector<MediaItem> FuzzCore::GetSongsByArtist(const std::vector<std::uint32_t>&, const std::string&) {
    Interrupt();
    return SomeSongs();
}
std::vector<MediaItem> FuzzCore::GetSongsByGenre(const std::vector<std::uint32_t>&, const std::string&) {
    Interrupt();
    return SomeSongs();
}
std::vector<MediaItem> FuzzCore::GetSongsByArtistAndGenre(const std::vector<std::uint32_t>&,
                                                          const std::string&, const std::string&) {
    Interrupt();
    return SomeSongs();
}
std::vector<MediaItem> FuzzCore::GetPlaylistSongs(std::uint32_t) {
    Interrupt();
    return SomeSongs();
}
std::string FuzzCore::GetPlaylistName(std::uint32_t playlistId) {
    Interrupt();
    return "Playlist " + std::to_string(playlistId);
}
std::uint32_t FuzzCore::CreatePlaylist(std::uint32_t, const std::string&, const std::vector<MediaItem>&) {
    Interrupt();
    return Fails() ? 0 : 2;
}
std::int32_t FuzzCore::UpdatePlaylist(std::uint32_t, const std::vector<MediaItem>&) {
    Interrupt();
    return Fails() ? -1 : 0;
}
std::int32_t FuzzCore::DeletePlaylist(std::uint32_t) {
    Interrupt();
    return Fails() ? -1 : 0;
}
std::int32_t FuzzCore::AddMedia(std::uint32_t, const std::string&, const std::string&, const std::string&,
                                std::int32_t, std::uint32_t& newId) {
    Interrupt();
    newId = 3;
    return Fails() ? -1 : 0;
}
std::int32_t FuzzCore::AddSongToPlaylist(std::uint32_t, std::uint32_t, std::uint32_t) {
    Interrupt();
    return Fails() ? -1 : 0;
}

} // namespace fuzz
