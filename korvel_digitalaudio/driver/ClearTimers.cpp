// Queues at rest are cleared after a while; channels of the streaming service are polled.
#include "basics/LogLevels.h"
#include "driver/korvel_digitalaudio.h"

namespace {

constexpr std::uint32_t kMsPerMinute = 60000;
constexpr std::uint32_t kNoDelayMs = 100;
constexpr std::uint32_t kClearTimerFlags = 1;
// A controller model whose rooms keep what they last heard.
constexpr std::uint32_t kSystemTypeKeepsQueues = 24;

} // namespace

void korvel_digitalaudio::StartClearTimer(AudioQueue* queue) {
    if (queue->IsClosed())
        return;
    const std::uint32_t interval = m_clearDelayMinutes == 0 ? kNoDelayMs : kMsPerMinute * m_clearDelayMinutes;
    std::uint32_t timerId = AddTimer(interval, kClearTimerFlags);
    if (queue->IsClosed())
        KillTimer(timerId); // it ended inside the call: nothing is left to clear
    else
        m_clearTimers.emplace(timerId, queue);
}

void korvel_digitalaudio::InterruptClearTimer(AudioQueue* queue) {
    std::vector<std::uint32_t> timers;
    for (const auto& [timerId, cleared] : m_clearTimers) {
        if (cleared == queue)
            timers.push_back(timerId);
    }
    for (std::uint32_t timerId : timers) {
        m_clearTimers.erase(timerId);
        KillTimer(timerId);
    }
}

void korvel_digitalaudio::HandleTimer(std::uint32_t timerId) {
    const auto found = m_clearTimers.find(timerId);
    if (found != m_clearTimers.end())
        ClearRestingQueue(*found->second);
    if (timerId == m_periodicTimer)
        PollRhapsodyChannels();
}

void korvel_digitalaudio::ClearRestingQueue(AudioQueue& queue) {
    const QueueState state = queue.GetQueueState();
    if (state == PLAY || state == PAUSE) {
        LogMessage(log_levels::kFailed,
                   "Clear timer fired but queue is in play or pause state - should be at STOP or END state.  "
                   "Probable cause is media added and timer not cleared!");
        return;
    }
    if (KernelX::GetSystemType() != kSystemTypeKeepsQueues)
        AudioQueue_DeselectAll(&queue);
}

void korvel_digitalaudio::PollRhapsodyChannels() {
    ForEachQueue([&](AudioQueue& queue) {
        if (queue.IsRhapsodyChannel() && !queue.IsStoppedByErrors() && m_rhapsody)
            m_rhapsody->GetCurrentSongInfo(std::to_string(queue.GetQueueId()),
                                           static_cast<std::int32_t>(queue.GetStreamId()), this);
    });
}
