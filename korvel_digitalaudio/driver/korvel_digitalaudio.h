#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "driver/QueueIds.h"
#include "korvel_digitalaudio/IDigitalAudio.h"
#include "platform/EntryGuard.h"
#include "platform/KVBaseDriver.h"
#include "platform/Services.h"
#include "platform/Utilities.h"
#include "platform/XmlPieces.h"
#include "platform/rhapsody/RhapsodyClient.h"
#include "queue/AudioQueue.h"
#include "server/AudioServer.h"
#include "server/AudioServerWatcher.h"
#include "status/RoomHistories.h"

namespace commands {
struct AddFlags;
class OpenedQueue;
} // namespace commands

// What the user prefers to happen on play. Its values are the user interfaces' own; any number may come.
enum DigitalAudioPlayPref : std::int32_t {};

// The digital-audio driver: play queues for the rooms of a house, played by audio servers.
//
// The way of a command: ExecuteCommand and the table (Commands.cpp) -> the handler (commands/) -> AudioQueue
// (queue/) -> ASPacketSendQueue -> ServerUtility (server/link/) -> the binding.
//
// Every entry from the core runs inside Enter(), which lets no exception out and, when the outermost entry
// ends, frees the queues and servers that were removed meanwhile. The timer of a send link, which frees none,
// has a guard of its own.
class korvel_digitalaudio final : public KVBaseDriver,
                                  public AudioServerWatcher,
                                  public RhapsodyCallbackBase,
                                  public IDigitalAudio {
public:
    // The plug-in exports these.
    static const std::string s_DigitalAudioPersistTag;
    static const std::string s_DA_LastServerIDTag;
    static const std::string s_DA_LastMediaIDTag;
    static const std::string s_DA_PlayPreferenceTag;
    static const std::string s_DigitalAudioSettingsTag;
    static const std::string s_DAClearPlaylistTag;
    static const std::string s_DAClearPlaylistDelayTag;
    static const bool s_DefClearPlaylistFlag;
    static const std::uint16_t s_DefClearPlaylistDelayMinutes;
    static const DigitalAudioPlayPref s_DefPlayPreference;

    // A row of the command table. Parameters are named as docs/commands.md names them, parted by ", ".
    struct Command {
        using Handler = void (korvel_digitalaudio::*)(const ICmdMessage&, ICmdReturn*);

        const char* name;
        Handler handler;
        const char* required; // with one of them missing or empty nothing happens, and nobody is told
        const char* others; // [NAME] may be absent, [NAME=1] is 1 then; a plain NAME the handler looks after
        const char* help;
    };
    static std::span<const Command> Commands();
    // A row of the table of requests, which answer user interfaces.
    struct Request {
        using Handler = kv::auto_com<KVXML::INode> (korvel_digitalaudio::*)(const ICmdMessage&);

        const char* name;
        Handler handler;
        const char* others;
        const char* help;
    };
    static std::span<const Request> Requests();

    // The driver that is registered with `instances`, or a new one, owned by the caller.
    static IDriver* Create(IInstanceManager& instances);
    ~korvel_digitalaudio() override;

    // IDriver (Entries.cpp; commands, requests and conditions in Commands.cpp)
    std::int32_t Initialize(std::uint32_t id, KVXML::INode& config, KVXML::INode* persist) override;
    std::int32_t BoundCall(std::uint32_t id, BindingType type, const std::string& text,
                           const IBindMessage& message, ICmdReturn* ret) override;
    void OnBindingChanged(std::uint32_t id, const std::string& name, bool bound) override;
    void OnAVRoomOff(std::uint32_t roomId) override;
    void OnAVSelected(const AVParams& params, const AV_Class& output, const AV_Class& input,
                      const AVLocationInfo& location, const AVDriverLocationInfo* driverLocation,
                      AVReturn& result) override;
    void OnAVDeselected(const AVParams& params, const AV_Class& output, const AV_Class& input) override;
    void OnAVAddLocationInfo(const AVParams& params, const AV_Class& output, const AV_Class& input,
                             AVLocationInfo& location, AVDriverLocationInfo** driverLocation) override;
    bool IsAVOutputToInputValid(const AVParams& params, const AV_Class& output,
                                const AV_Class& input) override;
    kv::auto_com<KVXML::INode> GetPersistState(std::uint32_t) override;
    std::int32_t ExecuteCommand(const ICmdMessage& message, ICmdReturn* ret, std::uint32_t source) override;
    bool TestCondition(const ICondMessage& condition, std::uint32_t* value) override;
    kv::auto_com<KVXML::INode> UIRequest(const ICmdMessage& message) override;
    void OnTimerExpired(std::uint32_t timerId, std::int32_t) override;

    // AudioServerWatcher (ClearTimers.cpp)
    void StartClearTimer(AudioQueue* queue) override;
    void InterruptClearTimer(AudioQueue* queue) override;

    // IRhapsodyCallback (Entries.cpp); the connection's state is of no interest here
    using RhapsodyCallbackBase::RC_Completed;
    void RC_ErrorHandler(RC_Error code) override;
    void RC_Completed(std::vector<DataPlaylistLite>& playlists) override;
    void RC_Completed(unsigned int total, std::vector<DataTrackInfo>& tracks) override;
    void RC_Completed(std::vector<DataTrackFull>& tracks) override;

    // IDigitalAudio (Entries.cpp)
    void CreateAnnouncementStream() override;
    void RemoveAnnouncementStream() override;
    void PlayAnnouncement(const std::string& path) override;

    // Shows an error to the users (ServerRegistry.cpp).
    void SendErrorToUI(const std::string& text);

private:
    friend class SourceSelection;

    explicit korvel_digitalaudio(IInstanceManager& instances);

    // Runs the body of an entry; `neutral` is what the entry returns when the body throws.
    template <class Result, class Body>
    Result Enter(const char* entry, Result neutral, Body&& body) noexcept;
    template <class Body>
    void Enter(const char* entry, Body&& body) noexcept;
    void LeaveEntry() noexcept;

    // Lifecycle.cpp
    std::int32_t Start(std::uint32_t id, KVXML::INode& config, KVXML::INode* persist);
    void AddVariables();
    void CreateRhapsodyClient();

    // Commands.cpp
    static const Command s_commands[];
    static const Request s_requests[];
    void RegisterCommands();
    void RunCommand(Command::Handler handler, const std::vector<std::string>& required,
                    const ICmdMessage& message, ICmdReturn* ret);

    // Bindings.cpp
    void RestoreDynamicBindings();
    void AddServerBinding(std::uint32_t id);
    void AddMediaBinding(std::uint32_t id);
    void ExtendBindings(std::uint32_t boundId);
    void HandleBoundCall(std::uint32_t id, const IBindMessage& message, ICmdReturn* ret);
    void HandleData(std::uint32_t id, const std::string& line);
    void HandleServerOnline(std::uint32_t id, const IBindMessage& message);
    void RunProtocolCommand(std::uint32_t id, const IBindMessage& message, ICmdReturn* ret);

    // ServerRegistry.cpp
    AudioServer* AudioServer_Create(std::uint32_t id, bool allowMultInput);
    AudioServer* AudioServer_GetServerFromId(std::uint32_t queueId) const;
    AudioServer* AudioServer_GetInUseServer(const std::string& ip, std::uint32_t channel,
                                            std::uint32_t port) const;
    AudioServer* AudioServer_GetServerFromRoom(std::uint32_t roomId) const;
    AudioQueue* AudioServer_GetQueueFromRoom(std::uint32_t roomId) const;
    AudioQueue* AudioServer_GetQueueFromId(std::uint32_t queueId) const;
    // False once a call to the core has ended the queue or left it behind. It is freed after the outermost
    // entry at the earliest.
    bool IsThere(const AudioQueue& queue) const;
    // 0 on success, -1 when the room can have no queue.
    std::int32_t AudioServer_CreateQueue(std::uint32_t roomId, AudioQueue** queue, bool* created);
    AudioQueue* AudioServer_CreateQueue(AudioServer* server, std::uint32_t roomId);
    AudioQueue* AudioQueue_Get(std::uint32_t roomId, std::uint32_t queueId) const;
    AudioServer* GetServer(std::uint32_t bindingId) const;
    // The first in ascending binding id; null for none.
    template <class Predicate>
    AudioServer* FindServer(Predicate matches) const;
    template <class Action>
    void ForEachServer(Action action);
    template <class Action>
    void ForEachQueue(Action action);
    static AudioQueue* NextQueue(const AudioServer& server, std::uint32_t queueId);
    // Takes a server out of use; it is freed when the outermost entry has ended, or with the driver if it left
    // queues behind. Nothing happens for an unknown binding.
    void EndServer(std::uint32_t bindingId);
    void ReleaseRetiredServers();
    std::vector<std::uint32_t> GetMp3Devices(std::uint32_t deviceId);

    // Settings.cpp
    void OnGetSettings(const ICmdMessage& message, ICmdReturn* ret);
    void OnSetPlaylistClearFlag(const ICmdMessage& message, ICmdReturn* ret);
    void OnSetPlaylistClearDelay(const ICmdMessage& message, ICmdReturn* ret);
    void OnSetPlayPreference(const ICmdMessage& message, ICmdReturn* ret);
    void SetPlaylistClearFlag(bool clear);
    void SetPlaylistDelayValue(std::uint16_t minutes);
    void UpdatePlayPreferenceVariable(DigitalAudioPlayPref preference);
    void SendSettingsToServers();
    void SendSettingsToUI();
    void SettingsToXml(KVXML::INode& parent) const;
    kv::auto_com<KVXML::INode> PersistedState();
    void RestoreSettings(const KVXML::INode& persist);

    // ClearTimers.cpp
    void HandleTimer(std::uint32_t timerId);
    void ClearRestingQueue(AudioQueue& queue);
    void PollRhapsodyChannels();

    // RoomQueueSettings.cpp
    void AddRoomsShuffleState(std::uint32_t roomId, bool on);
    void AddRoomsRepeatState(std::uint32_t roomId, bool on);
    kv::auto_com<KVXML::INode> RoomQueueSettingsToXml() const;
    void UpdateRoomsQueueSettingsVariable(KVXML::INode* parent);
    void RoomQueueSettingsFromXml(KVXML::INode* persist);
    // A room with a queue is listed in the settings from then on.
    void ListRoom(std::uint32_t roomId);
    void SetQueuesShuffleState(AudioQueue& queue, std::uint32_t roomId);
    void SetQueuesRepeatState(AudioQueue& queue, std::uint32_t roomId);

    // Deselection.cpp
    void DeselectRoom(std::uint32_t roomId);
    void SwitchRoomOff(std::uint32_t roomId);
    void AddLocationInfo(const AVParams& params, AVLocationInfo& location);
    void DeselectAudioPath(std::uint32_t deviceId);
    void AudioQueue_DeselectAll(AudioQueue* queue);
    void AudioQueue_DeselectClients(AudioQueue* queue, const std::string& ip, std::uint32_t channel,
                                    std::uint32_t port);
    void RoomClient_Remove(std::uint32_t roomId, AudioServer* server, AudioQueue** queue);
    void RoomClient_RemoveAll(AudioServer* server, AudioQueue* queue);
    void RoomClient_DeselectAll(AudioServer* server, std::uint32_t roomId);
    void AudioServer_DeselectIfDifferntInput(AudioServer* server, std::uint32_t roomId,
                                             const std::string& input);

    // commands/Transport.cpp
    void OnPlay(const ICmdMessage& message, ICmdReturn* ret);
    void OnPause(const ICmdMessage& message, ICmdReturn* ret);
    void OnStop(const ICmdMessage& message, ICmdReturn* ret);
    void OnSkipFwd(const ICmdMessage& message, ICmdReturn* ret);
    void OnSkipRev(const ICmdMessage& message, ICmdReturn* ret);
    void OnGoToSong(const ICmdMessage& message, ICmdReturn* ret);
    void OnRepeat(const ICmdMessage& message, ICmdReturn* ret);
    void OnShuffle(const ICmdMessage& message, ICmdReturn* ret);
    AudioQueue* QueueForTransport(const ICmdMessage& message);

    // commands/Sessions.cpp
    void OnJoin(const ICmdMessage& message, ICmdReturn* ret);
    void OnAddRoomsToSession(const ICmdMessage& message, ICmdReturn* ret);
    void OnRemoveRoomsFromSession(const ICmdMessage& message, ICmdReturn* ret);
    void OnRemove(const ICmdMessage& message, ICmdReturn* ret);
    void OnRemoveQueue(const ICmdMessage& message, ICmdReturn* ret);
    std::uint32_t AudioQueue_Join(std::uint32_t roomId, std::uint32_t joinRoomId);
    void SelectInRoom(std::uint32_t roomId, std::uint32_t queueId);
    static void ReturnQueueId(ICmdReturn* ret, std::uint32_t queueId);

    // commands/Adding.cpp
    using PrepareQueue = std::function<void(AudioQueue&)>;
    // Finds or makes the room's queue and lets the room into it. `prepare` comes between the two: what a
    // command wants done before the room joins.
    commands::OpenedQueue OpenQueueForMedia(std::uint32_t roomId, const PrepareQueue& prepare);
    // For commands with all flags: sets them when the queue plays a single stream, and clears the queue.
    commands::OpenedQueue OpenQueueForMedia(std::uint32_t roomId, commands::AddFlags& flags,
                                            const PrepareQueue& prepare);

    // commands/AddSong.cpp
    void OnAddSong(const ICmdMessage& message, ICmdReturn* ret);
    bool RefusesItem(const AudioMedia& item, std::uint32_t roomId, bool isNewQueue);

    // commands/AddSongList.cpp
    void OnAddSongList(const ICmdMessage& message, ICmdReturn* ret);
    std::vector<AudioMedia> TakeSongList(const KVXML::INode& root, AudioQueue& queue, std::uint32_t roomId,
                                         commands::AddFlags& flags);
    void RequestRhapsodyPlaylist(const std::string& playlistId, std::uint32_t roomId);

    // commands/AddAlbums.cpp
    void OnAddAlbumMp3(const ICmdMessage& message, ICmdReturn* ret);
    void AddAlbum(const commands::OpenedQueue& queue, const KVXML::INode& album, bool playNext);
    void OnAddAlbumList(const ICmdMessage& message, ICmdReturn* ret);
    void OnQueueAll(const ICmdMessage& message, ICmdReturn* ret);
    std::vector<AudioMedia> SongsOfArtistOrGenre(const ICmdMessage& message, std::uint32_t roomId);
    AudioQueue* QueueSongVector(std::uint32_t roomId, const std::vector<AudioMedia>& songs, bool playNow,
                                bool playNext);

    // commands/OutsideMedia.cpp
    void OnAddIRSTREAM(const ICmdMessage& message, ICmdReturn* ret);
    void OnGetRhapsodyMyPlaylists(const ICmdMessage& message, ICmdReturn* ret);
    void SendMemberPlaylists(const std::vector<DataPlaylistLite>& playlists);
    void FillWithPlaylistTracks(const std::vector<DataTrackInfo>& tracks);
    void ShowTrack(const DataTrackFull& track);

    // commands/EditQueue.cpp
    void OnEditQueue(const ICmdMessage& message, ICmdReturn* ret);
    void OnRemoveSong(const ICmdMessage& message, ICmdReturn* ret);

    // commands/Playlists.cpp
    void OnAddPlaylist(const ICmdMessage& message, ICmdReturn* ret);
    void OnSavePlaylist(const ICmdMessage& message, ICmdReturn* ret);
    void OnRenamePlaylist(const ICmdMessage& message, ICmdReturn* ret);
    void OnDeletePlaylist(const ICmdMessage& message, ICmdReturn* ret);
    void Playlist_Load(std::uint32_t roomId, std::uint32_t playlistId, AudioQueue* queue,
                       std::int32_t playNext);
    void Playlist_Save(std::uint32_t roomId, const std::string& name);
    void Playlist_Rename(const std::string& name, std::uint32_t playlistId);
    void Playlist_Delete(std::uint32_t playlistId);
    void Playlist_Delete(const std::string& name);
    // 0 when there is no playlist of that name.
    std::uint32_t GetPlaylistID(const std::string& name);

    // commands/SecondaryInfo.cpp
    void OnUpdateSecondaryMediaInfo(const ICmdMessage& message, ICmdReturn* ret);

    // status/QueueStatus.cpp
    void OnGetQueueStatus(const ICmdMessage& message, ICmdReturn* ret);
    void OnGetQueueStatusV2(const ICmdMessage& message, ICmdReturn* ret);
    void OnRequestCurrentMediaInfo(const ICmdMessage& message, ICmdReturn* ret);
    kv::auto_com<KVXML::INode> OnGetQueueInfo(const ICmdMessage& message);
    kv::auto_com<KVXML::INode> GetQueueStatusVariable();
    kv::auto_com<KVXML::INode> GetQueueStatusVariable132();
    void AppendOfEachServer(KVXML::INode& root, void (AudioServer::*elements)(KVXML::INode&) const);
    using Assembly = kv::auto_com<KVXML::IAssembly>;
    // Sets a variable to the text of an element that `fill` fills. The element is kept for the next time.
    void PublishAssembly(std::uint32_t variable, const char* name, Assembly& kept,
                         const std::function<void(KVXML::INode&)>& fill);
    void UpdateQueueStatusVariable();

    // status/RoomMap.cpp
    void UpdateRoomMapInfoVar();

    // status/RoomHistory.cpp
    void OnGetRoomHistory(const ICmdMessage& message, ICmdReturn* ret);
    void UpdateRoomHistoryVariable();

    std::map<std::uint32_t, std::unique_ptr<AudioServer>> m_servers; // by binding id
    std::uint32_t m_periodicTimer = 0;
    [[maybe_unused]] IUINotifier* m_instanceA = nullptr;
    [[maybe_unused]] IDeviceMessaging* m_instanceB = nullptr;
    std::uint32_t m_activeServerBinding = 0; // the server on this controller; 0 until it has come online
    // Never 0, which stands for the beginning of a walk over queues.
    std::uint32_t m_nextQueueId = kFirstQueueId;
    kv::auto_com<IStringX> m_stringX;
    kv::auto_com<IKVMessage> m_message;
    std::uint32_t m_lastServerBinding = 0;
    std::uint32_t m_lastMediaBinding = 0;
    RoomHistories m_roomHistories;
    std::map<std::uint32_t, bool> m_roomShuffle;
    std::map<std::uint32_t, bool> m_roomRepeat;
    Assembly m_shownStatus, m_shownStatus132, m_shownRoomMap; // as they were published last
    std::unique_ptr<KVRhapsodyClient::RhapsodyClient> m_rhapsody;
    bool m_clearPlaylist = s_DefClearPlaylistFlag;
    std::uint16_t m_clearDelayMinutes = s_DefClearPlaylistDelayMinutes;
    std::map<std::uint32_t, AudioQueue*> m_clearTimers; // by timer id
    DigitalAudioPlayPref m_playPreference = s_DefPlayPreference;
    std::uint32_t m_pendingRhapsodyRoom = 0; // waits for the tracks of a playlist
    std::uint32_t m_playlistsDevice = 0;     // asked for the member playlists

    int m_entryDepth = 0;
    bool m_ending = false; // entries do nothing any more
    std::vector<std::unique_ptr<AudioServer>> m_retiredServers;
    std::vector<std::unique_ptr<AudioServer>> m_goneServers; // that left queues behind
};

template <class Result, class Body>
Result korvel_digitalaudio::Enter(const char* entry, Result neutral, Body&& body) noexcept {
    if (m_ending)
        return neutral;
    ++m_entryDepth;
    Result result = kv::GuardEntry(entry, std::move(neutral), std::forward<Body>(body));
    LeaveEntry();
    return result;
}

template <class Body>
void korvel_digitalaudio::Enter(const char* entry, Body&& body) noexcept {
    if (m_ending)
        return;
    ++m_entryDepth;
    kv::GuardEntry(entry, std::forward<Body>(body));
    LeaveEntry();
}

// Walks copied ids: the action may add or remove servers.
template <class Action>
void korvel_digitalaudio::ForEachServer(Action action) {
    std::vector<std::uint32_t> ids;
    for (const auto& entry : m_servers)
        ids.push_back(entry.first);
    for (const std::uint32_t id : ids) {
        if (AudioServer* server = GetServer(id))
            action(*server);
    }
}

// In ascending binding id and queue id. The action may end any queue, the one that it is called with too.
template <class Action>
void korvel_digitalaudio::ForEachQueue(Action action) {
    ForEachServer([&](AudioServer& server) {
        std::uint32_t walked = 0; // the last queue's id
        while (AudioQueue* queue = NextQueue(server, walked)) {
            walked = queue->GetQueueId();
            action(*queue);
        }
    });
}
