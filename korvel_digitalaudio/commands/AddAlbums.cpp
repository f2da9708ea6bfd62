// Albums, and all songs of an artist or genre.
#include "basics/LogLevels.h"
#include "commands/Adding.h"
#include "driver/korvel_digitalaudio.h"
#include "platform/XmlHelper.h"

namespace {

std::vector<AudioMedia> SongsOfAlbum(const KVXML::INode& album) {
    std::vector<AudioMedia> songs;
    for (std::size_t i = 0; i < album.GetChildCount(); ++i) {
        std::string id;
        XmlHelper::fromXml(album.GetChild(i), "id", id);
        if (!id.empty())
            songs.push_back(AudioMedia::CreateTypeDigital(kv::ToULong(id)));
    }
    return songs;
}

} // namespace

void korvel_digitalaudio::OnAddAlbumMp3(const ICmdMessage& message, ICmdReturn* ret) {
    IMediaManager* mediaManager = GetMediaManager();
    const auto album = mediaManager ? mediaManager->GetAlbumInfo(message.GetNumber("MEDIA_ID")) : nullptr;
    if (!album)
        return;
    bool playNext = flags::Read(message, "PLAY_NEXT", false);
    const auto queue = OpenQueueForMedia(message.GetNumber("ROOM_ID"), [&](AudioQueue& opened) {
        // Emptied before the room joins, unlike for the other commands.
        if (commands::PlaysOneStream(opened)) {
            opened.ClearSongs();
            playNext = true;
        }
        InterruptClearTimer(&opened);
    });
    if (!queue)
        return;
    AddAlbum(queue, *album, playNext);
    ReturnQueueId(ret, queue->GetQueueId());
}

void korvel_digitalaudio::AddAlbum(const commands::OpenedQueue& queue, const KVXML::INode& album,
                                   bool playNext) {
    const std::vector<AudioMedia> songs = SongsOfAlbum(album);
    queue->AddSongList(songs, playNext);
    if (playNext) {
        commands::GoToItem(queue, songs.empty() ? AudioMedia::CreateTypeDigital(0) : songs.front());
        UpdateQueueStatusVariable();
    }
    // An album that is a line input plays as that input.
    std::string input;
    XmlHelper::fromXml(album, "LOCAL_INPUT_NAME", input);
    if (!input.empty())
        queue->SetInputFile(input);
}

void korvel_digitalaudio::OnAddAlbumList(const ICmdMessage& message, ICmdReturn*) {
    const auto document = KVXML::CreateXmlDocument(message.GetParam("MEDIA"));
    IMediaManager* mediaManager = GetMediaManager();
    if (!document || !mediaManager)
        return;
    const std::uint32_t roomId = message.GetNumber("ROOM_ID");
    std::vector<std::uint32_t> albumIds;
    XmlHelper::fromXml(*document->GetRoot(), albumIds);
    const auto songs = FromItems(mediaManager->GetSongsForAlbums(albumIds, GetMp3Devices(roomId)));
    const auto flags = commands::AddFlags::Read(message);
    QueueSongVector(roomId, songs, flags.playNow, flags.playNext);
}

void korvel_digitalaudio::OnQueueAll(const ICmdMessage& message, ICmdReturn* ret) {
    const std::uint32_t roomId = message.GetNumber("ROOM_ID");
    const std::vector<AudioMedia> songs = SongsOfArtistOrGenre(message, roomId);
    const auto flags = commands::AddFlags::ReadForQueueAll(message);
    if (const AudioQueue* queue = QueueSongVector(roomId, songs, flags.playNow, flags.playNext))
        ReturnQueueId(ret, queue->GetQueueId());
}

// All songs of the artist, the genre, or both; that a parameter is there decides, not what is in it.
std::vector<AudioMedia> korvel_digitalaudio::SongsOfArtistOrGenre(const ICmdMessage& message,
                                                                  std::uint32_t roomId) {
    const std::string artist = message.GetParam("ARTIST");
    const std::string genre = message.GetParam("GENRE");
    const bool hasArtist = message.HasParam("ARTIST");
    const bool hasGenre = message.HasParam("GENRE");
    if (hasArtist && artist.empty())
        LogDebugMessage("OnQueueAll", ": Very strange - the 'artist' parameter is present, but it is empty.");
    if (hasGenre && genre.empty())
        LogDebugMessage("OnQueueAll", ": Very strange - the 'genre' parameter is present, but it is empty.");
    const std::vector<std::uint32_t> devices = GetMp3Devices(roomId);
    if (!hasArtist && !hasGenre) {
        LogMessage(log_levels::kOutside, "Unable to add. Must have a valid artist and/or genre.");
        return {};
    }
    IMediaManager* mediaManager = GetMediaManager();
    if (!mediaManager)
        return {};
    auto songs =
        FromItems(hasArtist && hasGenre ? mediaManager->GetSongsByArtistAndGenre(devices, artist, genre)
                  : hasArtist           ? mediaManager->GetSongsByArtist(devices, artist)
                                        : mediaManager->GetSongsByGenre(devices, genre));
    if (songs.empty())
        LogDebugMessage("No songs match that description. Artist: '", artist, "'  Genre: '", genre, "'");
    return songs;
}

AudioQueue* korvel_digitalaudio::QueueSongVector(std::uint32_t roomId, const std::vector<AudioMedia>& songs,
                                                 bool playNow, bool playNext) {
    if (songs.empty())
        return nullptr;
    const auto queue = OpenQueueForMedia(roomId, [](AudioQueue& opened) {
        opened.SetIsRhapsodyChannel(false);
        opened.SetIsInternetRadio(false);
    });
    if (!queue)
        return nullptr;
    queue->AddSongList(songs, playNext);

    const bool startsNow = playNow && queue->GetQueueState() != PLAY;
    if (startsNow) {
        if (!queue->IsShuffleSet())
            queue->SetNextSong(AudioMedia::CreateTypeDigital(songs.front().mediaId));
        // The other commands start only a queue that was there before; this one a new one.
        if (queue.IsNew())
            queue->PlayNextSong(true, false);
    }
    if (playNext)
        commands::GoToFirst(queue, songs);
    if (startsNow || playNext)
        UpdateQueueStatusVariable();
    return queue.Get();
}
