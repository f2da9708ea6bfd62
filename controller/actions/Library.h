#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "actions/LibraryCopies.h"
#include "base/EventBus.h"
#include "base/Worker.h"
#include "common/Log.h"
#include "config/Config.h"
#include "driver/rooms/LineInput.h"
#include "library/MediaDatabase.h"
#include "library/MediaScanner.h"
#include "store/StorageStatus.h"

namespace korvel::controller {

// The media database, the scanner that keeps it in step with the music folders, and its daily copies. The
// progress of a scan is an event {"type":"scan",...}.
class Library {
public:
    // Opens the database in the state folder. One that is damaged is kept aside, and a new one is made.
    // Throws std::runtime_error when it cannot be opened for another reason.
    Library(asio::io_context& loop, const Config& config, EventBus& events, StorageStatus& storage,
            const common::Log& log);

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
    // Throws Refused while a scan runs, which would go on with them, and media::DatabaseError.
    std::uint32_t ForgetMissing();
    // {"phase": "idle" or a phase, "seen", "done", ...}
    nlohmann::json ScanStatus() const;

private:
    static constexpr std::chrono::hours kCopyCheckInterval{1};

    void SetUp(const Config& config);
    // Runs a change of the database and tells how it ended; rethrows.
    void Change(const std::function<void()>& change);
    void OnChange(const std::exception* failure);
    void OnProgress(const media::ScanProgress& progress);
    void CopyWhenDue();

    Poster m_poster;
    EventBus& m_events;
    StorageStatus& m_storage;
    const common::Log& m_log;
    std::vector<media::ScanFolder> m_folders;
    std::vector<std::uint32_t> m_devices;
    media::MediaDatabase m_database;
    std::vector<LineInput> m_inputs;
    media::ScanProgress m_progress;
    bool m_scanned = false;
    const LibraryCopies m_copies;
    asio::steady_timer m_copyTimer;
    Worker m_copier;
    media::MediaScanner m_scanner; // last: its thread ends before the rest goes
};

} // namespace korvel::controller
