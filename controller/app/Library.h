#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "host/EventBus.h"
#include "host/Log.h"
#include "media/MediaDatabase.h"
#include "media/MediaScanner.h"
#include "net/Poster.h"

namespace korvel::controller {

// The media database and the scanner that keeps it in step with the music folders. The progress of a scan is
// an event
// {"type":"scan",...}.
class Library {
public:
    // Opens the database in the state folder; throws std::runtime_error when that fails.
    Library(asio::io_context& loop, const std::string& stateFolder,
            const std::vector<std::string>& musicFolders, EventBus& events, const Log& log);

    media::MediaDatabase& Database() { return m_database; }
    // The storage devices of the music folders.
    const std::vector<std::uint32_t>& StorageDevices() const { return m_devices; }

    // False when a scan is running already.
    bool StartScan();
    // Ends a running scan soon.
    void CancelScan() { m_scanner.Cancel(); }
    // {"phase": "idle" or a phase, "seen", "done", ...}
    nlohmann::json ScanStatus() const;

private:
    void OnProgress(const media::ScanProgress& progress);

    Poster m_poster;
    EventBus& m_events;
    const Log& m_log;
    std::vector<media::ScanFolder> m_folders;
    std::vector<std::uint32_t> m_devices;
    media::MediaDatabase m_database;
    media::ScanProgress m_progress;
    bool m_scanned = false;
    media::MediaScanner m_scanner; // last: its thread ends before the rest goes
};

} // namespace korvel::controller
