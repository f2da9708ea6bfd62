#include <algorithm>

#include "queue/AudioQueue.h"
#include "server/link/Protocol.h"

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
        if (caps.compare(start, end - start, protocol::kNoPause) == 0)
            m_canPause = false;
        start = end + 1;
    }
}

// Whatever the queue was before, no trace of the other mode is left. What clearing the list tells may be
// answered by a change of mode; this one has the last word.
void AudioQueue::ChangeMode(Mode mode, bool on) {
    if (!on) {
        EndMode(mode);
        return;
    }
    EndMode(mode == Mode::kRadio ? Mode::kChannel : Mode::kRadio);
    ClearSongs();
    if (mode == Mode::kChannel)
        ForgetMode(mode);
    m_mode = mode;
}

// A queue that is in another mode stays in it, but what the ended one leaves behind goes in any case.
void AudioQueue::EndMode(Mode mode) {
    if (m_mode == mode) {
        ForgetMode(mode == Mode::kRadio ? Mode::kChannel : Mode::kRadio);
        ClearSongs();
    }
    ForgetMode(mode);
    if (m_mode == mode)
        m_mode = Mode::kSongs;
}

// A radio leaves behind what its stream can do and who hears of it; a channel, the count of its failures.
void AudioQueue::ForgetMode(Mode mode) {
    if (mode == Mode::kRadio) {
        m_canPause = true;
        ClearNotifications();
    } else {
        m_errorCount = 0;
        m_stoppedByErrors = false;
    }
}
