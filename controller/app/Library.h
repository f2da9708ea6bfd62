#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "common/Log.h"
#include "config/Config.h"
#include "host/EventBus.h"
#include "media/MediaDatabase.h"
#include "media/MediaScanner.h"
#include "net/Poster.h"
#include "rooms/LineInput.h"

namespace korvel::controller {

// The media database and the scanner that keeps it in step with the music folders. The progress of a scan is
// an event
// {"type":"scan",...}.
class Library {
public:
    // Opens the database in the state folder; throws std::runtime_error when that fails.
    Library(asio::io_context& loop, const Config& config, EventBus& events, const common::Log& log);

    media::MediaDatabase& Database() { return m_database; }
    // The storage devices of the music folders.
    const std::vector<std::uint32_t>& StorageDevices() const { return m_devices; }

    const std::vector<LineInput>& Inputs() const { return m_inputs; }
    // Null for an album that is none.
    const LineInput* FindInput(std::uint32_t albumId) const;

    // False when a scan is running already.
    bool StartScan();
    // Ends a running scan soon.
    void CancelScan() { m_scanner.Cancel(); }
    // Removes the songs whose files are gone; returns how many. Those in places that are only away are kept.
    // Throws Refused while a scan runs, which would go on with them.
    std::uint32_t ForgetMissing();
    // {"phase": "idle" or a phase, "seen", "done", ...}
    nlohmann::json ScanStatus() const;

private:
    void SetUp(const Config& config);
    void OnProgress(const media::ScanProgress& progress);

    Poster m_poster;
    EventBus& m_events;
    const common::Log& m_log;
    std::vector<media::ScanFolder> m_folders;
    std::vector<std::uint32_t> m_devices;
    media::MediaDatabase m_database;
    std::vector<LineInput> m_inputs;
    media::ScanProgress m_progress;
    bool m_scanned = false;
    media::MediaScanner m_scanner; // last: its thread ends before the rest goes
};

} // namespace korvel::controller
