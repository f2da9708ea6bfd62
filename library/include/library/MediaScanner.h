#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace korvel::media {

class FileReader;

// A folder of music and the storage device that its songs belong to.
struct ScanFolder {
    std::string path;
    std::uint32_t deviceId = 0;
};

enum class ScanPhase {
    Listing,   // looking for files
    Reading,   // reading tags of new and changed files
    Finished,  // over: the database is up to date
    Cancelled, // over: what was read so far is stored, no song is marked missing
    Failed     // over: `message` says why
};

// A place that could not be looked into: its songs are not there now, which says nothing about whether they
// were deleted.
struct AwayPlace {
    std::string path;   // in ScanProgress UTF-8, for display
    std::string reason; // for display
};

// How far a scan has come.
struct ScanProgress {
    ScanPhase phase = ScanPhase::Listing;
    std::uint32_t filesSeen = 0; // music files found
    std::uint32_t filesDone = 0; // of those, dealt with
    std::uint32_t added = 0;
    std::uint32_t changed = 0;
    std::uint32_t missing = 0;   // songs whose files are gone or away; counted at the end
    std::uint32_t broken = 0;    // not playable: no song
    std::uint32_t skipped = 0;   // names that cannot be used, folders that cannot be read
    std::vector<AwayPlace> away; // MediaScanner::kMaxAwayPlaces at most
    std::string currentPath;     // UTF-8, for display
    std::string message;         // a line for the log, else ""
};

// Keeps the songs of a media database in step with folders of music files (MP3, FLAC, Ogg Vorbis, Opus, M4A,
// WAV).
//
// Files are looked at and read in another program (FileReader). A file that killed or stalled it counts as
// broken and is remembered by path, size and time with what happened; it is not read again until it changes.
//
// A scan runs on a thread of the scanner's own, over a database connection of its own. Files whose size and
// time have not changed are not read again; a song keeps its id as long as its file keeps its path. A file
// without audio is no song; one that was a song before keeps its record.
//
// No scan removes a song. One whose file is not found is marked: as gone or, when its folder could not be
// looked into or is empty (a disk that is not mounted), as away. It is as it was as soon as a scan finds its
// file again, and is removed by MediaDatabase::ForgetGoneSongs() alone.
class MediaScanner {
public:
    // Called on the scanner's thread: at each change of phase, with each message, and at most
    // kReportsPerSecond times a second in between. Must not throw, nor call Start() or destroy the scanner.
    using Callback = std::function<void(const ScanProgress&)>;
    static constexpr int kReportsPerSecond = 10;
    // Further files of a scan, and folders nested deeper, are left out with a message; further messages are
    // dropped.
    static constexpr std::uint32_t kMaxFiles = 500000;
    static constexpr int kMaxFolderDepth = 64;
    static constexpr std::uint32_t kMaxMessages = 200;
    // Further places that are away are not listed.
    static constexpr std::size_t kMaxAwayPlaces = 64;

    // `databasePath` must be a file: the scanner opens it a second time.
    MediaScanner(std::string databasePath, Callback callback);
    // With a reader of its own.
    MediaScanner(std::string databasePath, Callback callback, std::unique_ptr<FileReader> reader);
    // Cancels; does not wait for a file that hangs.
    ~MediaScanner();
    MediaScanner(const MediaScanner&) = delete;
    MediaScanner& operator=(const MediaScanner&) = delete;

    // Starts a scan of all folders of the house: songs of earlier scans that are in none of them are gone.
    // False when a scan is running.
    bool Start(std::vector<ScanFolder> folders);
    // Ends a running scan soon; does not wait.
    void Cancel();
    bool IsRunning() const { return m_running; }

private:
    std::string m_databasePath;
    Callback m_callback;
    std::unique_ptr<FileReader> m_reader;
    std::atomic<bool> m_running = false;
    std::jthread m_worker;
};

} // namespace korvel::media
