#include "app/Library.h"

#include <nlohmann/json.hpp>

#include "host/Ids.h"

namespace korvel::controller {
namespace {

const char* NameOf(media::ScanPhase phase) {
    switch (phase) {
        case media::ScanPhase::Listing:
            return "listing";
        case media::ScanPhase::Reading:
            return "reading";
        case media::ScanPhase::Finished:
            return "finished";
        case media::ScanPhase::Cancelled:
            return "cancelled";
        case media::ScanPhase::Failed:
            return "failed";
    }
    return "";
}

bool IsOver(media::ScanPhase phase) {
    return phase != media::ScanPhase::Listing && phase != media::ScanPhase::Reading;
}

std::string DatabasePath(const std::string& stateFolder) {
    return stateFolder + "/media.db";
}

} // namespace

Library::Library(asio::io_context& loop, const std::string& stateFolder,
                 const std::vector<std::string>& musicFolders, EventBus& events, const Log& log)
    : m_poster(loop),
      m_events(events),
      m_log(log),
      m_database(DatabasePath(stateFolder)),
      m_scanner(DatabasePath(stateFolder), [this](const media::ScanProgress& progress) {
          // The scanner's thread: the loop takes it from here.
          m_poster.Post([this, progress] { OnProgress(progress); });
      }) {
    for (const std::string& folder : musicFolders) {
        const std::uint32_t device = kFirstStorageDevice + static_cast<std::uint32_t>(m_folders.size());
        m_folders.push_back({folder, device});
        m_devices.push_back(device);
    }
}

bool Library::StartScan() {
    return m_scanner.Start(m_folders);
}

void Library::OnProgress(const media::ScanProgress& progress) {
    m_progress = progress;
    m_scanned = true;
    if (!progress.message.empty())
        m_log.Info("scan: " + progress.message);
    if (IsOver(progress.phase)) {
        m_log.Info(std::string("scan ") + NameOf(progress.phase) + ": " + std::to_string(progress.filesSeen) +
                   " files, " + std::to_string(progress.added) + " added, " +
                   std::to_string(progress.changed) + " changed, " + std::to_string(progress.removed) +
                   " removed, " + std::to_string(progress.broken) + " not playable");
    }
    nlohmann::json event = ScanStatus();
    event["type"] = "scan";
    m_events.Publish(event);
}

nlohmann::json Library::ScanStatus() const {
    return {{"phase", m_scanned ? NameOf(m_progress.phase) : "idle"},
            {"running", m_scanner.IsRunning()},
            {"seen", m_progress.filesSeen},
            {"done", m_progress.filesDone},
            {"added", m_progress.added},
            {"changed", m_progress.changed},
            {"removed", m_progress.removed},
            {"broken", m_progress.broken},
            {"skipped", m_progress.skipped},
            {"path", m_progress.currentPath},
            {"message", m_progress.message}};
}

} // namespace korvel::controller
