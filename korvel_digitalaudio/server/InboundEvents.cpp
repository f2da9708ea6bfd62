#include <boost/algorithm/string/predicate.hpp>

#include "basics/Asserts.h"
#include "basics/LogLevels.h"
#include "platform/System.h"
#include "server/AudioServer.h"
#include "server/link/ASPackets.h"

namespace {

bool Mentions(const std::string& command, const char* word) {
    return command.find(word) != std::string::npos;
}

// Cuts `prefix` off the front of `text`; false when it does not begin with it.
bool TakePrefix(std::string& text, const std::string& prefix) {
    if (!boost::algorithm::starts_with(text, prefix))
        return false;
    text.erase(0, prefix.size());
    return true;
}

} // namespace

void AudioServer::SendErrorToUI(const std::string& text) {
    const auto error = KVXML::CreateXmlNode();
    if (!error) {
        kv::AssertWrite(asserts::kServerPath, asserts::kServerErrorElement, kv::StackTrace());
        return;
    }
    error->SetName("DA_ERROR");
    error->SetText("");
    error->SetAttribute("Error", text);
    LogXMessage(log_levels::kLink, "Send error to navs: " + error->ToText());
    if (m_uiNotifier)
        m_uiNotifier->SendToUIs(m_driverHelper.GetDeviceId(), *error);
}

void AudioServer::OnDataIn(const ASPacket& packet, bool& changed) {
    changed = false;
    if (m_announcement && m_announcement->OnDataIn(packet, changed))
        return;

    const std::string result = packet.GetResult();
    const std::string command = packet.GetCommand();
    // The event "* SYS addann=S", which comes with the answer to "addann", is an acceptance, too.
    if (result == protocol::kOk || result == protocol::kAddAnnouncement) {
        OnAccepted(packet);
    } else if (result == protocol::kNo || result == protocol::kBad) {
        OnRefused(packet, changed);
    } else if (result == protocol::kEndOfMedia) {
        if (AudioQueue* queue = GetAudioQueueFromStream(packet.GetStreamULONG()))
            OnEndOfMedia(*queue, changed);
    } else if (result.empty() && command == protocol::kAddStream) {
        OnStreamCreated(packet.GetStreamULONG(), changed);
    } else if (result == protocol::kStreamReport && command == protocol::kSystem) {
        OnStreamReport(packet);
    }
}

void AudioServer::OnAccepted(const ASPacket& packet) {
    m_link->KillAckTimer();
    const std::string command = packet.GetCommand();
    if (Mentions(command, protocol::kAddMedia)) {
        AudioQueue* queue = GetAudioQueueFromStream(packet.GetStreamULONG());
        if (!queue)
            return;
        if (queue->PeekNextSong().type == MEDIA_RHAPSODY_CHANNEL && m_rhapsody)
            m_rhapsody->GetCurrentSongInfo(std::to_string(queue->GetQueueId()),
                                           static_cast<std::int32_t>(queue->GetStreamId()),
                                           m_rhapsodyCallback);
    }
    if (Mentions(command, protocol::kAddClient))
        LogXMessage(log_levels::kLink, "Client added");
    if (Mentions(command, protocol::kAddMedia))
        LogXMessage(log_levels::kLink, "Media added");
}

void AudioServer::OnRefused(const ASPacket& packet, bool& changed) {
    m_link->KillAckTimer();
    const std::string command = packet.GetCommand();
    if (!Mentions(command, protocol::kRemoveMedia))
        SendErrorToUI("Unable to play selected media");
    if (!Mentions(command, protocol::kAddMedia))
        return;
    if (AudioQueue* queue = GetAudioQueueFromStream(packet.GetStreamULONG())) {
        DropRefusedSong(*queue);
        changed = true;
    }
}

// Goes on with the song after the refused one; rooms that have nothing left to hear let go.
void AudioServer::DropRefusedSong(AudioQueue& queue) {
    const bool internetRadio = queue.IsInternetRadio();
    if (!internetRadio) {
        const AudioMedia next = queue.PeekNextSong();
        queue.RemoveSong(queue.GetCurrentMedia());
        queue.SetNextSong(next);
        queue.PlayNextSong(true, false);
    }
    if (!queue.IsSongListEmpty() && !queue.IsInternetRadio())
        return;
    const auto deselect = m_driverHelper.CreateMessage("DESELECT_AUDIO_PATH");
    if (!deselect || !m_messaging)
        return;
    for (const std::uint32_t roomId : queue.GetRoomIds()) {
        if (!queue.IsClosed() && queue.ContainsRoom(roomId))
            m_messaging->SendMessage(roomId, *deselect, nullptr);
    }
}

void AudioServer::OnEndOfMedia(AudioQueue& queue, bool& changed) {
    if (queue.ShouldStopPlayback()) {
        LogXMessage(log_levels::kLink, "Stopping playback due to too many skips or errors.");
        return;
    }
    changed = true;
    const bool playing = !queue.IsInternetRadio() && queue.PlayNextSong(true, true);
    if (queue.IsClosed())
        return; // the core ended the queue while it moved on
    if (playing) {
        if (m_watcher)
            m_watcher->InterruptClearTimer(&queue);
    } else if (m_clearPlaylist && m_watcher) {
        m_watcher->StartClearTimer(&queue);
    }
    if (queue.IsInternetRadio())
        queue.SetQueueState(END);
}

void AudioServer::OnStreamCreated(std::uint32_t streamId, bool& changed) {
    m_link->KillAckTimer();
    AudioQueue* queue = GetPendingQueue();
    if (!queue) {
        // A stream that nobody wants any more.
        ASRemoveStreamPacket packet;
        packet.SetStreamId(streamId);
        m_link->AddToSendQueue(packet.str().c_str());
        LogXMessage(log_levels::kLink, "Unable to add stream - error returned from server");
        SendErrorToUI("Error occurred while initializing audio");
        return;
    }
    queue->SetWaitingForAddResponse(false);
    queue->SetStreamId(streamId);
    queue->AddRoomClientsToStream();
    const bool nothingNext = queue->PeekNextSong().type == MEDIA_NONE;
    if (queue->GetQueueState() == PLAY)
        return;
    if (nothingNext)
        queue->PlayFirstSong();
    else
        queue->SetQueueState(PLAY);
    changed = true;
}

void AudioServer::OnStreamReport(const ASPacket& packet) {
    AudioQueue* queue = GetAudioQueueFromStream(packet.GetStreamULONG());
    std::string text = packet.GetResultData();
    if (TakePrefix(text, protocol::kStreamInfo)) {
        if (!queue)
            return;
        queue->UpdateCurrentSongMetaData(text);
        queue->UpdateRoomMediaVariable(queue->GetCurrentMedia(), nullptr, false);
    } else if (TakePrefix(text, protocol::kStreamStatus)) {
        if (queue)
            queue->UpdateStreamStatus(text);
    } else if (TakePrefix(text, protocol::kStreamCaps)) {
        if (queue)
            queue->UpdateCaps(text);
    } else {
        TakePrefix(text, protocol::kStreamError);
        SendErrorToUI("Stream Error: " + text);
    }
}
