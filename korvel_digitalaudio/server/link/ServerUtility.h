#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include "platform/DriverHelper.h"
#include "platform/InstanceManager.h"
#include "platform/Services.h"
#include "platform/TimerManager.h"

// The one path by which text reaches an audio server: numbers the lines, keeps them in order, and lets one be
// outstanding at a time.
//
//   idle     --line added-->                      waiting  the line is sent, a timer of kAckTimeoutMs runs
//   waiting  --KillAckTimer() or timer expiry-->  idle     or waiting again, when more lines are there
//
// A line that is not acknowledged in time counts as done. Shared by the audio server object, its queues and
// their rooms, each with a counted reference.
class ServerUtility final : public ITimerManagerCallback {
public:
    static constexpr std::uint32_t kAckTimeoutMs = 5000;

    // Starts with one reference, the creator's.
    ServerUtility(IDriverHelper& driverHelper, IInstanceManager& instances, std::uint32_t deviceId);
    ServerUtility(const ServerUtility&) = delete;
    ServerUtility& operator=(const ServerUtility&) = delete;

    void AddRef() { ++m_references; }
    // Returns the new count; at 0 the object is gone and unsent lines are dropped.
    std::int32_t Release();

    // Queues "<number> <text>\r\n"; a null text counts as empty.
    void AddToSendQueue(const char* text);
    // Sends the oldest line when none is outstanding.
    void SendToServer();
    // The outstanding line was acknowledged. Nothing happens when none is outstanding.
    void KillAckTimer();

    void OnTimerExpired(std::uint32_t timerId, std::int32_t) override;

    bool IsAckTimerExpired() const { return !m_outstanding; }
    std::uint32_t GetAckTimer() const { return m_ackTimer; }

private:
    ~ServerUtility() override;
    void HandOver(const std::string& line);
    void StartAckTimer();

    std::int32_t m_references = 1;
    std::uint16_t m_sequence = 0;
    std::deque<std::string> m_lines;
    bool m_outstanding = false;   // a line is handed over and not acknowledged
    bool m_sending = false;       // SendToServer() is at work further up the stack
    std::uint32_t m_ackTimer = 0; // 0 when none runs
    std::uint32_t m_deviceId;
    IDriverHelper& m_driverHelper;
    ITimerManager* m_timers;
    IBindMessageSender* m_sender;
};
