#include "ScanRun.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "SongTags.h"
#include "library/Utf8.h"

namespace korvel::media {

namespace {

// Tags are read before the transaction begins and few changes make one: whoever else writes hardly waits.
constexpr std::size_t kWritesPerTransaction = 100;
constexpr std::chrono::milliseconds kReportInterval{1000 / MediaScanner::kReportsPerSecond};
constexpr std::size_t kMaxMessageLength = 5000;

bool IsUnchanged(const FileStamp& stamp, const FoundFile& file) {
    return stamp.fileSize == file.fileSize && stamp.fileTimeNs == file.fileTimeNs;
}

const FileStamp* Find(const std::unordered_map<std::string, FileStamp>& stamps, const std::string& location) {
    const auto found = stamps.find(location);
    return found == stamps.end() ? nullptr : &found->second;
}

} // namespace

ScanRun::ScanRun(MediaDatabase& database, FileReader& reader, MediaScanner::Callback callback,
                 std::stop_token stop)
    : m_database(database),
      m_reader(reader),
      m_callback(std::move(callback)),
      m_stop(stop),
      m_walk(reader, stop,
             {[this](const std::string& path) {
                  ++m_progress.filesSeen;
                  ReportNowAndThen(path);
              },
              [this](const std::string& why) {
                  ++m_progress.skipped;
                  Say(why);
              },
              [this](const AwayPlace& place) { NoteAway(place); },
              [this](const std::string& folder) { return HasSongs(folder); }}) {}

ScanProgress ScanRun::Run(const std::vector<ScanFolder>& folders) {
    EnterPhase(ScanPhase::Listing);
    LoadStamps();
    List(folders);
    EnterPhase(ScanPhase::Reading);
    ReadFiles();
    if (!m_stop.stop_requested())
        MarkPresence();
    FlushWrites();
    m_database.RefreshAlbums();
    m_progress.phase = m_stop.stop_requested() ? ScanPhase::Cancelled : ScanPhase::Finished;
    m_progress.currentPath.clear();
    return m_progress;
}

void ScanRun::LoadStamps() {
    for (FileStamp& stamp : m_database.ListScannedFiles()) {
        m_songLocations.push_back(stamp.location);
        m_songs.emplace(stamp.location, stamp);
    }
    std::sort(m_songLocations.begin(), m_songLocations.end());
    for (FileStamp& stamp : m_database.ListBrokenFiles())
        m_broken.emplace(stamp.location, stamp);
}

void ScanRun::List(const std::vector<ScanFolder>& folders) {
    for (const ScanFolder& folder : folders) {
        if (m_stop.stop_requested())
            return;
        m_walk.Walk(folder);
    }
}

void ScanRun::ReadFiles() {
    for (const FoundFile& file : m_walk.GetFiles()) {
        if (m_stop.stop_requested())
            return;
        ReportNowAndThen(file.location);
        ReadFile(file);
        ++m_progress.filesDone;
    }
}

void ScanRun::ReadFile(const FoundFile& file) {
    const FileStamp* known = Find(m_songs, file.location);
    if (known && IsUnchanged(*known, file))
        return KeepSong(*known, file);
    const FileStamp* broken = Find(m_broken, file.location);
    if (broken && IsUnchanged(*broken, file))
        return NoteBroken(file, broken->reason, false);
    if (m_walk.Hangs(file.fileSystem))
        return LeaveOut(file, known);
    ReadSong(file, known);
}

void ScanRun::KeepSong(const FileStamp& known, const FoundFile& file) {
    const std::uint32_t id = known.songId;
    SetPresence(known, Presence::Here);
    if (known.deviceId != file.deviceId)
        Write([this, id, device = file.deviceId] { m_database.MoveSongToDevice(id, device); });
    if (!known.hasImage && file.folderHasPicture)
        Write([this, id] { m_database.SetSongHasImage(id, true); });
}

void ScanRun::ReadSong(const FoundFile& file, const FileStamp* known) {
    using Outcome = FileReader::Outcome;
    const auto answer = m_reader.ReadTags(file.location);
    if (answer.outcome == Outcome::Cancelled)
        return;
    if (answer.outcome == Outcome::Stalled)
        m_walk.NoteStall(file.fileSystem);
    if (answer.outcome != Outcome::Done) {
        // A song that turned broken may be in the middle of being copied anew: it is looked at again next
        // time. What killed or stalled the reader would do so again.
        const bool harmful = answer.outcome == Outcome::Died || answer.outcome == Outcome::Stalled;
        return NoteBroken(file, answer.why, harmful || (answer.outcome == Outcome::NoAudio && !known));
    }
    ScannedSong scanned;
    scanned.song.id = known ? known->songId : 0;
    scanned.song.location = file.location;
    scanned.song.deviceId = file.deviceId;
    scanned.song.fileSize = file.fileSize;
    scanned.song.fileTimeNs = file.fileTimeNs;
    scanned.hasImage = file.folderHasPicture;
    TakeTags(answer.value, scanned);
    ++(known ? m_progress.changed : m_progress.added);
    Write([this, scanned = std::move(scanned)] { m_database.PutScannedSong(scanned); });
}

void ScanRun::LeaveOut(const FoundFile& file, const FileStamp* known) {
    ++m_progress.skipped;
    Say("Cannot read " + file.location + ": its disk does not answer");
    if (known)
        SetPresence(*known, Presence::Away);
}

void ScanRun::NoteBroken(const FoundFile& file, const std::string& why, bool remember) {
    ++m_progress.broken;
    // Files of earlier versions were remembered without a reason.
    Say("Cannot play " + file.location + ": " + (why.empty() ? "no audio can be read from it" : why));
    if (!remember)
        return;
    FileStamp stamp;
    stamp.location = file.location;
    stamp.fileSize = file.fileSize;
    stamp.fileTimeNs = file.fileTimeNs;
    stamp.reason = CleanText(why);
    Write([this, stamp = std::move(stamp)] { m_database.PutBrokenFile(stamp); });
}

void ScanRun::MarkPresence() {
    std::unordered_set<std::string_view> present;
    for (const FoundFile& file : m_walk.GetFiles())
        present.insert(file.location);
    for (const auto& [location, stamp] : m_songs) {
        if (!present.contains(location))
            MarkAbsent(stamp);
    }
    for (const auto& [location, stamp] : m_broken) {
        if (!present.contains(location) && !m_walk.IsFull() && !m_walk.IsAway(location))
            Write([this, location = location] { m_database.ForgetBrokenFile(location); });
    }
}

void ScanRun::MarkAbsent(const FileStamp& song) {
    const bool away = m_walk.IsAway(song.location);
    // One of the files that were too many may well be there.
    if (m_walk.IsFull() && !away)
        return;
    ++m_progress.missing;
    SetPresence(song, away ? Presence::Away : Presence::Gone);
}

void ScanRun::SetPresence(const FileStamp& song, Presence presence) {
    if (song.presence != presence)
        Write([this, id = song.songId, presence] { m_database.SetSongPresence(id, presence); });
}

bool ScanRun::HasSongs(const std::string& folder) const {
    const std::string below = folder + "/";
    const auto first = std::lower_bound(m_songLocations.begin(), m_songLocations.end(), below);
    return first != m_songLocations.end() && first->starts_with(below);
}

void ScanRun::NoteAway(const AwayPlace& place) {
    if (m_progress.away.size() < MediaScanner::kMaxAwayPlaces)
        m_progress.away.push_back({CleanText(place.path), CleanText(place.reason)});
}

void ScanRun::Write(std::function<void()> change) {
    m_writes.push_back(std::move(change));
    if (m_writes.size() >= kWritesPerTransaction)
        FlushWrites();
}

void ScanRun::FlushWrites() {
    if (m_writes.empty())
        return;
    m_database.InTransaction([&] {
        for (const auto& change : m_writes)
            change();
    });
    m_writes.clear();
}

void ScanRun::EnterPhase(ScanPhase phase) {
    m_progress.phase = phase;
    m_progress.currentPath.clear();
    m_lastReport = std::chrono::steady_clock::now();
    m_callback(m_progress);
}

void ScanRun::ReportNowAndThen(const std::string& path) {
    const auto now = std::chrono::steady_clock::now();
    if (now - m_lastReport < kReportInterval)
        return;
    m_lastReport = now;
    m_progress.currentPath = CleanText(path);
    m_callback(m_progress);
}

void ScanRun::Say(const std::string& message) {
    if (m_messages == MediaScanner::kMaxMessages)
        return;
    ++m_messages;
    ScanProgress report = m_progress;
    report.message = m_messages < MediaScanner::kMaxMessages ? CleanText(message, kMaxMessageLength)
                                                             : "Further messages of this scan are left out";
    m_callback(report);
}

} // namespace korvel::media
