#include "server/link/ServerUtility.h"

#include <utility>

#include "basics/Asserts.h"
#include "basics/Ids.h"
#include "platform/AutoCom.h"
#include "platform/EntryGuard.h"
#include "server/link/Protocol.h"

namespace {
constexpr std::uint32_t kSendMessageKind = 1;
}

ServerUtility::ServerUtility(IDriverHelper& driverHelper, IInstanceManager& instances, std::uint32_t deviceId)
    : m_deviceId(deviceId),
      m_driverHelper(driverHelper),
      m_timers(kv::GetService<ITimerManager>(instances)),
      m_sender(kv::GetService<IBindMessageSender>(instances)) {}

ServerUtility::~ServerUtility() {
    kv::GuardEntry("~ServerUtility", [&] {
        if (m_timers)
            m_timers->RemoveCallback(this);
    });
}

std::int32_t ServerUtility::Release() {
    const std::int32_t left = --m_references;
    if (left == 0)
        delete this;
    return left;
}

void ServerUtility::AddToSendQueue(const char* text) {
    const std::uint16_t number = m_sequence++;
    m_lines.push_back(std::to_string(number) + " " + (text ? text : "") + protocol::kLineEnd);
    SendToServer();
}

void ServerUtility::SendToServer() {
    if (m_sending)
        return; // an answer came while a line was handed over: the loop below goes on with the next
    const auto self = kv::auto_com<ServerUtility>::retain(this);
    struct Sending {
        bool& flag;
        explicit Sending(bool& f) : flag(f) { flag = true; }
        ~Sending() { flag = false; }
    } sending(m_sending);

    while (!m_outstanding && !m_lines.empty()) {
        const std::string line = std::move(m_lines.front());
        m_lines.pop_front();
        m_outstanding = true;
        try {
            HandOver(line);
            if (m_outstanding)
                StartAckTimer();
        } catch (...) {
            m_outstanding = false; // without a timer nobody would ever release the next line
            throw;
        }
    }
}

// Without a timer no line counts as outstanding: nothing would ever release the next one.
void ServerUtility::StartAckTimer() {
    m_ackTimer = m_timers ? m_timers->StartTimer(kAckTimeoutMs, 1, this) : 0;
    if (m_ackTimer == 0)
        m_outstanding = false;
}

void ServerUtility::HandOver(const std::string& line) {
    const auto message = m_driverHelper.CreateBindMessage(kSendMessageKind, "SEND", line);
    if (message && m_sender)
        m_sender->SendBindMessage(kDriverDeviceId, m_deviceId, *message);
}

void ServerUtility::KillAckTimer() {
    if (!m_outstanding)
        return;
    if (m_ackTimer != 0 && m_timers)
        m_timers->CancelTimer(m_ackTimer);
    m_ackTimer = 0;
    m_outstanding = false;
    SendToServer();
}

void ServerUtility::OnTimerExpired(std::uint32_t timerId, std::int32_t) {
    const auto self = kv::auto_com<ServerUtility>::retain(this); // its server may go inside a call
    kv::GuardEntry("ServerUtility::OnTimerExpired", [&] {
        if (timerId == m_ackTimer) {
            m_ackTimer = 0;
            m_outstanding = false;
        } else {
            kv::AssertWrite(asserts::kServerUtilityPath, asserts::kUnknownTimer, kv::StackTrace());
        }
        SendToServer();
    });
}
