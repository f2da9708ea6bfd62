#pragma once

#include <memory>
#include <utility>

#include "base/Asio.h"

namespace korvel::controller {

// Posts work of its owner to the loop. What is still waiting when the owner goes is dropped.
class Poster {
public:
    explicit Poster(asio::io_context& loop) : m_loop(loop) {}
    // On the loop's thread.
    ~Poster() { *m_alive = false; }
    Poster(const Poster&) = delete;
    Poster& operator=(const Poster&) = delete;

    // May be called from any thread as long as the owner lives.
    template <class Body>
    void Post(Body body) const {
        asio::post(m_loop, [alive = m_alive, body = std::move(body)] {
            if (*alive)
                body();
        });
    }

private:
    asio::io_context& m_loop;
    const std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace korvel::controller
