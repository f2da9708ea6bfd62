#pragma once

#include <boost/container/flat_map.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/DriverHelper.h"
#include "platform/InstanceManager.h"
#include "platform/Services.h"
#include "queue/AudioQueue.h"
#include "server/Announcement.h"
#include "server/AudioServerWatcher.h"
#include "server/link/ASPacket.h"
#include "server/link/ServerUtility.h"

class RoomHistories;

// One audio server: its play queues, its send link and its announcement, and the reader of every line it
// sends.
//
//   in use  --Retire()-->                                     left   its queues say nothing any more
//   left    --outermost entry over, no queues left behind-->  freed
//   left    --the driver's end-->                             freed  with its queues, without a word
//
// Queues are owned. A removed queue is closed at once but freed only by ReleaseRemovedQueues(), because a
// caller further up the stack may still hold it.
class AudioServer {
public:
    // `watcher`, `rhapsody` and `rhapsodyCallback` may be null; all must outlive the server.
    AudioServer(IDriverHelperV2& driverHelper, IInstanceManager& instances, AudioServerWatcher* watcher,
                std::uint32_t bindingId, bool allowMultipleStreamingInputs,
                KVRhapsodyClient::RhapsodyClient* rhapsody, IRhapsodyCallback* rhapsodyCallback);
    AudioServer(const AudioServer&) = delete;
    AudioServer& operator=(const AudioServer&) = delete;
    // Frees the queues without a word, and drops what the link has not sent.
    ~AudioServer();

    // Takes the server out of use: it gives up its announcement and leaves its queues behind. No search finds
    // them any more and they say nothing any more, not even that they ended: the server may be back in a
    // moment. Clear timers may still name them, and the link goes on with the lines that wait.
    void Retire();
    // Those that it left behind count.
    bool HasQueues() const { return !m_queues.empty() || !m_leftQueues.empty(); }

    std::uint32_t GetBindingId() const { return m_bindingId; }
    bool AllowMultipleStreamingInputs() const { return m_allowMultipleStreamingInputs; }
    void SetClearPlaylistSettings(bool clear) { m_clearPlaylist = clear; }
    void AddToServerSendQueue(const char* text) { m_link->AddToSendQueue(text); }
    void SendToServer() { m_link->SendToServer(); }

    // Queues. Returned queues are owned by the server. Searches take the first match in ascending queue id.

    // An id that is in use already gives a queue that no search finds.
    AudioQueue* CreateAudioQueue(std::uint32_t roomId, std::uint32_t queueId);
    void RemoveAudioQueue(std::uint32_t queueId);
    // Frees the queues removed so far; only while nothing up the stack can hold one.
    void ReleaseRemovedQueues() { const auto removed = std::exchange(m_removedQueues, {}); }
    AudioQueue* GetAudioQueue(std::uint32_t queueId) const;
    // By the local input that the queue plays.
    AudioQueue* GetAudioQueue(const std::string& path) const;
    AudioQueue* GetAudioQueueFromRoom(std::uint32_t roomId) const;
    bool ContainsRoom(std::uint32_t roomId) const { return GetAudioQueueFromRoom(roomId) != nullptr; }
    AudioQueue* GetAudioQueueFromStream(std::uint32_t streamId) const;
    // The first queue without a stream.
    AudioQueue* GetPendingQueue() const;
    // The queue after `queueId`, the first one for 0; null at the end or for an unknown id.
    AudioQueue* GetNextAudioQueue(std::uint32_t queueId) const;
    // In ascending queue id. They are there until ReleaseRemovedQueues(), but may be closed meanwhile.
    std::vector<AudioQueue*> GetQueues() const;
    // `*found` is the queue that plays to this endpoint, or null.
    bool IsClientInUse(const std::string& ip, std::uint32_t channel, std::uint32_t port,
                       AudioQueue** found) const;
    AudioQueue* GetInUseClientQueue(const std::string& ip, std::uint32_t channel, std::uint32_t port) const;
    // Append the element of each queue: its status, the older one, and the one with its rooms' endpoints.
    void GetStatusVariable(KVXML::INode& parent) const;
    void GetStatusVariable132(KVXML::INode& parent) const;
    void GetRoomMapData(KVXML::INode& parent) const;
    void toxmlHistory(RoomHistories* histories, KVXML::INode& parent) const;

    // The one streaming input that is marked as in use

    void SetInUseInput(const std::string& path, const AudioQueue* queue);
    // True when `queue` was the one in use.
    bool ClearInUseInput(const AudioQueue* queue);
    AudioQueue* GetInUseInputQueue() const { return GetAudioQueue(m_inUseInputPath); }
    std::string GetInUseInputPath() const { return m_inUseInputPath; }

    // The announcement; nothing happens while there is none

    void CreateAnnouncement();
    void CancelAnnouncement();
    void PlayAnnouncement(const std::string& path);
    void AddClientToAnnouncement(std::uint32_t roomId, const std::string& ip, std::uint32_t port);
    const Announcement* GetAnnouncement() const { return m_announcement.get(); }

    // Lines from the server

    // Shows an error to the users.
    void SendErrorToUI(const std::string& text);
    // `changed` becomes true when the state or the list of a queue may have changed.
    void OnDataIn(const ASPacket& packet, bool& changed);

private:
    void AbandonQueues();
    template <class Predicate>
    AudioQueue* FindQueue(Predicate matches) const;
    using QueueElement = kv::auto_com<KVXML::INode> (AudioQueue::*)();
    void AppendOfEach(KVXML::INode& parent, QueueElement element) const;
    void OnAccepted(const ASPacket& packet);
    void OnRefused(const ASPacket& packet, bool& changed);
    void DropRefusedSong(AudioQueue& queue);
    void OnEndOfMedia(AudioQueue& queue, bool& changed);
    void OnStreamCreated(std::uint32_t streamId, bool& changed);
    void OnStreamReport(const ASPacket& packet);

    const std::uint32_t m_bindingId;
    kv::auto_com<ServerUtility> m_link; // before all that sends through it
    // Flat, as every document walks over all of them.
    boost::container::flat_map<std::uint32_t, std::unique_ptr<AudioQueue>> m_queues;
    std::vector<std::unique_ptr<AudioQueue>> m_unlistedQueues;
    std::vector<std::unique_ptr<AudioQueue>> m_removedQueues;
    std::vector<std::unique_ptr<AudioQueue>> m_leftQueues;
    std::unique_ptr<Announcement> m_announcement;
    std::optional<std::uint32_t> m_inUseInputQueueId;
    std::string m_inUseInputPath;
    IInstanceManager& m_instances;
    IDriverHelperV2& m_driverHelper;
    IDeviceMessaging* m_messaging;
    IUINotifier* m_uiNotifier;
    KVRhapsodyClient::RhapsodyClient* m_rhapsody;
    IRhapsodyCallback* m_rhapsodyCallback;
    const bool m_allowMultipleStreamingInputs;
    bool m_clearPlaylist = false;
    AudioServerWatcher* m_watcher;
};
