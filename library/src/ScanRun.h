#pragma once

#include <chrono>
#include <functional>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <vector>

#include "FolderWalk.h"
#include "library/MediaDatabase.h"
#include "library/MediaScanner.h"
#include "library/ScanRecords.h"

namespace korvel::media {

// One scan from beginning to end.
class ScanRun {
public:
    ScanRun(MediaDatabase& database, FileReader& reader, MediaScanner::Callback callback,
            std::stop_token stop);

    // Returns the last report, which is for the caller to pass on. Throws when the database fails.
    ScanProgress Run(const std::vector<ScanFolder>& folders);

private:
    void LoadStamps();
    void List(const std::vector<ScanFolder>& folders);
    void ReadFiles();
    void ReadFile(const FoundFile& file);
    void KeepSong(const FileStamp& known, const FoundFile& file);
    void ReadSong(const FoundFile& file, const FileStamp* known);
    void LeaveOut(const FoundFile& file, const FileStamp* known);
    void NoteBroken(const FoundFile& file, const std::string& why, bool remember);
    void MarkPresence();
    void MarkAbsent(const FileStamp& song);
    void SetPresence(const FileStamp& song, Presence presence);
    bool HasSongs(const std::string& folder) const;
    void NoteAway(const AwayPlace& place);
    void Write(std::function<void()> change);
    void FlushWrites();
    void EnterPhase(ScanPhase phase);
    void ReportNowAndThen(const std::string& path);
    void Say(const std::string& message);

    MediaDatabase& m_database;
    FileReader& m_reader;
    MediaScanner::Callback m_callback;
    std::stop_token m_stop;
    FolderWalk m_walk;
    ScanProgress m_progress;
    std::chrono::steady_clock::time_point m_lastReport;
    std::uint32_t m_messages = 0;
    // By location.
    std::unordered_map<std::string, FileStamp> m_songs;
    std::unordered_map<std::string, FileStamp> m_broken;
    std::vector<std::string> m_songLocations; // sorted
    std::vector<std::function<void()>> m_writes;
};

} // namespace korvel::media
