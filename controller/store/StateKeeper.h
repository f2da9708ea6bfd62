#pragma once

#include <chrono>
#include <string>

#include "base/Poster.h"
#include "driver/DriverPort.h"
#include "store/StateFile.h"

namespace korvel::controller {

// Fetches the driver's state when it may have changed, and keeps it in a file. A state that could not be
// written is told once, and tried again from time to time.
class StateKeeper {
public:
    static constexpr std::chrono::seconds kRetryInterval{30};

    StateKeeper(asio::io_context& loop, DriverPort& driver, StateFile& file, StorageStatus& storage,
                std::chrono::milliseconds retryInterval = kRetryInterval)
        : m_poster(loop),
          m_retry(loop),
          m_retryInterval(retryInterval),
          m_driver(driver),
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
    DriverPort& m_driver;
    StateFile& m_file;
    StorageStatus& m_storage;
    std::string m_tried; // the last text that was to be written
    bool m_planned = false;
};

} // namespace korvel::controller
