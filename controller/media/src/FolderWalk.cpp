#include "FolderWalk.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "FolderPicture.h"
#include "common/Text.h"

namespace korvel::media {

namespace {

namespace fs = std::filesystem;

constexpr std::array kExtensions = {".mp3", ".flac", ".ogg", ".oga", ".opus", ".m4a", ".wav"};

bool IsMusicFile(const std::string& name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos)
        return false;
    const std::string extension = LowerAscii(name.substr(dot));
    return std::find(kExtensions.begin(), kExtensions.end(), extension) != kExtensions.end();
}

// A line to the audio server ends at a line end and a path in it at a double quote.
bool FitsIntoLine(const std::string& name) {
    return !common::HasControl(name) && name.find('"') == std::string::npos;
}

std::int64_t TimeNs(const struct stat& status) {
    return static_cast<std::int64_t>(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec;
}

std::string Join(const std::string& folder, const std::string& name) {
    return folder == "/" ? folder + name : folder + "/" + name;
}

constexpr const char* kEmpty = "it is empty, as when a disk is not mounted";

std::string NormalPath(const std::string& path) {
    std::error_code error;
    std::string normal = fs::absolute(path, error).lexically_normal().native();
    if (error || normal.empty())
        return path;
    while (normal.size() > 1 && normal.back() == '/')
        normal.pop_back();
    return normal;
}

} // namespace

FolderWalk::FolderWalk(std::stop_token stop, Listener listener)
    : m_stop(std::move(stop)), m_listener(std::move(listener)) {}

void FolderWalk::Walk(const ScanFolder& folder) {
    m_deviceId = folder.deviceId;
    const std::string root = NormalPath(folder.path);
    struct stat status {};
    if (::stat(root.c_str(), &status) != 0)
        return GiveUp(root, std::strerror(errno));
    if (!S_ISDIR(status.st_mode))
        return GiveUp(root, "it is not a folder");
    if (!FitsIntoLine(root))
        return GiveUp(root, "its name has a control character or a double quote");
    std::error_code error;
    if (fs::is_empty(root, error) && !error)
        return GiveUp(root, kEmpty);
    Enter(root, 0);
    for (std::size_t i = 0; i < m_links.size() && !m_stop.stop_requested(); ++i) {
        const Link link = m_links[i]; // the list grows meanwhile
        FollowLink(link.path, link.depth, link.folderHasPicture);
    }
    m_links.clear();
}

bool FolderWalk::IsAway(const std::string& location) const {
    return std::any_of(m_away.begin(), m_away.end(), [&](const std::string& path) {
        return location.starts_with(path) &&
               (location.size() == path.size() || path == "/" || location[path.size()] == '/');
    });
}

void FolderWalk::Enter(const std::string& path, int depth) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return GiveUp(path, std::strerror(errno));
    if (!m_seenFolders.emplace(status.st_dev, status.st_ino).second)
        return;
    if (depth > MediaScanner::kMaxFolderDepth)
        return GiveUp(path, "it is nested too deep");
    Names names;
    if (!ListNames(path, names))
        return;
    if (names.empty && m_listener.hasSongs(path))
        return GiveUp(path, kEmpty);
    for (const std::string& name : names.files)
        AddFile(Join(path, name), false, names.hasPicture);
    for (const std::string& name : names.links)
        m_links.push_back({Join(path, name), depth + 1, names.hasPicture});
    for (const std::string& name : names.folders) {
        if (m_stop.stop_requested())
            return;
        Enter(Join(path, name), depth + 1);
    }
}

bool FolderWalk::ListNames(const std::string& path, Names& names) {
    std::error_code error;
    fs::directory_iterator entry(path, error);
    while (!error && entry != fs::directory_iterator() && !m_stop.stop_requested()) {
        SortOut(path, entry->path().filename().native(), names);
        entry.increment(error);
    }
    if (error) {
        GiveUp(path, error.message());
        return false;
    }
    // In the order of their names, so that new songs get their ids in it.
    for (auto* list : {&names.files, &names.folders, &names.links})
        std::sort(list->begin(), list->end());
    return true;
}

void FolderWalk::SortOut(const std::string& folder, const std::string& name, Names& names) {
    names.empty = false;
    // Hidden files: among them the shadows that some systems leave beside every file.
    if (name.starts_with('.'))
        return;
    names.hasPicture = names.hasPicture || FolderPictureRank(name) >= 0;
    const std::string path = Join(folder, name);
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        if (errno != ENOENT)
            GiveUp(path, std::strerror(errno));
        return;
    }
    const bool link = S_ISLNK(status.st_mode);
    const bool isFolder = S_ISDIR(status.st_mode);
    const bool music = S_ISREG(status.st_mode) && IsMusicFile(name);
    if (!link && !isFolder && !music)
        return;
    if (!FitsIntoLine(name)) {
        m_listener.skipped(path + " is left out: its name has a control character or a double quote");
        return;
    }
    (link ? names.links : isFolder ? names.folders : names.files).push_back(name);
}

void FolderWalk::AddFile(const std::string& path, bool isLink, bool folderHasPicture) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return GiveUp(path, std::strerror(errno));
    // Hard links are files in their own right; a symbolic link to a file that is there anyway is not.
    const bool seen = !m_seenFiles.emplace(status.st_dev, status.st_ino).second;
    if (seen && isLink)
        return;
    if (m_files.size() >= MediaScanner::kMaxFiles) {
        if (!m_full)
            m_listener.skipped(path + " and all further files are left out: there are too many");
        m_full = true;
        return;
    }
    m_files.push_back(
        {path, m_deviceId, static_cast<std::uint64_t>(status.st_size), TimeNs(status), folderHasPicture});
    m_listener.found(path);
}

void FolderWalk::FollowLink(const std::string& path, int depth, bool folderHasPicture) {
    struct stat status {};
    // A link to nowhere may lead to a disk that is not mounted now.
    if (::stat(path.c_str(), &status) != 0)
        return GiveUp(path, std::strerror(errno));
    if (S_ISDIR(status.st_mode))
        Enter(path, depth);
    else if (S_ISREG(status.st_mode) && IsMusicFile(path))
        AddFile(path, true, folderHasPicture);
}

void FolderWalk::GiveUp(const std::string& path, const std::string& why) {
    m_away.push_back(path);
    m_listener.away({path, why});
    m_listener.skipped("Cannot scan " + path + ": " + why);
}

} // namespace korvel::media
