// Every service of a core with the test's hook in front of each operation.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "TestCore.h"
#include "platform/IDriverHost.h"
#include "platform/MediaManager.h"
#include "platform/Services.h"
#include "platform/System.h"
#include "platform/TimerManager.h"
#include "platform/rhapsody/RhapsodyClient.h"

template <class Interface>
class Hooked : public Interface {
public:
    Hooked(TestCore& core, Interface& inner) : m_core(core), m_inner(inner) {}

protected:
    template <class... Arguments>
    void Note(const char* name, const Arguments&... arguments) {
        m_core.Note({name, {Text(arguments)...}});
    }

    TestCore& m_core;
    Interface& m_inner;

private:
    static std::string Text(const std::string& text) { return text; }
    static std::string Text(const char* text) { return text; }
    static std::string Text(bool flag) { return flag ? "true" : "false"; }
    template <class Number>
    static std::string Text(Number number) {
        return std::to_string(number);
    }
};

class HookedSystem final : public Hooked<kv::ISystem> {
public:
    using Hooked::Hooked;
    std::uint32_t Time() override {
        Note("Time");
        return m_inner.Time();
    }
    void MonotonicTime(timespec& now) override {
        Note("MonotonicTime");
        m_inner.MonotonicTime(now);
    }
    std::int32_t Random() override {
        Note("Random");
        return m_inner.Random();
    }
    void SeedRandom(std::uint32_t seed) override {
        Note("SeedRandom", seed);
        m_inner.SeedRandom(seed);
    }
    std::uint32_t SystemType() override {
        Note("SystemType");
        return m_inner.SystemType();
    }
    bool IsLocalIPv4(const std::string& address) override {
        Note("IsLocalIPv4", address);
        return m_inner.IsLocalIPv4(address);
    }
    void Log(int level, const std::string& text) override {
        Note("Log", level, text);
        m_inner.Log(level, text);
    }
    void RecordAssert(const std::string& sourcePath, int line, const std::string& stackTrace) override {
        Note("RecordAssert", sourcePath, line);
        m_inner.RecordAssert(sourcePath, line, stackTrace);
    }
};

class HookedTimers final : public Hooked<ITimerManager> {
public:
    using Hooked::Hooked;
    std::uint32_t StartTimer(std::uint32_t milliseconds, std::uint32_t count,
                             ITimerManagerCallback* callback) override {
        Note("StartTimer", milliseconds, count);
        return m_inner.StartTimer(milliseconds, count, callback);
    }
    void CancelTimer(std::uint32_t timerId) override {
        Note("CancelTimer", timerId);
        m_inner.CancelTimer(timerId);
    }
    void RemoveCallback(ITimerManagerCallback* callback) override {
        Note("RemoveCallback");
        m_inner.RemoveCallback(callback);
    }
};

class HookedMedia : public Hooked<IMediaManager> {
public:
    using Hooked::Hooked;
    std::int32_t GetLocation(std::uint32_t mediaId, const std::string& category,
                             std::string& location) override {
        Note("GetLocation", mediaId, category);
        return m_inner.GetLocation(mediaId, category, location);
    }
    std::uint32_t GetStorageDevice(std::uint32_t mediaId) override {
        Note("GetStorageDevice", mediaId);
        return m_inner.GetStorageDevice(mediaId);
    }
    kv::auto_com<KVXML::INode> GetAlbumInfo(std::uint32_t albumId) override {
        Note("GetAlbumInfo", albumId);
        return m_inner.GetAlbumInfo(albumId);
    }
    kv::auto_com<KVXML::INode> GetMediaRecord(std::uint32_t mediaId, const std::string& category) override {
        Note("GetMediaRecord", mediaId, category);
        return m_inner.GetMediaRecord(mediaId, category);
    }
    kv::auto_com<KVXML::INode> GetMediaList(std::uint32_t deviceId, const std::string& category,
                                            const std::string& filter1, const std::string& filter2,
                                            std::int32_t first, std::int32_t count) override {
        Note("GetMediaList", deviceId, category, filter1, filter2, first, count);
        return m_inner.GetMediaList(deviceId, category, filter1, filter2, first, count);
    }
    std::vector<MediaItem> GetSongsForAlbums(const std::vector<std::uint32_t>& albumIds,
                                             const std::vector<std::uint32_t>& deviceIds) override {
        Note("GetSongsForAlbums");
        return m_inner.GetSongsForAlbums(albumIds, deviceIds);
    }
    std::vector<MediaItem> GetSongsByArtist(const std::vector<std::uint32_t>& deviceIds,
                                            const std::string& artist) override {
        Note("GetSongsByArtist", artist);
        return m_inner.GetSongsByArtist(deviceIds, artist);
    }
    std::vector<MediaItem> GetSongsByGenre(const std::vector<std::uint32_t>& deviceIds,
                                           const std::string& genre) override {
        Note("GetSongsByGenre", genre);
        return m_inner.GetSongsByGenre(deviceIds, genre);
    }
    std::vector<MediaItem> GetSongsByArtistAndGenre(const std::vector<std::uint32_t>& deviceIds,
                                                    const std::string& artist,
                                                    const std::string& genre) override {
        Note("GetSongsByArtistAndGenre", artist, genre);
        return m_inner.GetSongsByArtistAndGenre(deviceIds, artist, genre);
    }
    std::vector<MediaItem> GetPlaylistSongs(std::uint32_t playlistId) override {
        Note("GetPlaylistSongs", playlistId);
        return m_inner.GetPlaylistSongs(playlistId);
    }
    std::string GetPlaylistName(std::uint32_t playlistId) override {
        Note("GetPlaylistName", playlistId);
        return m_inner.GetPlaylistName(playlistId);
    }
    std::uint32_t CreatePlaylist(std::uint32_t deviceId, const std::string& name,
                                 const std::vector<MediaItem>& songs) override {
        Note("CreatePlaylist", deviceId, name);
        return m_inner.CreatePlaylist(deviceId, name, songs);
    }
    std::int32_t UpdatePlaylist(std::uint32_t playlistId, const std::vector<MediaItem>& songs) override {
        Note("UpdatePlaylist", playlistId);
        return m_inner.UpdatePlaylist(playlistId, songs);
    }
    std::int32_t DeletePlaylist(std::uint32_t playlistId) override {
        Note("DeletePlaylist", playlistId);
        return m_inner.DeletePlaylist(playlistId);
    }
    std::int32_t AddMedia(std::uint32_t deviceId, const std::string& description, const std::string& filter,
                          const std::string& name, std::int32_t replace, std::uint32_t& newId) override {
        Note("AddMedia", deviceId, description, filter, name, replace);
        return m_inner.AddMedia(deviceId, description, filter, name, replace, newId);
    }
    std::int32_t AddSongToPlaylist(std::uint32_t playlistId, std::uint32_t songId,
                                   std::uint32_t position) override {
        Note("AddSongToPlaylist", playlistId, songId, position);
        return m_inner.AddSongToPlaylist(playlistId, songId, position);
    }
};

class HookedMessaging final : public Hooked<IDeviceMessaging> {
public:
    using Hooked::Hooked;
    std::string GetDeviceName(std::uint32_t deviceId) override {
        Note("GetDeviceName", deviceId);
        return m_inner.GetDeviceName(deviceId);
    }
    void SendMessage(std::uint32_t deviceId, const ICmdMessage& message, std::string* reply) override {
        Note("SendMessage", deviceId, message.GetName());
        m_inner.SendMessage(deviceId, message, reply);
    }
};

class HookedUINotifier final : public Hooked<IUINotifier> {
public:
    using Hooked::Hooked;
    void SendToUIs(std::uint32_t fromDeviceId, const KVXML::INode& data) override {
        Note("SendToUIs", fromDeviceId, data.ToText());
        m_inner.SendToUIs(fromDeviceId, data);
    }
};

class HookedSender final : public Hooked<IBindMessageSender> {
public:
    using Hooked::Hooked;
    void SendBindMessage(std::uint32_t fromDeviceId, std::uint32_t bindingId,
                         const IOutboundBindMessage& message) override {
        Note("SendBindMessage", fromDeviceId, bindingId, message.GetKind(), message.GetName(),
             message.GetData());
        m_inner.SendBindMessage(fromDeviceId, bindingId, message);
    }
};

class HookedVariables final : public Hooked<IVariableService> {
public:
    using Hooked::Hooked;
    void SetVariable(std::uint32_t deviceId, std::uint32_t fromDeviceId, std::uint32_t id,
                     const std::string& text, bool notify) override {
        Note("SetVariable", deviceId, fromDeviceId, id, text, notify);
        m_inner.SetVariable(deviceId, fromDeviceId, id, text, notify);
    }
};

class HookedRooms final : public Hooked<IRoomService> {
public:
    using Hooked::Hooked;
    void QueueEnded(std::uint32_t code, std::uint32_t roomCode) override {
        Note("QueueEnded", code, roomCode);
        m_inner.QueueEnded(code, roomCode);
    }
};

class HookedAnnouncements final : public Hooked<IAnnouncementNotifier> {
public:
    using Hooked::Hooked;
    void AnnouncementStreamReady() override {
        Note("AnnouncementStreamReady");
        m_inner.AnnouncementStreamReady();
    }
    void AnnouncementComplete() override {
        Note("AnnouncementComplete");
        m_inner.AnnouncementComplete();
    }
};

class HookedRhapsodyClient final : public Hooked<KVRhapsodyClient::RhapsodyClient> {
public:
    HookedRhapsodyClient(TestCore& core, std::unique_ptr<KVRhapsodyClient::RhapsodyClient> inner)
        : Hooked(core, *inner), m_owned(std::move(inner)) {}
    void Connect(const std::string& address) override {
        Note("Connect", address);
        m_inner.Connect(address);
    }
    void DisableOfflineMode() override {
        Note("DisableOfflineMode");
        m_inner.DisableOfflineMode();
    }
    void GetMemberPlaylists(IRhapsodyCallback* callback) override {
        Note("GetMemberPlaylists");
        m_inner.GetMemberPlaylists(callback);
    }
    void GetTracksForPlaylist(const std::string& playlistId, unsigned int offset, unsigned int count,
                              unsigned int flags, IRhapsodyCallback* callback) override {
        Note("GetTracksForPlaylist", playlistId, offset, count, flags);
        m_inner.GetTracksForPlaylist(playlistId, offset, count, flags, callback);
    }
    void GetCurrentSongInfo(const std::string& id, std::int32_t stream,
                            IRhapsodyCallback* callback) override {
        Note("GetCurrentSongInfo", id, stream);
        m_inner.GetCurrentSongInfo(id, stream, callback);
    }

private:
    std::unique_ptr<KVRhapsodyClient::RhapsodyClient> m_owned;
};

class HookedRhapsody final : public Hooked<KVRhapsodyClient::IRhapsodyClientFactory> {
public:
    using Hooked::Hooked;
    std::unique_ptr<KVRhapsodyClient::RhapsodyClient> CreateClient(
        KVRhapsodyClient::RhapsodyBranding branding, ITimerManager& timers,
        IRhapsodyCallback* callback) override {
        Note("CreateClient");
        auto client = m_inner.CreateClient(branding, timers, callback);
        return client ? std::make_unique<HookedRhapsodyClient>(m_core, std::move(client)) : nullptr;
    }
};

class HookedHelper final : public Hooked<IDriverHelperV2> {
public:
    using Hooked::Hooked;
    kv::auto_com<ICmdMessage> CreateMessage(const std::string& name) override {
        Note("CreateMessage", name);
        return m_inner.CreateMessage(name);
    }
    kv::auto_com<IOutboundBindMessage> CreateBindMessage(std::uint32_t kind, const std::string& name,
                                                         const std::string& data) override {
        Note("CreateBindMessage", kind, name, data);
        return m_inner.CreateBindMessage(kind, name, data);
    }
    std::uint32_t GetDeviceId() override {
        Note("GetDeviceId");
        return m_inner.GetDeviceId();
    }
    void* GetDeviceInterface(std::uint32_t deviceId, const std::string& interfaceId) override {
        Note("GetDeviceInterface", deviceId, interfaceId);
        if (void* service = m_core.DeviceService(deviceId, interfaceId))
            return service;
        return m_inner.GetDeviceInterface(deviceId, interfaceId);
    }
};

class HookedHost : public Hooked<IDriverHost> {
public:
    HookedHost(TestCore& core, IDriverHost& inner, IMediaManager& media, ITimerManager& timers,
               IDriverHelperV2& helper)
        : Hooked(core, inner), m_media(media), m_timers(timers), m_helper(helper) {}

    void VmAdd(std::uint32_t id, const std::string& name, std::uint32_t type, const std::string& value,
               std::int32_t a, std::int32_t b, const std::string& extra) override {
        Note("VmAdd", id, name, type, value, a, b, extra);
        m_inner.VmAdd(id, name, type, value, a, b, extra);
    }
    void VmRemove(std::uint32_t id) override {
        Note("VmRemove", id);
        m_inner.VmRemove(id);
    }
    void ChangeVariable(std::uint32_t id, const std::string& text) override {
        Note("ChangeVariable", id, text);
        m_inner.ChangeVariable(id, text);
    }
    void FireEvent(std::uint32_t id) override {
        Note("FireEvent", id);
        m_inner.FireEvent(id);
    }
    std::uint32_t AddTimer(std::uint32_t milliseconds, std::uint32_t flags) override {
        Note("AddTimer", milliseconds, flags);
        return m_inner.AddTimer(milliseconds, flags);
    }
    void KillTimer(std::uint32_t id) override {
        Note("KillTimer", id);
        m_inner.KillTimer(id);
    }
    void AddDynamicBinding(std::uint32_t id, BindingType type, bool flag1, const std::string& name,
                           const std::string& bindingClass, bool flag2, bool flag3) override {
        Note("AddDynamicBinding", id, type, flag1, name, bindingClass, flag2, flag3);
        m_inner.AddDynamicBinding(id, type, flag1, name, bindingClass, flag2, flag3);
    }
    void InvalidateState() override {
        Note("InvalidateState");
        m_inner.InvalidateState();
    }
    std::int32_t SendCommand(std::uint32_t deviceId, const ICmdMessage& message, ICmdReturn* ret) override {
        Note("SendCommand", deviceId, message.GetName());
        return m_inner.SendCommand(deviceId, message, ret);
    }
    void SendDataToUI(const KVXML::INode& data) override {
        Note("SendDataToUI", data.ToText());
        m_inner.SendDataToUI(data);
    }
    void SendDataToDevice(std::uint32_t deviceId, const KVXML::INode& data) override {
        Note("SendDataToDevice", deviceId, data.ToText());
        m_inner.SendDataToDevice(deviceId, data);
    }
    void Log(int level, const std::string& text) override {
        Note("Log", level, text);
        m_inner.Log(level, text);
    }
    void LogDebug(const std::string& text) override {
        Note("LogDebug", text);
        m_inner.LogDebug(text);
    }
    void CommandRegistered(const std::string& name) override {
        Note("CommandRegistered", name);
        m_inner.CommandRegistered(name);
    }
    void UIRequestRegistered(const std::string& name) override {
        Note("UIRequestRegistered", name);
        m_inner.UIRequestRegistered(name);
    }
    IMediaManager* GetMediaManager() override { return &m_media; }
    ITimerManager& GetTimerManager() override { return m_timers; }
    IDriverHelperV2& GetHelper() override { return m_helper; }
    std::string GetBrandingText() override {
        Note("GetBrandingText");
        return m_inner.GetBrandingText();
    }

private:
    IMediaManager& m_media;
    ITimerManager& m_timers;
    IDriverHelperV2& m_helper;
};
