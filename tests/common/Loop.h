// The loop of a test. Waits for conditions, never for time.
#pragma once

#include <chrono>
#include <functional>

#include "common/Asio.h"

namespace korvel::common {

class Loop {
public:
    asio::io_context loop{1};

    // Runs handlers until `condition` holds; false when that takes too long.
    bool RunUntil(const std::function<bool()>& condition) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        loop.restart();
        while (!condition()) {
            if (loop.run_one_until(deadline) == 0 && std::chrono::steady_clock::now() >= deadline)
                return false;
        }
        return true;
    }

private:
    asio::executor_work_guard<asio::io_context::executor_type> m_work{loop.get_executor()};
};

} // namespace korvel::common
