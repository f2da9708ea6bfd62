#include "audioserver/SourceThread.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <condition_variable>
#include <deque>
#include <iterator>
#include <mutex>
#include <numeric>
#include <thread>
#include <utility>

#include "common/Log.h"

namespace korvel::audioserver {
namespace {

struct Count {
    std::atomic<unsigned> ending = 0; // also those that are abandoned
    std::atomic<unsigned> abandoned = 0;
};

std::array<Count, 3> g_counts;

Count& CountOf(SourceThread::Kind kind) {
    return g_counts.at(static_cast<std::size_t>(kind));
}

void LogAbandoned(std::string_view what) {
    const unsigned hang = std::accumulate(g_counts.begin(), g_counts.end(), 0U,
                                          [](unsigned sum, const Count& one) { return sum + one.abandoned; });
    common::ProgramLog().Warning("a source " + std::string(what) + ", " + std::to_string(hang) + " hang now");
}

} // namespace

struct SourceThread::Shared {
    enum class State { kInUse, kEnding, kEnded, kAbandoned };

    Shared(boost::asio::any_io_executor loop, Kind what)
        : executor(std::move(loop)),
          kind(what),
          patience(std::make_unique<boost::asio::steady_timer>(executor)) {}

    boost::asio::any_io_executor executor;
    const Kind kind;
    std::string device;
    Endings before; // only used by the thread

    std::mutex mutex;
    std::condition_variable changed;
    State state = State::kInUse;
    std::deque<Step> steps;

    // Only used on the loop, and gone before it.
    std::unique_ptr<boost::asio::steady_timer> patience;
    EndNotify onEnd;

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
                           Kind kind, std::string device)
    : m_patience(patience), m_shared(std::make_shared<Shared>(std::move(executor), kind)) {
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
    ++CountOf(m_shared->kind).ending;
    m_shared->changed.notify_all();
}

void SourceThread::Do(Step step) {
    const std::lock_guard lock(m_shared->mutex);
    m_shared->steps.push_back(std::move(step));
    m_shared->changed.notify_all();
}

void SourceThread::SetEndNotify(EndNotify notify) {
    m_shared->onEnd = std::move(notify);
}

bool SourceThread::HasRoom(Kind kind) {
    const Count& count = CountOf(kind);
    return count.abandoned < kMaxAbandoned && count.ending < kMaxEnding;
}

void SourceThread::Run(const std::shared_ptr<Shared>& shared) {
    for (const auto& earlier : std::exchange(shared->before, {}))
        earlier->WaitUntilOver();
    RunSteps(*shared);
    const std::lock_guard lock(shared->mutex);
    Count& count = CountOf(shared->kind);
    --count.ending;
    if (shared->state == Shared::State::kAbandoned) {
        // The loop may be gone: from here on nothing of it is touched.
        --count.abandoned;
        LogAbandoned("that was abandoned has ended");
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
    const EndNotify onEnd = std::exchange(shared.onEnd, nullptr);
    bool abandoned = false;
    {
        const std::lock_guard lock(shared.mutex);
        abandoned = shared.state == Shared::State::kEnding;
        if (abandoned) {
            shared.state = Shared::State::kAbandoned;
            ++CountOf(shared.kind).abandoned;
            shared.changed.notify_all();
        }
    }
    if (abandoned)
        LogAbandoned("does not end: abandoned");
    if (onEnd)
        onEnd(abandoned);
}

} // namespace korvel::audioserver
