#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "library/MediaRecords.h"
#include "platform/MediaManager.h"

namespace korvel::media {

class ChangeUnit;
class Connection;
struct ScannedSong;
struct FileStamp;

// The media of a house in one SQLite file: songs, albums, stations and playlists.
//
// Each kind counts its ids for itself; the ids that the database gives ascend and are never given twice, also
// when the record was deleted. A caller may choose ids (1 to kMaxId) in the Put operations; later ids go on
// above them.
//
// One object is one connection and belongs to one thread at a time. Several objects may have the same file
// open: readers see the last committed state and never wait; a writer waits kBusyTimeoutMs at most for
// another one.
//
// Errors: the operations of IMediaManager log the failure and return their negative, zero, empty or null
// result. All others throw DatabaseError when SQLite fails and std::invalid_argument for an id above kMaxId.
class MediaDatabase final : public IMediaManager {
public:
    static constexpr int kBusyTimeoutMs = 5000;
    // The most items that a playlist takes, and that a query of IMediaManager returns.
    static constexpr std::uint32_t kMaxItems = 100000;

    // Opens the file at `path`, creating it when absent, or a database in memory for ":memory:". Throws
    // DatabaseError with a text that names the file when it cannot be opened, is not a media database, or was
    // written by a newer version of this program. A full disk does not prevent it, but see IsAlone().
    explicit MediaDatabase(const std::string& path);
    ~MediaDatabase();
    MediaDatabase(const MediaDatabase&) = delete;
    MediaDatabase& operator=(const MediaDatabase&) = delete;

    // Whether there was no room on the disk for what connections share: as long as this one lives, no other can
    // open the file.
    bool IsAlone() const { return m_isAlone; }

    // Hears how each change ended that IMediaManager was asked for: with null when it was made, else with why
    // it was not. Is called within the operation and must neither throw nor use the database.
    using ChangeListener = std::function<void(const std::exception* failure)>;
    void SetChangeListener(ChangeListener listener);
    // What IMediaManager is asked for within `body` is one change: made whole or, when part of it fails, not at all.
    void AsOneChange(const std::function<void()>& body);

    // Runs `body` in one transaction: all of its changes or, when it throws, none. May be nested. Many Put
    // calls are quick only this way.
    void InTransaction(const std::function<void()>& body);

    // Insert the record, or replace the one with its id; id 0 stands for a new one. Return the record's id.
    // No other record is made: a song's album text is only a text until PutAlbum or a scan makes an album of
    // it.
    std::uint32_t PutSong(const SongRecord& song);
    std::uint32_t PutStation(const StationRecord& station);
    std::uint32_t PutAlbum(const AlbumRecord& album);
    std::uint32_t PutPlaylist(std::uint32_t id, std::uint32_t deviceId, const std::string& title,
                              const std::vector<MediaItem>& songs);

    // Nothing happens when there is no such record. A song is taken out of its albums and playlists as well.
    void RemoveSong(std::uint32_t id);
    void RemoveStation(std::uint32_t id);

    // These are the stations from now on. One of a name that is known keeps its id; the ids given are not
    // used. Nothing is written when they were so before.
    void SetStations(const std::vector<StationRecord>& stations);
    // These are the local inputs from now on: each is an album without songs of the input's name, and keeps
    // its id as long as it has that name. Returns the albums' ids. Nothing is written when they were so
    // before.
    std::vector<std::uint32_t> SetInputs(const std::vector<std::string>& names);

    std::optional<SongRecord> FindSong(std::uint32_t id);
    std::optional<StationRecord> FindStation(std::uint32_t id);
    std::optional<AlbumRecord> FindAlbum(std::uint32_t id);
    std::optional<PlaylistSummary> FindPlaylist(std::uint32_t id);
    // The songs of exactly that title or, when there is none, of that title but for case and accents; at most
    // kMaxPageSize.
    std::vector<SongRecord> FindSongsByTitle(const std::string& title);
    // The one song that a person means by `title`: of all songs only one has that title (as above) or, when
    // none has, only one title contains it. None when there are several.
    std::optional<SongRecord> FindUniqueSong(const std::string& title);

    // Lists in alphabetical order, without regard to case and accents.
    Page<AlbumSummary> ListAlbums(Window window);
    Page<NameSummary> ListArtists(Window window); // of songs and of albums
    Page<NameSummary> ListGenres(Window window);
    Page<SongRecord> ListSongs(Window window);
    Page<StationRecord> ListStations(Window window);
    Page<PlaylistSummary> ListPlaylists(Window window);
    Page<AlbumSummary> ListAlbumsOfArtist(const std::string& artist, Window window);
    // Songs in the order of the album or playlist, or by album and track. Ids that are not in the database
    // are left out of an album. An artist is matched by exact bytes with the song's artist and album artist,
    // a genre with its genre.
    Page<SongRecord> ListSongsOfAlbum(std::uint32_t albumId, Window window);
    Page<SongRecord> ListSongsOfArtist(const std::string& artist, Window window);
    Page<SongRecord> ListSongsOfGenre(const std::string& genre, Window window);
    Page<PlaylistEntry> ListPlaylistEntries(std::uint32_t playlistId, Window window);

    // Everything that contains each word of `text`, in any order, without regard to case and accents: songs
    // by title, artist and album (those with the text in their title first), albums by title and artist. A
    // text without words finds nothing. Only the first kMaxSearchLength bytes count.
    static constexpr std::size_t kMaxSearchLength = 200;
    Page<SongRecord> SearchSongs(const std::string& text, Window window);
    Page<AlbumSummary> SearchAlbums(const std::string& text, Window window);
    Page<NameSummary> SearchArtists(const std::string& text, Window window);

    // Removes the songs whose files are gone, and the albums of scans that no song is left in; returns how
    // many songs that were. Those that are only away stay.
    std::uint32_t ForgetGoneSongs();
    std::uint32_t CountSongs(Presence presence);

    // For the scanner. The stamps of all songs that scans have found and of all files that they found broken.
    std::vector<FileStamp> ListScannedFiles();
    std::vector<FileStamp> ListBrokenFiles();
    // Stores the song, in the album of its title and group, and returns its id.
    std::uint32_t PutScannedSong(const ScannedSong& scanned);
    void MoveSongToDevice(std::uint32_t id, std::uint32_t deviceId);
    void SetSongPresence(std::uint32_t id, Presence presence);
    // Whether the song has the picture "cover/<id>".
    void SetSongHasImage(std::uint32_t id, bool hasImage);
    void PutBrokenFile(const FileStamp& file);
    void ForgetBrokenFile(const std::string& location);
    // Drops the albums of scans that no song is left in and names the artists of all others.
    void RefreshAlbums();

    // IMediaManager.
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
    void Open(const std::string& path, bool alone);

    std::unique_ptr<Connection> m_connection;
    bool m_isAlone = false;
    std::unique_ptr<ChangeUnit> m_changes;
};

} // namespace korvel::media
