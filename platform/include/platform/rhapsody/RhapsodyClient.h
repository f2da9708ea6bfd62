// The client of the streaming service and the records and callbacks it answers with.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/InstanceManager.h"
#include "platform/TimerManager.h"

struct DataPlaylistLite {
    std::string id;
    std::string name;
};

struct DataTrackInfo {
    std::string id;
};

struct DataTrackFull {
    std::string id;
    std::string context; // the text that the request was made with: a queue id, or empty
    std::string album;
    std::string artist;
    std::string name;
    std::string image; // address of a cover image
};

// Result code of a failed call; see the driver's table of texts for what a person reads.
using RC_Error = std::int32_t;

// Receives the answers. Called on the driver thread, never from within a call of the client.
class IRhapsodyCallback {
public:
    virtual void RC_ErrorHandler(RC_Error code) = 0;
    virtual void RC_Completed(std::vector<DataPlaylistLite>& playlists) = 0;
    virtual void RC_Completed(unsigned int total, std::vector<DataTrackInfo>& tracks) = 0;
    virtual void RC_Completed(std::vector<DataTrackFull>& tracks) = 0;
    // The connection to the service came up or went down.
    virtual void RC_ConnectionChanged(bool connected) = 0;

protected:
    virtual ~IRhapsodyCallback() = default;
};

// Empty bodies for every callback.
class RhapsodyCallbackBase : public IRhapsodyCallback {
public:
    void RC_ErrorHandler(RC_Error) override {}
    void RC_Completed(std::vector<DataPlaylistLite>&) override {}
    void RC_Completed(unsigned int, std::vector<DataTrackInfo>&) override {}
    void RC_Completed(std::vector<DataTrackFull>&) override {}
    void RC_ConnectionChanged(bool) override {}
};

namespace KVRhapsodyClient {

// Under which brand the service presents itself.
enum class RhapsodyBranding { Standard, PartnerBrand };

RhapsodyBranding GetRhapsodyBranding(const std::string& text);

// Asynchronous: every call returns at once and is answered later through the callback given with it, or
// through RC_ErrorHandler. Destroying the client drops all calls that are under way.
class RhapsodyClient {
public:
    virtual ~RhapsodyClient() = default;

    // `address` is HOST:PORT.
    virtual void Connect(const std::string& address) = 0;
    virtual void DisableOfflineMode() = 0;
    virtual void GetMemberPlaylists(IRhapsodyCallback* callback) = 0;
    virtual void GetTracksForPlaylist(const std::string& playlistId, unsigned int offset, unsigned int count,
                                      unsigned int flags, IRhapsodyCallback* callback) = 0;
    // What a queue's channel, or a track, is now: `id` is a queue id with its stream, or a track id with
    // stream 0.
    virtual void GetCurrentSongInfo(const std::string& id, std::int32_t stream,
                                    IRhapsodyCallback* callback) = 0;
};

// Makes clients. Implemented by the core; a core without the service does not publish one.
class IRhapsodyClientFactory {
public:
    static constexpr const char* kInterfaceId = "RhapsodyClient";

    // `callback` gets the answers to no call in particular and must outlive the client. Null on failure.
    virtual std::unique_ptr<RhapsodyClient> CreateClient(RhapsodyBranding branding, ITimerManager& timers,
                                                         IRhapsodyCallback* callback) = 0;

protected:
    ~IRhapsodyClientFactory() = default;
};

} // namespace KVRhapsodyClient
