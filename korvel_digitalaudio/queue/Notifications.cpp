#include "platform/System.h"
#include "queue/AudioQueue.h"

// An event begins with the queue and what the registered party wants to find in it. Null when nobody is
// registered.
kv::auto_com<ICmdMessage> AudioQueue::CreateEvent(const char* name) const {
    if (m_notificationDevice == 0)
        return nullptr;
    auto message = m_driverHelper.CreateMessage(name);
    if (message) {
        message->AddParam("QUEUE_ID", "INT", std::to_string(m_queueId));
        if (!m_queueInfo.empty())
            message->AddParam("QUEUE_INFO", "STRING", m_queueInfo);
    }
    return message;
}

void AudioQueue::SendEvent(const ICmdMessage& message) const {
    if (m_messaging && !m_closed)
        m_messaging->SendMessage(m_notificationDevice, message, nullptr);
}

void AudioQueue::NotifyMediaChanged(const std::string& mediaInfo) const {
    if (const auto event = CreateEvent("QUEUE_MEDIA_INFO_UPDATED")) {
        event->AddParam("MEDIA_INFO", "STRING", mediaInfo);
        SendEvent(*event);
    }
}

void AudioQueue::UpdateStreamStatus(const std::string& status) {
    if (status == m_streamStatus)
        return;
    m_streamStatus = status;
    NotifyStreamStatusChanged();
}

void AudioQueue::NotifyStreamStatusChanged() const {
    if (const auto event = CreateEvent("QUEUE_STREAM_STATUS_CHANGED")) {
        event->AddParam("STATUS", "STRING", m_streamStatus);
        SendEvent(*event);
    }
}

void AudioQueue::NotifyQueueDeletion() const {
    if (const auto event = CreateEvent("QUEUE_DELETED")) {
        event->AddParam("LAST_QUEUE_STATE", "STRING", QueueStateToStr(m_state));
        event->AddParam("LAST_QUEUE_STATE_TIME", "INT", std::to_string(kv::Time() - m_stateTime));
        SendEvent(*event);
    }
}

void AudioQueue::ClearNotifications() {
    if (m_notificationDevice != 0) {
        NotifyQueueDeletion();
        m_notificationDevice = 0;
    }
    m_queueInfo.clear();
}

bool AudioQueue::UpdateSecondaryInfo(bool merge, const std::string* artist, const std::string* album,
                                     const std::string* title, const std::string* genre,
                                     const std::string* imageUrl) {
    const auto set = [merge](std::string& target, const std::string* text) {
        if (text)
            target = *text;
        else if (!merge)
            target.clear();
    };
    set(m_secondaryInfo.artist, artist);
    set(m_secondaryInfo.album, album);
    set(m_secondaryInfo.title, title);
    set(m_secondaryInfo.genre, genre);
    set(m_secondaryInfo.imageUrl, imageUrl);
    return true;
}

bool AudioQueue::UpdateCurrentSongMetaData(const std::string& text) {
    if (m_songs->empty())
        return false;
    m_currentMedia.Change().metaData = text;
    m_songs.SetMetaData(text);
    m_secondaryInfo.title = text;
    return true;
}
