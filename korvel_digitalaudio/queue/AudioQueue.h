#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "basics/QueueState.h"
#include "platform/DriverHelper.h"
#include "platform/InstanceManager.h"
#include "platform/Services.h"
#include "platform/Xml.h"
#include "platform/rhapsody/RhapsodyClient.h"
#include "queue/AudioMedia.h"
#include "queue/MediaList.h"
#include "queue/Memo.h"
#include "server/link/ASPackets.h"
#include "server/link/RoomClient.h"
#include "server/link/ServerUtility.h"

class RoomHistories;

// One play queue: a list of media that one stream of one audio server plays into the rooms of the queue.
//
// Three kinds of address occur:
//   - a position in the song list (the order in which items were added; what documents publish),
//   - a position in the active list (the shuffled list while shuffle is on, else the song list): the current
//     and the next index, and the argument of SetNextSong(index),
//   - the identity of an item: AudioMedia's equality, which finds the first equal item.
// An index of NO_SONG_INDEX means none.
//
//   STOP       --play-->          PLAY   with the next song
//   PLAY, END  --pause-->         PAUSE  or STOP, when the stream cannot pause
//   PAUSE      --play-->          PLAY   where it was
//   any        --no next song-->  END    whatever asked for it: skip, end of the media, removal
//   END        --play-->          PLAY   with the first song
//   any        --a song starts--> PLAY   announced again when it was PLAY already
//   any        --stop-->          STOP   and back to the first song
//
// Every call to a service may come back into the queue before it returns, and may close it: rooms are walked
// over copied ids, and arguments that may refer into a list are copied before the list changes. A closed
// queue sends nothing any more.
//
// Members are grouped by the file that defines them.
class AudioQueue {
public:
    static constexpr std::uint32_t NO_SONG_INDEX = 4095;
    using RoomClientMap = std::map<std::uint32_t, std::unique_ptr<const RoomClient>>;

    // AudioQueue.cpp

    // Takes a reference of `server` (may be null). The services and clients must outlive the queue.
    AudioQueue(IDriverHelperV2& driverHelper, IInstanceManager& instances, ServerUtility* server,
               std::uint32_t queueId, std::uint32_t owner, KVRhapsodyClient::RhapsodyClient* rhapsody,
               IRhapsodyCallback* rhapsodyCallback);
    AudioQueue(const AudioQueue&) = delete;
    AudioQueue& operator=(const AudioQueue&) = delete;
    // Closes the queue.
    ~AudioQueue();

    // Stops the queue, announces its deletion and lets its rooms go. Happens once.
    void Close();
    // Closes the queue without a word: nobody hears that it ended. Its rooms stay.
    void Abandon() { m_closed = true; }
    bool IsClosed() const { return m_closed; }

    std::uint32_t GetQueueId() const { return m_queueId; }
    // The room that owns the queue.
    std::uint32_t GetOwner() const { return m_owner; }
    std::uint32_t GetSourceDevice() const { return m_sourceDevice; }
    void SetSourceDevice(std::uint32_t deviceId) { m_sourceDevice = deviceId; }
    void toxmlHistory(RoomHistories* histories, KVXML::INode& parent) const;

    // SongList.cpp

    // With shuffle on, `toFront` makes the item the next one; with shuffle off it has no effect.
    void AddSong(const AudioMedia& item, bool updateInfo, bool toFront);
    void AddSongList(const std::vector<AudioMedia>& items, bool toFront);
    // Adds songs of the media database.
    void AddSongList(const std::vector<std::uint32_t>& mediaIds);
    void UpdatePositionForSongAdded(const AudioMedia& item);
    // Removes every item equal to `item`.
    void RemoveSong(const AudioMedia& item);
    // True when playback has to start afresh from the new list.
    bool ReplaceSongList(const std::vector<AudioMedia>& items);
    void ClearSongs();
    void SetNextSong(std::uint32_t index);
    void SetNextSong(const AudioMedia& item);
    // Makes the audio server drop what it plays; the list stays.
    void RemoveCurrentSong();
    const AudioMedia& GetCurrentMedia() const;
    bool IsSongListEmpty() const { return m_songs->empty(); }
    const std::vector<AudioMedia>& GetSongList() const { return *m_songs; }
    // A local input that the queue plays instead of songs; "" for none.
    std::string GetInputFile() const { return m_inputFile; }
    void SetInputFile(const std::string& path) { m_inputFile = path; }

    // Navigation.cpp

    std::uint32_t GetNextSongIndex();
    // These throw std::out_of_range when a pinned index points past the list.
    AudioMedia PeekNextSong();
    AudioMedia GetNextSong();
    AudioMedia GetFirstSong();
    std::uint32_t GetPreviousSongIndex();
    AudioMedia GetPreviousSong();
    void SetRepeat(bool on) { m_repeat = on; }
    bool IsRepeatSet() const { return m_repeat; }
    // When set, "previous" never restarts the current song.
    void SetAlwaysSkipPrev(bool on) { m_alwaysSkipPrevious = on; }

    // Shuffle.cpp

    void _ShuffleQueue(); // NOLINT(bugprone-reserved-identifier): the name callers know
    void ShuffleQueue(const AudioMedia& first);
    void ShuffleQueue(std::uint32_t firstMediaId);
    void ShuffleQueue();
    void SetShuffle(bool on);
    bool IsShuffleSet() const { return m_shuffle; }

    // Playback.cpp

    static const char* QueueStateToStr(QueueState state);
    QueueState GetQueueState() const { return m_state; }
    void SetQueueState(QueueState state);
    void ChangeQueueState(QueueState state);
    void PlayFirstSong();
    // Whether a song was started. At the end of the list `endIfNone` ends the queue.
    bool PlayNextSong(bool forward, bool endIfNone);
    void AddSongToStream(const AudioMedia& media);
    void AddFileToStream();
    void EndOfQueue();
    // Counts a failed or ended media; true when there were too many of them within a minute.
    bool ShouldStopPlayback();
    void ResetErrorCount() { m_errorCount = 0; }
    bool IsStoppedByErrors() const { return m_stoppedByErrors; }
    void ClearStoppedByErrors() { m_stoppedByErrors = false; }
    // Asks the registered device to deal with a transport command itself; true when it did.
    bool HandleRoomCommand(const std::string& command, const std::string& roomId) const;

    // Stream.cpp

    void CreateStream();
    void RemoveStream();
    std::uint32_t GetStreamId() const { return m_streamId; }
    void SetStreamId(std::uint32_t streamId);
    // True while the request for the stream is unanswered.
    bool GetWaitingForAddResponse() const { return m_waitingForAddResponse; }
    void SetWaitingForAddResponse(bool waiting) { m_waitingForAddResponse = waiting; }
    // What the stream can do: a list of words separated by commas.
    void UpdateCaps(const std::string& caps);
    // A queue plays songs, or it is a radio or a channel of the streaming service, which play a single
    // stream. Turning one of these modes on, or off when it is on, empties the queue.
    void SetIsInternetRadio(bool on) { ChangeMode(Mode::kRadio, on); }
    bool IsInternetRadio() const { return m_mode == Mode::kRadio; }
    void SetIsRhapsodyChannel(bool on) { ChangeMode(Mode::kChannel, on); }
    bool IsRhapsodyChannel() const { return m_mode == Mode::kChannel; }

    // Rooms.cpp

    void AddRoomClient(std::uint32_t roomId);
    void AddRoomClient(std::uint32_t roomId, const std::string& ip, std::uint32_t port,
                       std::uint32_t channel);
    void RemoveRoomClient(std::uint32_t roomId);
    void AddRoomClientsToStream();
    bool IsClientInUse(const std::string& ip, std::uint32_t channel, std::uint32_t port) const;
    bool IsSameClientInQueue(std::uint32_t roomId) const;
    bool ContainsRoom(std::uint32_t roomId) const { return m_rooms->count(roomId) != 0; }
    // Owned by the queue; null when the room is not in it.
    const RoomClient* GetRoomClient(std::uint32_t roomId) const;
    const RoomClientMap& GetRoomClientMap() const { return *m_rooms; }
    // The rooms in ascending order.
    std::vector<std::uint32_t> GetRoomIds() const;
    std::uint32_t GetRoomCount() const { return static_cast<std::uint32_t>(m_rooms->size()); }
    std::vector<std::uint32_t> GetDevicesInAnalogSource() const { return m_devicesInAnalogSource; }
    void SetDevicesInAnalogSource(std::vector<std::uint32_t> deviceIds);

    // Documents.cpp

    kv::auto_com<KVXML::INode> GetInfoVariable() const;
    kv::auto_com<KVXML::INode> GetInfoVariableVersion132() const;
    // Publishes both info documents.
    void UpdateInfoVariable();
    // Status elements are finished and stay the same ones while nothing that they show changes. The first one
    // peeks at the next song, which may shuffle the list.
    kv::auto_com<KVXML::INode> GetStatusData();
    kv::auto_com<KVXML::INode> GetStatusDataVersion132();
    // The status with the endpoint of each room.
    kv::auto_com<KVXML::INode> GetRoomMapData();
    kv::auto_com<KVXML::INode> GetSessionData() const;

    // Notifications.cpp

    std::uint32_t GetNotificationDevice() const { return m_notificationDevice; }
    // The device that the queue's events and room commands are sent to; 0 for none.
    void SetNotificationDevice(std::uint32_t deviceId) { m_notificationDevice = deviceId; }
    // A text that the registered party wants to find in every event.
    void SetQueueInfo(const std::string& info) { m_queueInfo = info; }
    void NotifyMediaChanged(const std::string& mediaInfo) const;
    void UpdateStreamStatus(const std::string& status);
    void NotifyStreamStatusChanged() const;
    void NotifyQueueDeletion() const;
    // Ends the registration.
    void ClearNotifications();
    // Null texts are kept when `merge` is set and emptied otherwise. Always true.
    bool UpdateSecondaryInfo(bool merge, const std::string* artist, const std::string* album,
                             const std::string* title, const std::string* genre, const std::string* imageUrl);
    void ClearSecondaryInfo() { UpdateSecondaryInfo(false, nullptr, nullptr, nullptr, nullptr, nullptr); }
    // False when there is no song whose metadata could be set.
    bool UpdateCurrentSongMetaData(const std::string& text);

    // MediaInfo.cpp

    // Describes `media` to the rooms of the queue and to the registered device. `track` may be null.
    void UpdateRoomMediaVariable(const AudioMedia& media, const DataTrackFull* track, bool force);

private:
    // A time of last navigation that stands for none.
    static constexpr std::uint32_t kNeverNavigated = 0xFFFFFFFFu;

    enum class Mode { kSongs, kRadio, kChannel };

    struct SecondaryInfo {
        std::string artist, album, title, genre, imageUrl;
    };

    // What the status elements show beside the queue's id: values, and the revisions of larger ones.
    struct Status {
        std::string name;
        QueueState state = STOP;
        bool internetRadio = false;
        std::uint32_t index = NO_SONG_INDEX;
        std::uint32_t current = 0, songs = 0, shuffled = 0, rooms = 0; // revisions
        const AudioMedia* next = nullptr;                              // in one of the lists

        bool operator==(const Status&) const = default;
    };
    struct Status132 {
        std::string name;
        QueueState state = STOP;
        std::uint32_t item = 0;
        std::uint32_t index = NO_SONG_INDEX;
        std::uint32_t rooms = 0; // revision

        bool operator==(const Status132&) const = default;
    };
    // What the place of the current media in the song list follows from: revisions.
    struct Place {
        bool current = false; // whether the current media is looked for, or the empty item
        std::uint32_t media = 0, songs = 0;

        bool operator==(const Place&) const = default;
    };

    bool IsSingleStream() const { return m_mode != Mode::kSongs; }
    // A channel queue keeps its one item until it is cleared.
    bool IsListLocked() const { return !m_songs->empty() && IsRhapsodyChannel(); }
    const std::vector<AudioMedia>& ActiveList() const { return m_shuffle ? *m_shuffled : *m_songs; }
    // Throws std::out_of_range past the end.
    static const AudioMedia& ItemAt(const std::vector<AudioMedia>& list, std::uint32_t index);
    // The item that PeekNextSong() copies, in its list; null for none.
    const AudioMedia* FindNextSong();
    AudioMedia MoveTo(std::uint32_t index);
    void MoveToFront(std::size_t position);
    void StopAndRewind();
    bool PlayChannel();
    void ChangeMode(Mode mode, bool on);
    void EndMode(Mode mode);
    void ForgetMode(Mode mode);
    void AddPacket(std::unique_ptr<ASPacketBase> packet, bool skipWaiting = false);
    std::string OwnerName() const;
    std::string PrintInfo(std::string_view songs) const;
    template <class Content>
    std::string PrintStatus(const std::string& name, QueueState state, Content&& content) const;
    void PrintRooms(KVXML::Printer& printer) const;
    void AssertListed(int line) const;
    std::string InfoText() const;
    std::string InfoTextVersion132() const;
    std::uint32_t PublishedIndex(bool ofCurrent);
    kv::auto_com<ICmdMessage> CreateEvent(const char* name) const;
    void SendEvent(const ICmdMessage& message) const;
    std::string PrintMediaInfo(const AudioMedia& media, const DataTrackFull* track) const;
    void DescribeDigital(KVXML::Printer& info, const AudioMedia& media) const;
    void DescribeRhapsody(KVXML::Printer& info, const AudioMedia& media, const DataTrackFull* track) const;
    void DescribeInternetRadio(KVXML::Printer& info, const AudioMedia& media) const;

    IDriverHelperV2& m_driverHelper;
    IInstanceManager& m_instances;
    kv::auto_com<ServerUtility> m_server;
    const std::uint32_t m_queueId;
    std::uint32_t m_owner;
    KVRhapsodyClient::RhapsodyClient* m_rhapsody;
    IRhapsodyCallback* m_rhapsodyCallback;
    IDeviceMessaging* m_messaging;
    IRoomService* m_roomService;
    IVariableService* m_variables;
    bool m_closed = false;

    MediaList m_songs;
    Revised<std::vector<AudioMedia>> m_shuffled;
    std::uint32_t m_currentIndex = NO_SONG_INDEX;
    std::uint32_t m_nextIndex = NO_SONG_INDEX; // a one-shot pin: what the next move takes
    Revised<AudioMedia> m_currentMedia;
    std::string m_inputFile;

    bool m_shuffle = false;
    bool m_repeat = false;
    bool m_reshuffled = false; // the list was shuffled since the index last advanced inside it
    std::uint32_t m_lastNavigation = kNeverNavigated; // monotonic clock, milliseconds
    bool m_alwaysSkipPrevious = false;

    QueueState m_state = STOP;
    std::uint32_t m_stateTime; // wall clock, seconds
    std::uint32_t m_streamId = protocol::kNoStream;
    std::uint32_t m_sourceDevice = 0;
    bool m_waitingForAddResponse = false;
    bool m_canPause = true;
    Mode m_mode = Mode::kSongs;
    std::uint32_t m_errorPeriodStart = 0; // monotonic clock, milliseconds
    std::uint32_t m_errorCount = 0;
    bool m_stoppedByErrors = false;

    std::uint32_t m_notificationDevice = 0;
    std::string m_queueInfo;
    std::string m_streamStatus;
    SecondaryInfo m_secondaryInfo;

    ASPacketSendQueue m_packets;
    Revised<RoomClientMap> m_rooms;
    std::vector<std::uint32_t> m_devicesInAnalogSource;

    using Element = kv::auto_com<KVXML::INode>;
    Memo<Status, Element> m_status;
    Memo<Status132, Element> m_status132;
    Memo<Element, Element> m_roomMap;                             // by the status in it
    Memo<std::pair<std::uint32_t, bool>, std::string> m_songText; // by the current media's revision and mode
    Memo<Place, std::uint32_t> m_place;
};
