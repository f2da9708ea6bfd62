// What the queue does, and what it therefore tells the audio server.
#include "basics/Ids.h"
#include "basics/LogLevels.h"
#include "platform/System.h"
#include "platform/XmlHelper.h"
#include "queue/AudioQueue.h"
#include "queue/Clock.h"
#include "server/link/ASPacket.h"

namespace {

constexpr std::uint32_t kErrorPeriodMs = 60000;
constexpr std::uint32_t kMaxErrorsInPeriod = 5;
// The room service counts rooms from here.
constexpr std::uint32_t kRoomCodeOffset = 20;
// In front of a station id it makes the audio server play the station as a channel.
constexpr const char* kChannelPrefix = "channel-";

} // namespace

const char* AudioQueue::QueueStateToStr(QueueState state) {
    switch (state) {
        case STOP:
            return "STOP";
        case PAUSE:
            return "PAUSE";
        case PLAY:
            return "PLAY";
        case END:
            return "END";
    }
    return "";
}

// PLAY after PLAY is announced again: another song has started.
void AudioQueue::ChangeQueueState(QueueState state) {
    if (state == m_state && state != PLAY)
        return;
    const QueueState oldState = m_state;
    const std::uint32_t oldTime = m_stateTime;
    m_state = state;
    m_stateTime = kv::Time();

    if (m_notificationDevice == 0)
        return;
    const auto message = m_driverHelper.CreateMessage("QUEUE_STATE_CHANGED");
    if (!message)
        return;
    message->AddParam("QUEUE_ID", "INT", std::to_string(m_queueId));
    message->AddParam("PREV_QUEUE_STATE", "STRING", QueueStateToStr(oldState));
    message->AddParam("PREV_QUEUE_STATE_TIME", "INT", std::to_string(m_stateTime - oldTime));
    message->AddParam("QUEUE_STATE", "STRING", QueueStateToStr(state));
    if (!m_queueInfo.empty())
        message->AddParam("QUEUE_INFO", "STRING", m_queueInfo);
    SendEvent(*message);
}

void AudioQueue::SetQueueState(QueueState state) {
    m_errorCount = 0;
    m_stoppedByErrors = false;
    // A stream that cannot pause is stopped instead.
    const QueueState wanted = state == PAUSE && !m_canPause ? STOP : state;
    switch (wanted) {
        case STOP:
            if (m_state != STOP)
                StopAndRewind();
            break;
        case PAUSE:
            if (m_state == PLAY || m_state == END) {
                AddPacket(std::make_unique<ASChangeStatePacket>(PAUSE));
                ChangeQueueState(PAUSE);
            }
            break;
        case PLAY:
            if (m_state == END) {
                PlayFirstSong();
            } else if (m_state == STOP) {
                PlayNextSong(true, false);
            } else if (m_state == PAUSE) {
                AddPacket(std::make_unique<ASChangeStatePacket>(PLAY));
                ChangeQueueState(PLAY);
            }
            break;
        case END:
            if (m_state != END) {
                ClearSecondaryInfo();
                UpdateRoomMediaVariable(GetCurrentMedia(), nullptr, false);
                EndOfQueue();
            }
            break;
    }
}

// The next play starts from the top.
void AudioQueue::StopAndRewind() {
    RemoveCurrentSong();
    ChangeQueueState(STOP);
    SetNextSong(GetFirstSong());
}

void AudioQueue::PlayFirstSong() {
    const AudioMedia media = GetFirstSong();
    switch (media.type) {
        case MEDIA_DIGITAL:
        case MEDIA_INTERNET_RADIO:
            if (media.mediaId != 0)
                AddSongToStream(media);
            break;
        case MEDIA_RHAPSODY_TRACK:
            if (media.externalId.empty())
                return;
            AddSongToStream(media);
            break;
        case MEDIA_RHAPSODY_CHANNEL:
            return; // a channel starts through PlayNextSong()
        default:
            if (!m_inputFile.empty())
                AddFileToStream();
            break;
    }
    ChangeQueueState(PLAY);
}

bool AudioQueue::PlayNextSong(bool forward, bool endIfNone) {
    const AudioMedia media = forward ? GetNextSong() : GetPreviousSong();
    bool playable = false;
    switch (media.type) {
        case MEDIA_DIGITAL:
        case MEDIA_INTERNET_RADIO:
            playable = media.mediaId != 0 || !media.externalId.empty();
            break;
        case MEDIA_RHAPSODY_TRACK:
            playable = !media.externalId.empty();
            break;
        case MEDIA_RHAPSODY_CHANNEL:
            return PlayChannel();
        default:
            break;
    }
    if (playable) {
        ChangeQueueState(PLAY);
        AddSongToStream(media);
        return true;
    }
    if (endIfNone) {
        AudioMedia none;
        if (media.type == MEDIA_DIGITAL || media.type == MEDIA_RHAPSODY_TRACK ||
            media.type == MEDIA_INTERNET_RADIO)
            none.type = media.type;
        UpdateRoomMediaVariable(none, nullptr, false);
        EndOfQueue();
    }
    return false;
}

// The item in the list keeps the bare station id; only what is streamed carries the prefix.
bool AudioQueue::PlayChannel() {
    AudioMedia channel = GetPreviousSong();
    channel.externalId = kChannelPrefix + channel.externalId;
    if (!m_songs->empty()) {
        ChangeQueueState(PLAY);
        if (!m_songs->empty()) // unless the announcement was answered by clearing the queue
            m_songs.SetMetaData("");
    }
    AddSongToStream(channel);
    return true;
}

void AudioQueue::AddSongToStream(const AudioMedia& media) {
    // `media` may be the current one, which changes before the end.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const AudioMedia added = media;
    if (m_closed)
        return;
    m_canPause = true;
    auto packet = ASPacket::CreateAddMedia(m_driverHelper, m_instances, added, IsInternetRadio(),
                                           [this] { return !m_closed; });
    if (packet) {
        // Only the newest media is wanted once the stream is there.
        if (m_packets.RemoveWaitingMedia() != 0)
            LogXMessage(log_levels::kQueue, "Digital Audio addmed entry superceeded");
        AddPacket(std::move(packet));
    }
    UpdateRoomMediaVariable(added, nullptr, false);
}

void AudioQueue::AddFileToStream() {
    AddPacket(std::make_unique<ASAddFileInputPacket>(m_inputFile));
}

// All packets of the queue go this way; a closed queue has nothing to say any more.
void AudioQueue::AddPacket(std::unique_ptr<ASPacketBase> packet, bool skipWaiting) {
    if (!m_closed)
        m_packets.Add(std::move(packet), skipWaiting);
}

void AudioQueue::EndOfQueue() {
    ChangeQueueState(END);
    for (const std::uint32_t roomId : GetRoomIds()) {
        if (m_roomService && !m_closed)
            m_roomService->QueueEnded(kDriverDeviceId, roomId + kRoomCodeOffset);
    }
    AddPacket(std::make_unique<ASEndOfStreamPacket>());
}

bool AudioQueue::ShouldStopPlayback() {
    const std::uint32_t now = MonotonicMilliseconds();
    if (now - m_errorPeriodStart < kErrorPeriodMs) {
        if (++m_errorCount > kMaxErrorsInPeriod) {
            m_stoppedByErrors = true;
            m_errorPeriodStart = now;
            m_errorCount = 0;
            return true;
        }
    } else {
        m_errorCount = 0;
        m_errorPeriodStart = now;
    }
    m_stoppedByErrors = false;
    return false;
}

bool AudioQueue::HandleRoomCommand(const std::string& command, const std::string& roomId) const {
    if (m_closed || m_notificationDevice == 0 || !m_messaging)
        return false;
    const auto message = m_driverHelper.CreateMessage(command);
    if (!message)
        return false;
    message->AddParam("ROOM_ID", "INT", roomId);
    std::string reply;
    m_messaging->SendMessage(m_notificationDevice, *message, &reply);
    if (reply.empty())
        return false;
    const auto document = KVXML::CreateXmlDocument(reply);
    return document && XmlHelper::GetBool(*document->GetRoot(), "handled");
}
