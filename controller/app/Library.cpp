#include "app/Library.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "host/Ids.h"
#include "host/Refused.h"

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

Library::Library(asio::io_context& loop, const Config& config, EventBus& events, const common::Log& log)
    : m_poster(loop),
      m_events(events),
      m_log(log),
      m_database(DatabasePath(config.stateFolder)),
      m_scanner(DatabasePath(config.stateFolder), [this](const media::ScanProgress& progress) {
          // The scanner's thread: the loop takes it from here.
          m_poster.Post([this, progress] { OnProgress(progress); });
      }) {
    for (const std::string& folder : config.musicFolders) {
        const std::uint32_t device = kFirstStorageDevice + static_cast<std::uint32_t>(m_folders.size());
        m_folders.push_back({folder, device});
        m_devices.push_back(device);
    }
    SetUp(config);
}

// The configuration alone says which stations and line inputs there are.
void Library::SetUp(const Config& config) {
    std::vector<media::StationRecord> stations;
    for (const StationConfig& station : config.stations)
        stations.push_back({0, station.url, station.name, station.genre, station.image});
    m_database.SetStations(stations);
    for (const std::uint32_t albumId : m_database.SetInputs(config.inputs)) {
        const std::size_t index = m_inputs.size();
        m_inputs.push_back(
            {albumId, kFirstInputDevice + static_cast<std::uint32_t>(index), config.inputs[index]});
    }
}

const LineInput* Library::FindInput(std::uint32_t albumId) const {
    const auto found = std::ranges::find(m_inputs, albumId, &LineInput::albumId);
    return found == m_inputs.end() ? nullptr : &*found;
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
                   std::to_string(progress.changed) + " changed, " + std::to_string(progress.missing) +
                   " missing, " + std::to_string(progress.broken) + " not playable");
    }
    nlohmann::json event = ScanStatus();
    event["type"] = "scan";
    m_events.Publish(event);
}

std::uint32_t Library::ForgetMissing() {
    if (m_scanner.IsRunning())
        throw Refused(Refused::Why::Conflict, "a scan is running");
    const std::uint32_t forgotten = m_database.ForgetGoneSongs();
    m_progress.missing = m_database.CountSongs(media::Presence::Away);
    return forgotten;
}

nlohmann::json Library::ScanStatus() const {
    nlohmann::json away = nlohmann::json::array();
    for (const media::AwayPlace& place : m_progress.away)
        away.push_back({{"path", place.path}, {"reason", place.reason}});
    return {{"phase", m_scanned ? NameOf(m_progress.phase) : "idle"},
            {"running", m_scanner.IsRunning()},
            {"seen", m_progress.filesSeen},
            {"done", m_progress.filesDone},
            {"added", m_progress.added},
            {"changed", m_progress.changed},
            {"missing", m_progress.missing},
            {"away", std::move(away)},
            {"broken", m_progress.broken},
            {"skipped", m_progress.skipped},
            {"path", m_progress.currentPath},
            {"message", m_progress.message}};
}

} // namespace korvel::controller
