#include "media/MediaScanner.h"

#include <exception>
#include <utility>

#include "ScanRun.h"
#include "media/MediaDatabase.h"

namespace korvel::media {

namespace {

ScanProgress RunScan(const std::string& databasePath, const std::vector<ScanFolder>& folders,
                     const MediaScanner::Callback& callback, std::stop_token stop) {
    try {
        MediaDatabase database(databasePath);
        return ScanRun(database, callback, std::move(stop)).Run(folders);
    } catch (const std::exception& error) {
        ScanProgress failed;
        failed.phase = ScanPhase::Failed;
        failed.message = error.what();
        return failed;
    }
}

} // namespace

MediaScanner::MediaScanner(std::string databasePath, Callback callback)
    : m_databasePath(std::move(databasePath)), m_callback(std::move(callback)) {}

MediaScanner::~MediaScanner() = default;

bool MediaScanner::Start(std::vector<ScanFolder> folders) {
    if (m_running.exchange(true))
        return false;
    m_worker = std::jthread([this, folders = std::move(folders)](std::stop_token stop) {
        const ScanProgress last = RunScan(m_databasePath, folders, m_callback, std::move(stop));
        // First, so that whoever hears of the end can start the next scan at once.
        m_running = false;
        m_callback(last);
    });
    return true;
}

void MediaScanner::Cancel() {
    m_worker.request_stop();
}

} // namespace korvel::media
