#pragma once

#include <cstdint>
#include <string>

#include "platform/AvRouting.h"

class AudioQueue;
class AudioServer;
class korvel_digitalaudio;

// One room selecting this driver as its audio source: decides on which server and in which queue the room
// listens, takes it out of every other queue, adds it to the chosen one and starts playback where needed.
// Lives for one call.
//
// Each call to the core may end any queue and any server: servers are kept by their bindings and looked up
// where they are used, the chosen queue is asked for again after such a call.
class SourceSelection {
public:
    SourceSelection(korvel_digitalaudio& driver, const AVParams& params, const AV_Class& input,
                    const AVLocationInfo& location, AVReturn& result);
    SourceSelection(const SourceSelection&) = delete;
    SourceSelection& operator=(const SourceSelection&) = delete;
    // Whatever ended the selection, its record names no queue that is gone.
    ~SourceSelection();

    void Run();

private:
    // False when the selection names no audio server and there is none to fall back on.
    bool FindBinding();
    void JoinAnnouncement();
    // True when the room may have ended in a queue, which then needs a fresh status.
    bool SelectQueue();
    bool IsComplete() const;
    AudioServer* Server() const;
    // The server on which the room's endpoint was in use when the selection came.
    AudioServer* InUseServer() const;
    void FreeEndpoint();
    void FreeInput();
    bool KeepsEndpoint(const AudioServer& inUse, const AudioQueue& queue) const;
    void LeaveOtherServer();
    AudioQueue* ChooseQueue();
    AudioQueue* RequestedQueue();
    AudioQueue* CheckQueue(AudioQueue* queue);
    AudioQueue* NewQueue();
    bool Enter(AudioQueue& queue);
    void AddRoom(AudioQueue& queue);
    void TakeSourceDevice(AudioQueue& queue);
    void PlayInput(AudioQueue& queue);
    void StartInput(AudioQueue& queue);
    void PlayQueue(AudioQueue& queue);
    void PlayPlaylist(AudioQueue& queue);
    void PlayMedia(AudioQueue& queue);
    void PlayBroadcast(AudioQueue& queue);
    void Start(AudioQueue& queue);
    void LeaveQueue(AudioQueue* queue);
    void FillResult(AudioQueue& queue, bool orNext);
    void ReturnQueue(const AudioQueue& queue);
    void ReturnNothing();
    void SendMediaSelected();

    korvel_digitalaudio& m_driver;
    const AVParams& m_params;
    const AV_Class& m_input;
    const AVLocationInfo& m_location;
    AVReturn& m_result;
    const std::uint32_t m_room;
    const std::uint32_t m_requested; // the queue that the room is to join; 0 for none
    std::string m_kind;
    std::string m_inputName;
    std::uint32_t m_binding = 0;      // of the server that is to play
    std::uint32_t m_inUseBinding = 0; // of InUseServer(); 0 for none
    const AudioQueue* m_returned = nullptr;
};
