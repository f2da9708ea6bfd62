#include "library/MediaScanner.h"

#include <exception>
#include <utility>

#include "ScanRun.h"
#include "library/FileReader.h"
#include "library/MediaDatabase.h"

namespace korvel::media {

namespace {

ScanProgress RunScan(const std::string& databasePath, FileReader& reader,
                     const std::vector<ScanFolder>& folders, const MediaScanner::Callback& callback,
                     std::stop_token stop) {
    try {
        MediaDatabase database(databasePath);
        reader.Resume();
        const std::stop_callback cancel(stop, [&] { reader.Cancel(); });
        return ScanRun(database, reader, callback, stop).Run(folders);
    } catch (const std::exception& error) {
        ScanProgress failed;
        failed.phase = ScanPhase::Failed;
        failed.message = error.what();
        return failed;
    }
}

} // namespace

MediaScanner::MediaScanner(std::string databasePath, Callback callback)
    : MediaScanner(std::move(databasePath), std::move(callback), std::make_unique<FileReader>()) {}

MediaScanner::MediaScanner(std::string databasePath, Callback callback, std::unique_ptr<FileReader> reader)
    : m_databasePath(std::move(databasePath)), m_callback(std::move(callback)), m_reader(std::move(reader)) {}

MediaScanner::~MediaScanner() = default;

bool MediaScanner::Start(std::vector<ScanFolder> folders) {
    if (m_running.exchange(true))
        return false;
    m_worker = std::jthread([this, folders = std::move(folders)](std::stop_token stop) {
        const ScanProgress last = RunScan(m_databasePath, *m_reader, folders, m_callback, std::move(stop));
        m_reader->Rest();
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
