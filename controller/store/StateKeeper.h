#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "base/Poster.h"
#include "store/StateFile.h"

namespace korvel::controller {

// Fetches a state when it may have changed, and keeps it in a file. A state that could not be
// written is told once, and tried again from time to time.
class StateKeeper {
public:
    static constexpr std::chrono::seconds kRetryInterval{30};

    // The text of the state as it is now; none when there is nothing to keep.
    using Fetch = std::function<std::optional<std::string>()>;

    StateKeeper(asio::io_context& loop, Fetch fetch, StateFile& file, StorageStatus& storage,
                std::chrono::milliseconds retryInterval = kRetryInterval)
        : m_poster(loop),
          m_retry(loop),
          m_retryInterval(retryInterval),
          m_fetch(std::move(fetch)),
          m_file(file),
          m_storage(storage) {}

    // After the present call, once for all requests that come until then.
    void SaveSoon();
    void SaveNow();

private:
    void RetryLater();

    Poster m_poster;
    asio::steady_timer m_retry;
    const std::chrono::milliseconds m_retryInterval;
    const Fetch m_fetch;
    StateFile& m_file;
    StorageStatus& m_storage;
    std::string m_tried; // the last text that was to be written
    bool m_planned = false;
};

} // namespace korvel::controller
