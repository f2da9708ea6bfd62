#pragma once

#include "host/DriverPort.h"
#include "net/Poster.h"
#include "persistence/StateFile.h"

namespace korvel::controller {

// Fetches the driver's state when it may have changed, and keeps it in a file.
class StateKeeper {
public:
    StateKeeper(asio::io_context& loop, DriverPort& driver, StateFile& file)
        : m_poster(loop), m_driver(driver), m_file(file) {}

    // After the present call, once for all requests that come until then.
    void SaveSoon();
    void SaveNow();

private:
    Poster m_poster;
    DriverPort& m_driver;
    StateFile& m_file;
    bool m_planned = false;
};

} // namespace korvel::controller
