#include "ScanHarness.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <stdexcept>

using namespace korvel::media;
namespace fs = std::filesystem;

ScanHarness::ScanHarness()
    : music(folder.Make("music")),
      databasePath(folder / "media.db"),
      database(std::make_unique<MediaDatabase>(databasePath)) {}

ScanProgress ScanHarness::Scan(const std::vector<ScanFolder>& folders) {
    messages.clear();
    phases.clear();
    Signal over;
    ScanProgress last;
    const auto listen = [&](const ScanProgress& progress) {
        if (!progress.message.empty())
            messages.push_back(progress.message);
        if (phases.empty() || phases.back() != progress.phase)
            phases.push_back(progress.phase);
        if (progress.phase == ScanPhase::Listing || progress.phase == ScanPhase::Reading)
            return;
        last = progress;
        over.Set();
    };
    MediaScanner scanner(databasePath, listen, std::make_unique<FileReader>(program, patience));
    if (!scanner.Start(folders) || !over.Wait())
        throw std::runtime_error("the scan does not end");
    return last;
}

std::string ScanHarness::PutWav(const std::string& name, const std::map<std::string, std::string>& tags,
                                std::uint32_t milliseconds) {
    const std::string path = folder.Write("music/" + name, WavBytes(milliseconds));
    if (!tags.empty() && !Tag(path, tags))
        throw std::runtime_error("cannot tag " + path);
    return path;
}

void ScanHarness::Remove(const std::string& name) {
    fs::remove_all(fs::path(music) / name);
}

void ScanHarness::SetFileTime(const std::string& path, std::chrono::seconds time) {
    constexpr std::chrono::sys_days kStart = std::chrono::year(2020) / 1 / 1;
    fs::last_write_time(path, std::chrono::file_clock::from_sys(kStart + time));
}

std::optional<SongRecord> ScanHarness::SongAt(const std::string& name) {
    for (const SongRecord& song : database->ListSongs({}).items) {
        if (song.location == music + "/" + name)
            return song;
    }
    return std::nullopt;
}

std::uint32_t ScanHarness::IdAt(const std::string& name) {
    const auto song = SongAt(name);
    return song ? song->id : 0;
}

std::vector<std::string> ScanHarness::Locations() {
    std::vector<std::string> locations;
    for (const SongRecord& song : database->ListSongs({}).items)
        locations.push_back(song.location.substr(music.size() + 1));
    std::sort(locations.begin(), locations.end());
    return locations;
}

bool ScanHarness::HasMessage(const std::string& part) const {
    return std::any_of(messages.begin(), messages.end(),
                       [&](const std::string& text) { return text.find(part) != std::string::npos; });
}

void Signal::Set() {
    const std::lock_guard lock(m_mutex);
    m_set = true;
    m_changed.notify_all();
}

bool Signal::Wait() {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::minutes(1), [&] { return m_set; });
}
