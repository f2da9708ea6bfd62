// A controller core whose every decision comes from the fuzzer's input: when a service fails, what it
// answers, and whether it calls back into the driver before it returns.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "korvel_digitalaudio/IDigitalAudio.h"
#include "platform/IDriverHost.h"
#include "platform/InstanceManager.h"
#include "platform/MediaManager.h"
#include "platform/Services.h"
#include "platform/System.h"
#include "platform/TimerManager.h"
#include "platform/Utilities.h"
#include "platform/rhapsody/RhapsodyClient.h"

namespace fuzz {

// How the core behaves in a run.
struct Manner {
    bool callsBack = false;         // any service may call any entry before it returns
    bool throws = false;            // any service may throw
    bool roomsAnswerAtOnce = false; // a room that is told to select or deselect does so within the call
    bool serverAnswersAtOnce = false;
    bool fails = false; // answers may be missing
};

class FuzzCore final : public IInstanceManager,
                       public IDriverHost,
                       public IDriverHelperV2,
                       public IMediaManager,
                       public ITimerManager,
                       public IDeviceMessaging,
                       public IUINotifier,
                       public IBindMessageSender,
                       public IVariableService,
                       public IRoomService,
                       public IAnnouncementNotifier,
                       public IMp3Storage,
                       public IAnalogSource,
                       public kv::ISystem,
                       public KVRhapsodyClient::IRhapsodyClientFactory {
public:
    FuzzCore(FuzzedDataProvider& data, const Manner& manner);
    FuzzCore(const FuzzCore&) = delete;
    FuzzCore& operator=(const FuzzCore&) = delete;
    // Destroys the driver and aborts when it left a timer or its registration behind.
    ~FuzzCore();

    // Creates and initialises the driver. False when there is none.
    bool Start(KVXML::INode* persist);
    IDriver* Driver() { return m_driver; }
    FuzzedDataProvider& Data() { return m_data; }
    const std::vector<std::string>& CommandNames() const { return m_commandNames; }

    // Entries with plain values, for the targets that need a state to start from.
    void Command(const std::string& name, const std::vector<CmdParam>& params);
    void Bound(std::uint32_t binding, const std::string& name, const std::string& data);
    void Select(std::uint32_t roomId, std::uint32_t queueId, const std::string& kind,
                const std::string& inputName = "");
    void Deselect(std::uint32_t roomId);
    IRhapsodyCallback* Rhapsody() { return m_rhapsodyCallback; }
    IDigitalAudio* Announcements();
    // The `index`-th running timer, counted round, expires. Nothing happens without one.
    void ExpireTimer(std::size_t index);
    void PassTime(std::uint32_t milliseconds) { m_now += milliseconds; }

    // IInstanceManager
    bool GetInstance(const std::string& id, void** instance) override;
    void RegisterInstance(const std::string& id, void* instance) override { m_instances[id] = instance; }
    void RevokeInstance(const std::string& id) override { m_instances.erase(id); }

    // IDriverHost
    void VmAdd(std::uint32_t, const std::string&, std::uint32_t, const std::string&, std::int32_t,
               std::int32_t, const std::string&) override;
    void VmRemove(std::uint32_t) override;
    void ChangeVariable(std::uint32_t, const std::string& text) override;
    void FireEvent(std::uint32_t) override;
    std::uint32_t AddTimer(std::uint32_t milliseconds, std::uint32_t flags) override;
    void KillTimer(std::uint32_t id) override;
    void AddDynamicBinding(std::uint32_t, BindingType, bool, const std::string&, const std::string&, bool,
                           bool) override;
    void InvalidateState() override;
    std::int32_t SendCommand(std::uint32_t deviceId, const ICmdMessage& message, ICmdReturn* ret) override;
    void SendDataToUI(const KVXML::INode&) override;
    void SendDataToDevice(std::uint32_t, const KVXML::INode&) override;
    // ISystem has the same operation.
    void Log(int, const std::string&) override;
    void LogDebug(const std::string&) override;
    void CommandRegistered(const std::string& name) override { m_commandNames.push_back(name); }
    void UIRequestRegistered(const std::string& name) override { m_commandNames.push_back(name); }
    IMediaManager* GetMediaManager() override { return this; }
    ITimerManager& GetTimerManager() override { return *this; }
    IDriverHelperV2& GetHelper() override { return *this; }
    std::string GetBrandingText() override;

    // IDriverHelperV2
    kv::auto_com<ICmdMessage> CreateMessage(const std::string& name) override;
    kv::auto_com<IOutboundBindMessage> CreateBindMessage(std::uint32_t kind, const std::string& name,
                                                         const std::string& data) override;
    std::uint32_t GetDeviceId() override { return 100002; }
    void* GetDeviceInterface(std::uint32_t deviceId, const std::string& interfaceId) override;

    // IMediaManager
    std::int32_t GetLocation(std::uint32_t mediaId, const std::string&, std::string& location) override;
    std::uint32_t GetStorageDevice(std::uint32_t mediaId) override;
    kv::auto_com<KVXML::INode> GetAlbumInfo(std::uint32_t albumId) override;
    kv::auto_com<KVXML::INode> GetMediaRecord(std::uint32_t mediaId, const std::string& category) override;
    kv::auto_com<KVXML::INode> GetMediaList(std::uint32_t, const std::string&, const std::string&,
                                            const std::string&, std::int32_t, std::int32_t) override;
    std::vector<MediaItem> GetSongsForAlbums(const std::vector<std::uint32_t>&,
                                             const std::vector<std::uint32_t>&) override;
    std::vector<MediaItem> GetSongsByArtist(const std::vector<std::uint32_t>&, const std::string&) override;
    std::vector<MediaItem> GetSongsByGenre(const std::vector<std::uint32_t>&, const std::string&) override;
    std::vector<MediaItem> GetSongsByArtistAndGenre(const std::vector<std::uint32_t>&, const std::string&,
                                                    const std::string&) override;
    std::vector<MediaItem> GetPlaylistSongs(std::uint32_t) override;
    std::string GetPlaylistName(std::uint32_t playlistId) override;
    std::uint32_t CreatePlaylist(std::uint32_t, const std::string&, const std::vector<MediaItem>&) override;
    std::int32_t UpdatePlaylist(std::uint32_t, const std::vector<MediaItem>&) override;
    std::int32_t DeletePlaylist(std::uint32_t) override;
    std::int32_t AddMedia(std::uint32_t, const std::string&, const std::string&, const std::string&,
                          std::int32_t, std::uint32_t& newId) override;
    std::int32_t AddSongToPlaylist(std::uint32_t, std::uint32_t, std::uint32_t) override;

    // ITimerManager
    std::uint32_t StartTimer(std::uint32_t milliseconds, std::uint32_t count,
                             ITimerManagerCallback* callback) override;
    void CancelTimer(std::uint32_t timerId) override;
    void RemoveCallback(ITimerManagerCallback* callback) override;

    // Messages, and what else a core is told
    std::string GetDeviceName(std::uint32_t) override;
    void SendMessage(std::uint32_t deviceId, const ICmdMessage& message, std::string* reply) override;
    void SendToUIs(std::uint32_t, const KVXML::INode&) override;
    void SendBindMessage(std::uint32_t, std::uint32_t bindingId,
                         const IOutboundBindMessage& message) override;
    void SetVariable(std::uint32_t, std::uint32_t, std::uint32_t, const std::string&, bool) override;
    void QueueEnded(std::uint32_t, std::uint32_t) override;
    void AnnouncementStreamReady() override;
    void AnnouncementComplete() override;
    std::vector<std::uint32_t> GetMp3Devices() override;
    void TakeSourceDevice(std::uint32_t) override;
    std::vector<std::uint32_t> GetDevicesInAnalogSource() override;
    void SelectDevice(std::uint32_t) override;

    // ISystem
    std::uint32_t Time() override { return 1000000000u + m_now / 1000; }
    void MonotonicTime(timespec& now) override;
    std::int32_t Random() override;
    void SeedRandom(std::uint32_t) override {}
    std::uint32_t SystemType() override;
    bool IsLocalIPv4(const std::string& address) override { return address == "127.0.0.1"; }
    void RecordAssert(const std::string&, int, const std::string&) override {}

    // IRhapsodyClientFactory
    std::unique_ptr<KVRhapsodyClient::RhapsodyClient> CreateClient(KVRhapsodyClient::RhapsodyBranding,
                                                                   ITimerManager&,
                                                                   IRhapsodyCallback* callback) override;

    // Where a call of the driver may be interrupted: by an exception or by calls into the driver.
    void Interrupt();

private:
    struct Timer {
        std::uint32_t milliseconds;
        bool repeats;
        ITimerManagerCallback* callback; // null for the driver's own
    };

    // Marks a call of the timer manager.
    class InTimers {
    public:
        explicit InTimers(FuzzCore& core) : m_core(core), m_before(core.m_inTimers) {
            core.m_inTimers = true;
        }
        ~InTimers() { m_core.m_inTimers = m_before; }

    private:
        FuzzCore& m_core;
        const bool m_before;
    };

    bool Fails();
    std::vector<MediaItem> SomeSongs();
    void AnswerLine(std::uint32_t bindingId, const std::string& line);
    void AnswerRoom(std::uint32_t roomId, const ICmdMessage& message);

    FuzzedDataProvider& m_data;
    const Manner m_manner;
    IDriver* m_driver = nullptr;
    IRhapsodyCallback* m_rhapsodyCallback = nullptr;
    std::map<std::string, void*> m_instances;
    kv::auto_com<IStringX> m_stringX;
    kv::auto_com<IKVMessage> m_message;
    std::vector<std::string> m_commandNames;
    std::map<std::uint32_t, Timer> m_timers;
    std::uint32_t m_lastTimer = 0;
    std::uint32_t m_lastStream = 0;
    std::uint32_t m_now = 100000;
    int m_depth = 0;
    int m_interruptions = 0;
    bool m_inTimers = false; // within a call of the timer manager, whose timers do not expire there
};

} // namespace fuzz
