// A controller core that costs next to nothing: what is measured around it is the driver.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/IDriver.h"
#include "platform/IDriverHost.h"
#include "platform/InstanceManager.h"
#include "platform/MediaManager.h"
#include "platform/Services.h"
#include "platform/System.h"
#include "platform/TimerManager.h"
#include "platform/Utilities.h"

namespace bench {

// Knows every song under every id, gives every room a name and does nothing with what it is told, except that
// it keeps the lines to the audio server until they are answered, and documents while asked to.
class BenchCore final : public IInstanceManager,
                        public IDriverHost,
                        public IDriverHelperV2,
                        public IMediaManager,
                        public ITimerManager,
                        public IDeviceMessaging,
                        public IBindMessageSender,
                        public IVariableService,
                        public IRoomService,
                        public kv::ISystem {
public:
    // Creates the driver and its audio server.
    BenchCore();
    BenchCore(const BenchCore&) = delete;
    BenchCore& operator=(const BenchCore&) = delete;
    ~BenchCore();

    IDriver& Driver() { return *m_driver; }
    // Delivers a line of the audio server.
    void Receive(const std::string& line);
    // Approves of every line sent so far, and of those that follow from it; who asks for a stream gets one.
    void AnswerLines();
    void PassTime(std::uint32_t milliseconds) { m_now += milliseconds; }

    // From here on the texts of the variables that are set are appended to `documents`; null ends it.
    void KeepDocuments(std::vector<std::string>* documents) { m_documents = documents; }

    // IInstanceManager
    bool GetInstance(const std::string& id, void** instance) override;
    void RegisterInstance(const std::string& id, void* instance) override { m_instances[id] = instance; }
    void RevokeInstance(const std::string& id) override { m_instances.erase(id); }

    // IDriverHost
    void VmAdd(std::uint32_t, const std::string&, std::uint32_t, const std::string&, std::int32_t,
               std::int32_t, const std::string&) override {}
    void VmRemove(std::uint32_t) override {}
    void ChangeVariable(std::uint32_t, const std::string& text) override;
    void FireEvent(std::uint32_t) override {}
    std::uint32_t AddTimer(std::uint32_t, std::uint32_t) override { return ++m_lastTimer; }
    void KillTimer(std::uint32_t) override {}
    void AddDynamicBinding(std::uint32_t, BindingType, bool, const std::string&, const std::string&, bool,
                           bool) override {}
    void InvalidateState() override {}
    std::int32_t SendCommand(std::uint32_t, const ICmdMessage&, ICmdReturn*) override { return 0; }
    void SendDataToUI(const KVXML::INode&) override {}
    void SendDataToDevice(std::uint32_t, const KVXML::INode&) override {}
    void Log(int, const std::string&) override {} // the system's as well
    void LogDebug(const std::string&) override {}
    void CommandRegistered(const std::string&) override {}
    void UIRequestRegistered(const std::string&) override {}
    IMediaManager* GetMediaManager() override { return this; }
    ITimerManager& GetTimerManager() override { return *this; }
    IDriverHelperV2& GetHelper() override { return *this; }
    std::string GetBrandingText() override { return {}; }

    // IDriverHelperV2
    kv::auto_com<ICmdMessage> CreateMessage(const std::string& name) override;
    kv::auto_com<IOutboundBindMessage> CreateBindMessage(std::uint32_t kind, const std::string& name,
                                                         const std::string& data) override;
    std::uint32_t GetDeviceId() override;
    void* GetDeviceInterface(std::uint32_t, const std::string&) override { return nullptr; }

    // IMediaManager
    std::int32_t GetLocation(std::uint32_t, const std::string&, std::string& location) override;
    std::uint32_t GetStorageDevice(std::uint32_t) override { return 1; }
    kv::auto_com<KVXML::INode> GetAlbumInfo(std::uint32_t) override { return nullptr; }
    kv::auto_com<KVXML::INode> GetMediaRecord(std::uint32_t, const std::string&) override { return m_record; }
    kv::auto_com<KVXML::INode> GetMediaList(std::uint32_t, const std::string&, const std::string&,
                                            const std::string&, std::int32_t, std::int32_t) override {
        return nullptr;
    }
    std::vector<MediaItem> GetSongsForAlbums(const std::vector<std::uint32_t>&,
                                             const std::vector<std::uint32_t>&) override {
        return {};
    }
    std::vector<MediaItem> GetSongsByArtist(const std::vector<std::uint32_t>&, const std::string&) override {
        return {};
    }
    std::vector<MediaItem> GetSongsByGenre(const std::vector<std::uint32_t>&, const std::string&) override {
        return {};
    }
    std::vector<MediaItem> GetSongsByArtistAndGenre(const std::vector<std::uint32_t>&, const std::string&,
                                                    const std::string&) override {
        return {};
    }
    std::vector<MediaItem> GetPlaylistSongs(std::uint32_t) override { return {}; }
    std::string GetPlaylistName(std::uint32_t) override { return {}; }
    std::uint32_t CreatePlaylist(std::uint32_t, const std::string&, const std::vector<MediaItem>&) override {
        return 0;
    }
    std::int32_t UpdatePlaylist(std::uint32_t, const std::vector<MediaItem>&) override { return -1; }
    std::int32_t DeletePlaylist(std::uint32_t) override { return -1; }
    std::int32_t AddMedia(std::uint32_t, const std::string&, const std::string&, const std::string&,
                          std::int32_t, std::uint32_t&) override {
        return -1;
    }
    std::int32_t AddSongToPlaylist(std::uint32_t, std::uint32_t, std::uint32_t) override { return -1; }

    // ITimerManager
    std::uint32_t StartTimer(std::uint32_t, std::uint32_t, ITimerManagerCallback*) override {
        return ++m_lastTimer;
    }
    void CancelTimer(std::uint32_t) override {}
    void RemoveCallback(ITimerManagerCallback*) override {}

    // IDeviceMessaging, IBindMessageSender, IVariableService, IRoomService
    std::string GetDeviceName(std::uint32_t) override { return "Living room"; }
    void SendMessage(std::uint32_t, const ICmdMessage&, std::string*) override {}
    void SendBindMessage(std::uint32_t, std::uint32_t, const IOutboundBindMessage& message) override;
    void SetVariable(std::uint32_t, std::uint32_t, std::uint32_t id, const std::string& text, bool) override {
        ChangeVariable(id, text);
    }
    void QueueEnded(std::uint32_t, std::uint32_t) override {}

    // ISystem
    std::uint32_t Time() override { return 1000000000u + m_now / 1000; }
    void MonotonicTime(timespec& now) override;
    std::int32_t Random() override;
    void SeedRandom(std::uint32_t) override {}
    std::uint32_t SystemType() override { return 0; }
    bool IsLocalIPv4(const std::string&) override { return true; }
    void RecordAssert(const std::string&, int, const std::string&) override {}

private:
    std::unordered_map<std::string, void*> m_instances;
    kv::auto_com<IStringX> m_stringX;
    kv::auto_com<IKVMessage> m_message;
    kv::auto_com<KVXML::INode> m_record;
    std::deque<std::string> m_lines;
    std::vector<std::string>* m_documents = nullptr;
    std::uint32_t m_now = 100000;
    std::uint32_t m_lastTimer = 0;
    std::uint32_t m_lastStream = 0;
    std::uint32_t m_random = 1;
    std::unique_ptr<IDriver> m_driver;
};

} // namespace bench
