#pragma once

#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "AudioFiles.h"
#include "TempFolder.h"
#include "library/FileReader.h"
#include "library/MediaDatabase.h"
#include "library/MediaScanner.h"

// A music folder, a database beside it, and what a scan reported.
class ScanHarness {
public:
    static constexpr std::uint32_t kDevice = 100100;

    ScanHarness();

    // Scans and returns the last report. The messages of the scan are in `messages` afterwards.
    korvel::media::ScanProgress Scan() { return Scan({{music, kDevice}}); }
    korvel::media::ScanProgress Scan(const std::vector<korvel::media::ScanFolder>& folders);

    // Puts a WAV file into the music folder and returns its path.
    std::string PutWav(const std::string& name, const std::map<std::string, std::string>& tags = {},
                       std::uint32_t milliseconds = 100);
    void Remove(const std::string& name);
    // Counted from a fixed day in the past.
    void SetFileTime(const std::string& path, std::chrono::seconds time);

    std::optional<korvel::media::SongRecord> SongAt(const std::string& name);
    std::uint32_t IdAt(const std::string& name);
    std::vector<std::string> Locations(); // relative to the music folder, sorted
    bool HasMessage(const std::string& part) const;

    TempFolder folder;
    std::string music;
    std::string databasePath;
    std::unique_ptr<korvel::media::MediaDatabase> database;
    // The reader of the next scans.
    std::string program = korvel::media::FileReader::DefaultProgram();
    std::chrono::milliseconds patience = korvel::media::FileReader::kPatience;
    std::vector<std::string> messages;
    std::vector<korvel::media::ScanPhase> phases; // each once, in order
};

// Waits for what another thread makes true.
class Signal {
public:
    void Set();
    // False when it was not set for a minute.
    bool Wait();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_set = false;
};
