#include "audioserver/SourceThread.h"

#include <algorithm>
#include <atomic>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <condition_variable>
#include <deque>
#include <iterator>
#include <mutex>
#include <thread>
#include <utility>

#include "common/Log.h"

namespace korvel::audioserver {
namespace {

std::atomic<unsigned> g_abandoned = 0;

void LogAbandoned(std::string_view what) {
    common::ProgramLog().Warning(std::string(what) + ", " + std::to_string(g_abandoned) + " hang now");
}

} // namespace

struct SourceThread::Shared {
    enum class State { kInUse, kEnding, kEnded, kAbandoned };

    explicit Shared(boost::asio::any_io_executor loop)
        : executor(std::move(loop)), patience(std::make_unique<boost::asio::steady_timer>(executor)) {}

    boost::asio::any_io_executor executor;
    std::string device;
    Endings before; // only used by the thread

    std::mutex mutex;
    std::condition_variable changed;
    State state = State::kInUse;
    std::deque<Step> steps;

    // Only used on the loop, and gone before it.
    std::unique_ptr<boost::asio::steady_timer> patience;
    Step onAbandoned;

    bool IsOver() const { return state == State::kEnded || state == State::kAbandoned; }
    void WaitUntilOver() {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return IsOver(); });
    }
};

// Never destroyed: a thread that was abandoned may outlive everything else.
SourceThread::Endings& SourceThread::DevicesThatEnd() {
    static auto* endings = new Endings;
    std::erase_if(*endings, [](const std::shared_ptr<Shared>& one) {
        const std::lock_guard lock(one->mutex);
        return one->IsOver();
    });
    return *endings;
}

SourceThread::SourceThread(boost::asio::any_io_executor executor, std::chrono::milliseconds patience,
                           std::string device)
    : m_patience(patience), m_shared(std::make_shared<Shared>(std::move(executor))) {
    m_shared->device = std::move(device);
    if (!m_shared->device.empty()) {
        const Endings& endings = DevicesThatEnd();
        std::copy_if(endings.begin(), endings.end(), std::back_inserter(m_shared->before),
                     [this](const auto& one) { return one->device == m_shared->device; });
    }
    std::thread(Run, m_shared).detach();
}

SourceThread::~SourceThread() {
    if (!m_shared->device.empty())
        DevicesThatEnd().push_back(m_shared);
    m_shared->patience->expires_after(m_patience);
    m_shared->patience->async_wait(
        [shared = m_shared](const boost::system::error_code&) { OnPatienceOver(*shared); });
    const std::lock_guard lock(m_shared->mutex);
    m_shared->state = Shared::State::kEnding;
    m_shared->changed.notify_all();
}

void SourceThread::Do(Step step) {
    const std::lock_guard lock(m_shared->mutex);
    m_shared->steps.push_back(std::move(step));
    m_shared->changed.notify_all();
}

void SourceThread::SetAbandonedNotify(Step notify) {
    m_shared->onAbandoned = std::move(notify);
}

unsigned SourceThread::Abandoned() {
    return g_abandoned;
}

void SourceThread::Run(const std::shared_ptr<Shared>& shared) {
    for (const auto& earlier : std::exchange(shared->before, {}))
        earlier->WaitUntilOver();
    RunSteps(*shared);
    const std::lock_guard lock(shared->mutex);
    if (shared->state == Shared::State::kAbandoned) {
        // The loop may be gone: from here on nothing of it is touched.
        --g_abandoned;
        LogAbandoned("a source that was abandoned has ended");
        return;
    }
    shared->state = Shared::State::kEnded;
    shared->changed.notify_all();
    // Under the lock, so that the timer's own end, if it comes now, finds the loop with this still to do.
    boost::asio::post(shared->executor, [shared] {
        if (shared->patience)
            shared->patience->cancel();
    });
}

void SourceThread::RunSteps(Shared& shared) {
    std::unique_lock lock(shared.mutex);
    for (;;) {
        shared.changed.wait(lock,
                            [&] { return !shared.steps.empty() || shared.state != Shared::State::kInUse; });
        if (shared.steps.empty())
            return;
        Step step = std::move(shared.steps.front());
        shared.steps.pop_front();
        lock.unlock();
        step();
        step = nullptr;
        lock.lock();
    }
}

// Also when the thread has ended in time.
void SourceThread::OnPatienceOver(Shared& shared) {
    shared.patience.reset();
    const Step onAbandoned = std::exchange(shared.onAbandoned, nullptr);
    {
        const std::lock_guard lock(shared.mutex);
        if (shared.state != Shared::State::kEnding)
            return;
        shared.state = Shared::State::kAbandoned;
        ++g_abandoned;
        shared.changed.notify_all();
    }
    LogAbandoned("a source does not end: abandoned");
    if (onAbandoned)
        onAbandoned();
}

} // namespace korvel::audioserver
