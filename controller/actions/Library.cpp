#include "actions/Library.h"

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "base/Refused.h"
#include "driver/Ids.h"
#include "library/DatabaseError.h"
#include "library/DatabaseFile.h"
#include "store/KeptAside.h"

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

// Why the library's file is of no use; "" when it can be used or is not there.
std::string FindDamage(const std::string& path, const common::Log& log) {
    namespace fs = std::filesystem;
    if (!fs::exists(path))
        return "";
    // A new file is never left so.
    if (fs::is_regular_file(path) && fs::file_size(path) == 0)
        return "it is empty";
    try {
        if (media::WasLeftOpen(path)) {
            log.Info("looking through " + path + ", which was not closed");
            if (const std::string damage = media::FindDamage(path); !damage.empty())
                return damage;
        }
        const media::MediaDatabase database(path);
        return "";
    } catch (const media::DatabaseError& error) {
        if (error.GetKind() != media::DatabaseError::Kind::Damaged)
            throw;
        return error.what();
    }
}

// The path of a file that can be used, or of none.
std::string CheckedPath(const std::string& stateFolder, StorageStatus& storage, const common::Log& log) {
    const std::string path = LibraryPath(stateFolder);
    if (const std::string damage = FindDamage(path, log); !damage.empty())
        storage.KeptAside(path, KeepAside(path, kDamaged, media::kDatabaseCompanions), damage);
    return path;
}

// Scanner and copier have connections of their own.
constexpr const char* kAlone =
    "no room was left on the disk when the library was opened: this waits for the next start";

struct CopyEnd {
    std::vector<std::string> copies;
    std::string failure;
};

// Not for the loop.
CopyEnd CopyNow(const LibraryCopies& copies) {
    CopyEnd end;
    try {
        copies.MakeWhenDue(std::time(nullptr));
    } catch (const std::exception& error) {
        end.failure = error.what();
    }
    end.copies = copies.List();
    return end;
}

} // namespace

Library::Library(asio::io_context& loop, const Config& config, EventBus& events, StorageStatus& storage,
                 const common::Log& log)
    : m_poster(loop),
      m_events(events),
      m_storage(storage),
      m_log(log),
      m_database(CheckedPath(config.stateFolder, storage, log)),
      m_copies(config.stateFolder),
      m_copyTimer(loop),
      m_copier(loop),
      m_scanner(LibraryPath(config.stateFolder), [this](const media::ScanProgress& progress) {
          // The scanner's thread: the loop takes it from here.
          m_poster.Post([this, progress] { OnProgress(progress); });
      }) {
    for (const std::string& folder : config.musicFolders) {
        const std::uint32_t device = kFirstStorageDevice + static_cast<std::uint32_t>(m_folders.size());
        m_folders.push_back({folder, device});
        m_devices.push_back(device);
    }
    m_database.SetChangeListener([this](const std::exception* failure) { OnChange(failure); });
    try {
        Change([&] { SetUp(config); });
    } catch (const media::DatabaseError&) {
        // It has been told; the house plays what is there.
    }
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

void Library::Change(const std::function<void()>& change) {
    try {
        change();
    } catch (const std::exception& failure) {
        OnChange(&failure);
        throw;
    }
    OnChange(nullptr);
}

void Library::OnChange(const std::exception* failure) {
    constexpr const char* kWhat = "library";
    if (!failure)
        return m_storage.Written(kWhat);
    const auto* error = dynamic_cast<const media::DatabaseError*>(failure);
    m_storage.NotWritten(kWhat, failure->what(),
                         error && error->GetKind() == media::DatabaseError::Kind::NoRoom);
}

const LineInput* Library::FindInput(std::uint32_t albumId) const {
    const auto found = std::ranges::find(m_inputs, albumId, &LineInput::albumId);
    return found == m_inputs.end() ? nullptr : &*found;
}

bool Library::StartScan() {
    if (m_database.IsAlone()) {
        media::ScanProgress failed;
        failed.phase = media::ScanPhase::Failed;
        failed.message = kAlone;
        OnProgress(failed);
        return true;
    }
    return m_scanner.Start(m_folders);
}

void Library::OnProgress(const media::ScanProgress& progress) {
    m_progress = progress;
    m_scanned = true;
    if (progress.phase == media::ScanPhase::Failed)
        m_log.Error("scan: " + progress.message);
    else if (!progress.message.empty())
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
    // Not before: until then the first scan of a new library has found nothing.
    if (IsOver(progress.phase) && progress.phase != media::ScanPhase::Cancelled)
        CopyWhenDue();
}

void Library::CopyWhenDue() {
    m_copier.Run(
        [copies = m_copies, alone = m_database.IsAlone()] {
            return alone ? CopyEnd{copies.List(), kAlone} : CopyNow(copies);
        },
        [this](const CopyEnd& end) { m_storage.SetCopies(end.copies, end.failure); });
    m_copyTimer.expires_after(kCopyCheckInterval);
    m_copyTimer.async_wait([this](boost::system::error_code error) {
        if (!error)
            CopyWhenDue();
    });
}

std::uint32_t Library::ForgetMissing() {
    if (m_scanner.IsRunning())
        throw Refused(Refused::Why::Conflict, "a scan is running");
    std::uint32_t forgotten = 0;
    Change([&] { forgotten = m_database.ForgetGoneSongs(); });
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
