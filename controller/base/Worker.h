#pragma once

#include "base/Poster.h"
// The order matters: Asio.h comes first, through Poster.h.
#include <boost/asio/thread_pool.hpp>

namespace korvel::controller {

// A thread beside the loop for what takes long, one piece of work after the other.
class Worker {
public:
    explicit Worker(asio::io_context& loop) : m_poster(loop) {}
    // On the loop's thread. Waits for the work that is being done; what comes after it is dropped.
    ~Worker() {
        m_thread.stop();
        m_thread.join();
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // Runs `work`, which must not throw, on the thread, and `then` with what it returned on the loop.
    template <class Work, class Then>
    void Run(Work work, Then then) {
        asio::post(m_thread, [this, work = std::move(work), then = std::move(then)] {
            m_poster.Post([then, result = work()] { then(result); });
        });
    }

private:
    const Poster m_poster;
    asio::thread_pool m_thread{1};
};

} // namespace korvel::controller
