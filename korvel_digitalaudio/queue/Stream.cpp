#include <algorithm>

#include "platform/System.h"
#include "queue/AudioQueue.h"
#include "server/ASPacket.h"

namespace {
constexpr int kLogQueue = 6;
constexpr const char* kCannotPause = "NO-PAUSE";
} // namespace

void AudioQueue::AddSongToStream(const AudioMedia& media) {
    // `media` may be the current one, which changes before the end.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const AudioMedia added = media;
    if (m_closed)
        return;
    m_canPause = true;
    auto packet = ASPacket::CreateAddMedia(m_driverHelper, m_instances, added, m_isInternetRadio);
    if (packet) {
        // Only the newest media is wanted once the stream is there.
        if (m_packets.RemoveWaitingMedia() != 0)
            LogXMessage(kLogQueue, "Digital Audio addmed entry superceeded");
        AddPacket(std::move(packet));
    }
    UpdateRoomMediaVariable(added, nullptr, false);
}

void AudioQueue::AddFileToStream() {
    AddPacket(std::make_unique<ASAddFileInputPacket>(m_inputFile));
}

void AudioQueue::CreateStream() {
    m_waitingForAddResponse = true;
    AddPacket(std::make_unique<ASAddStreamPacket>(), true);
}

void AudioQueue::RemoveStream() {
    m_waitingForAddResponse = false;
    AddPacket(std::make_unique<ASRemoveStreamPacket>());
}

void AudioQueue::SetStreamId(std::uint32_t streamId) {
    m_waitingForAddResponse = false;
    if (streamId == m_streamId)
        return;
    m_streamId = streamId;
    m_canPause = true;
    m_packets.SetStreamID(streamId);
}

void AudioQueue::UpdateCaps(const std::string& caps) {
    m_canPause = true;
    std::size_t start = 0;
    while (start <= caps.size()) {
        const std::size_t end = std::min(caps.find(',', start), caps.size());
        if (caps.compare(start, end - start, kCannotPause) == 0)
            m_canPause = false;
        start = end + 1;
    }
}

void AudioQueue::SetIsInternetRadio(bool on) {
    if (m_isInternetRadio || on) {
        SetIsRhapsodyChannel(false);
        ClearSongs();
    }
    if (!on) {
        m_canPause = true;
        ClearNotifications();
    }
    m_isInternetRadio = on;
    if (on) // what clearing the list told may have been answered by making the queue a channel
        m_isRhapsodyChannel = false;
}

void AudioQueue::SetIsRhapsodyChannel(bool on) {
    if (m_isRhapsodyChannel || on) {
        SetIsInternetRadio(false);
        ClearSongs();
    }
    m_isRhapsodyChannel = on;
    if (on) // a queue in both modes would go round between the two for ever
        m_isInternetRadio = false;
    m_errorCount = 0;
    m_stoppedByErrors = false;
}
