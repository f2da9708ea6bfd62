#pragma once

#include <memory>
#include <string>

#include "driver/DriverPort.h"
#include "links/CatalogLink.h"
#include "platform/rhapsody/RhapsodyClient.h"

namespace korvel::controller {

// Makes clients of the streaming service: each a connection of its own to the catalogue, which calls back
// through the driver's port.
class RhapsodyService final : public KVRhapsodyClient::IRhapsodyClientFactory {
public:
    // `address` (HOST:PORT), when not empty, is used in place of the one that a driver connects to. `loop`,
    // `log` and `driver` must outlive the clients.
    RhapsodyService(asio::io_context& loop, const common::Log& log, DriverPort& driver, std::string address,
                    CatalogTiming timing = {});

    std::unique_ptr<KVRhapsodyClient::RhapsodyClient> CreateClient(
        KVRhapsodyClient::RhapsodyBranding branding, ITimerManager& timers,
        IRhapsodyCallback* callback) override;

private:
    asio::io_context& m_loop;
    const common::Log& m_log;
    DriverPort& m_driver;
    const std::string m_address;
    const CatalogTiming m_timing;
};

} // namespace korvel::controller
