// Albums, and all songs of an artist or genre.
#include "commands/Parameters.h"
#include "driver/korvel_digitalaudio.h"
#include "platform/XmlHelper.h"

namespace {

constexpr int kLogConfiguration = 7;

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
    const std::uint32_t roomId = message.GetNumber("ROOM_ID");
    IMediaManager* mediaManager = GetMediaManager();
    const auto album = mediaManager ? mediaManager->GetAlbumInfo(message.GetNumber("MEDIA_ID")) : nullptr;
    if (!album)
        return;
    bool playNext = commands::ReadFlag(message, "PLAY_NEXT", false);
    AudioQueue* queue = nullptr;
    bool created = false;
    if (AudioServer_CreateQueue(roomId, &queue, &created) != 0)
        return;
    if (queue->IsRhapsodyChannel() || queue->IsInternetRadio()) {
        queue->ClearSongs();
        playNext = true;
    }
    InterruptClearTimer(queue);
    AttachRoom(*queue, roomId);

    const std::vector<AudioMedia> songs = SongsOfAlbum(*album);
    queue->AddSongList(songs, playNext);
    if (playNext) {
        if (!queue->IsShuffleSet())
            queue->SetNextSong(songs.empty() ? AudioMedia::CreateTypeDigital(0) : songs.front());
        if (!created)
            queue->PlayNextSong(true, false);
        UpdateQueueStatusVariable();
    }
    // An album that is a line input plays as that input.
    std::string input;
    XmlHelper::fromXml(*album, "LOCAL_INPUT_NAME", input);
    if (!input.empty())
        queue->SetInputFile(input);
    ReturnQueueId(ret, queue->GetQueueId());
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
    QueueSongVector(roomId, songs, commands::ReadFlag(message, "PLAY_NOW", true),
                    commands::ReadFlag(message, "PLAY_NEXT", false));
}

void korvel_digitalaudio::OnQueueAll(const ICmdMessage& message, ICmdReturn* ret) {
    const std::string artist = message.GetParam("ARTIST");
    const std::string genre = message.GetParam("GENRE");
    const bool hasArtist = message.HasParam("ARTIST");
    const bool hasGenre = message.HasParam("GENRE");
    if (hasArtist && artist.empty())
        LogDebugMessage("OnQueueAll", ": Very strange - the 'artist' parameter is present, but it is empty.");
    if (hasGenre && genre.empty())
        LogDebugMessage("OnQueueAll", ": Very strange - the 'genre' parameter is present, but it is empty.");

    const std::uint32_t roomId = message.GetNumber("ROOM_ID");
    const std::vector<std::uint32_t> devices = GetMp3Devices(roomId);
    if (!hasArtist && !hasGenre) {
        LogMessage(kLogConfiguration, "Unable to add. Must have a valid artist and/or genre.");
        return;
    }
    IMediaManager* mediaManager = GetMediaManager();
    if (!mediaManager)
        return;
    const auto songs =
        FromItems(hasArtist && hasGenre ? mediaManager->GetSongsByArtistAndGenre(devices, artist, genre)
                  : hasArtist           ? mediaManager->GetSongsByArtist(devices, artist)
                                        : mediaManager->GetSongsByGenre(devices, genre));
    if (songs.empty()) {
        LogDebugMessage("No songs match that description. Artist: '", artist, "'  Genre: '", genre, "'");
        return;
    }
    // Unlike the flags of the other commands, an empty one counts as absent.
    const std::string now = message.GetParam("PLAY_NOW");
    const bool playNow = now.empty() || kv::ToULong(now) != 0;
    const bool playNext = kv::ToULong(message.GetParam("PLAY_NEXT")) != 0;
    if (const AudioQueue* queue = QueueSongVector(roomId, songs, playNow, playNext))
        ReturnQueueId(ret, queue->GetQueueId());
}

AudioQueue* korvel_digitalaudio::QueueSongVector(std::uint32_t roomId, const std::vector<AudioMedia>& songs,
                                                 bool playNow, bool playNext) {
    if (songs.empty())
        return nullptr;
    AudioQueue* queue = nullptr;
    bool created = false;
    if (AudioServer_CreateQueue(roomId, &queue, &created) != 0)
        return nullptr;
    queue->SetIsRhapsodyChannel(false);
    queue->SetIsInternetRadio(false);
    AttachRoom(*queue, roomId);
    queue->AddSongList(songs, playNext);

    const bool startsNow = playNow && queue->GetQueueState() != PLAY;
    if (startsNow) {
        if (!queue->IsShuffleSet())
            queue->SetNextSong(AudioMedia::CreateTypeDigital(songs.front().mediaId));
        if (created) // the other commands start only a queue that was there before; this one a new one
            queue->PlayNextSong(true, false);
    }
    if (playNext) {
        if (!queue->IsShuffleSet())
            queue->SetNextSong(songs.front());
        if (queue->PeekNextSong().type != MEDIA_NONE && !created)
            queue->PlayNextSong(true, false);
    }
    if (startsNow || playNext)
        UpdateQueueStatusVariable();
    return queue;
}
