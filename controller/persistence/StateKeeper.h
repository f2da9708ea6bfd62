#pragma once

#include "host/DriverPort.h"
#include "net/Asio.h"
#include "persistence/StateFile.h"

namespace korvel::controller {

// Fetches the driver's state when it may have changed, and keeps it in a file.
class StateKeeper {
public:
    StateKeeper(asio::io_context& loop, DriverPort& driver, StateFile& file)
        : m_loop(loop), m_driver(driver), m_file(file) {}

    // After the present call, once for all requests that come until then.
    void SaveSoon();
    void SaveNow();

private:
    asio::io_context& m_loop;
    DriverPort& m_driver;
    StateFile& m_file;
    bool m_planned = false;
};

} // namespace korvel::controller
