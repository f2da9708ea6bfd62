#include "FolderWalk.h"

#include <algorithm>
#include <array>
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

std::string Join(const std::string& folder, const std::string& name) {
    return folder == "/" ? folder + name : folder + "/" + name;
}

constexpr const char* kHangs = "its disk does not answer";
// Of what may be in any.
constexpr std::uint64_t kNoFileSystem = 0;

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

FolderWalk::FolderWalk(FileReader& reader, std::stop_token stop, Listener listener)
    : m_reader(reader), m_stop(std::move(stop)), m_listener(std::move(listener)) {}

void FolderWalk::Walk(const ScanFolder& folder) {
    m_deviceId = folder.deviceId;
    const std::string root = NormalPath(folder.path);
    const auto status = Look(root, kNoFileSystem);
    if (!status)
        return;
    if (status->type != FileType::Folder)
        return GiveUp(root, "it is not a folder");
    if (!common::FitsInQuotes(root))
        return GiveUp(root, "its name has a control character or a double quote");
    Enter(root, *status, 0);
    for (std::size_t i = 0; i < m_links.size() && !m_stop.stop_requested(); ++i) {
        const Link link = m_links[i]; // the list grows meanwhile
        FollowLink(link.path, link.depth, link.folderHasPicture);
    }
    m_links.clear();
}

bool FolderWalk::IsAway(const std::string& location) const {
    if (m_away.contains("/"))
        return true;
    for (std::size_t end = location.size(); end != std::string::npos && end > 0;
         end = location.rfind('/', end - 1)) {
        if (m_away.contains(location.substr(0, end)))
            return true;
    }
    return false;
}

bool FolderWalk::Hangs(std::uint64_t fileSystem) const {
    const auto found = m_stalls.find(fileSystem);
    return found != m_stalls.end() && found->second >= kMaxStalls;
}

std::optional<FileStatus> FolderWalk::Look(const std::string& path, std::uint64_t within) {
    auto answer = m_reader.Look(path);
    if (answer.outcome == FileReader::Outcome::Done)
        return answer.value;
    GiveUp(path, within, answer.outcome, answer.why);
    return std::nullopt;
}

void FolderWalk::Enter(const std::string& path, const FileStatus& status, int depth) {
    if (!m_seenFolders.emplace(status.fileSystem, status.number).second)
        return;
    if (depth > MediaScanner::kMaxFolderDepth)
        return GiveUp(path, "it is nested too deep");
    Names names;
    if (!ListNames(path, status.fileSystem, names))
        return;
    if (names.empty && (depth == 0 || m_listener.hasSongs(path)))
        return GiveUp(path, "it is empty, as when a disk is not mounted");
    AddFiles(path, names, status.fileSystem);
    for (const std::string& name : names.links)
        m_links.push_back({Join(path, name), depth + 1, names.hasPicture});
    for (const std::string& name : names.folders) {
        if (m_stop.stop_requested())
            return;
        if (Hangs(status.fileSystem))
            return GiveUp(path, kHangs);
        // It may be another file system, and hang alone.
        if (const auto next = Look(Join(path, name), status.fileSystem))
            Enter(Join(path, name), *next, depth + 1);
    }
}

bool FolderWalk::ListNames(const std::string& path, std::uint64_t within, Names& names) {
    if (Hangs(within)) {
        GiveUp(path, kHangs);
        return false;
    }
    const auto answer = m_reader.List(path);
    if (answer.outcome != FileReader::Outcome::Done) {
        GiveUp(path, within, answer.outcome, answer.why);
        return false;
    }
    for (const FolderEntry& entry : answer.value)
        SortOut(path, entry, names);
    // In the order of their names, so that new songs get their ids in it.
    for (auto* list : {&names.files, &names.folders, &names.links})
        std::sort(list->begin(), list->end());
    return true;
}

void FolderWalk::SortOut(const std::string& folder, const FolderEntry& entry, Names& names) {
    names.empty = false;
    const std::string& name = entry.name;
    // Hidden files: among them the shadows that some systems leave beside every file.
    if (name.starts_with('.'))
        return;
    names.hasPicture = names.hasPicture || FolderPictureRank(name) >= 0;
    const bool link = entry.type == FileType::Link;
    const bool isFolder = entry.type == FileType::Folder;
    const bool music = entry.type == FileType::File && IsMusicFile(name);
    if (!link && !isFolder && !music)
        return;
    if (!common::FitsInQuotes(name)) {
        m_listener.skipped(Join(folder, name) +
                           " is left out: its name has a control character or a double quote");
        return;
    }
    (link ? names.links : isFolder ? names.folders : names.files).push_back(name);
}

void FolderWalk::AddFiles(const std::string& folder, const Names& names, std::uint64_t within) {
    for (const std::string& name : names.files) {
        if (m_stop.stop_requested())
            return;
        if (Hangs(within))
            return GiveUp(folder, kHangs);
        const std::string path = Join(folder, name);
        // It may be another thing by now, such as a pipe.
        const auto status = Look(path, within);
        if (status && status->type == FileType::File)
            AddFile(path, *status, false, names.hasPicture);
    }
}

void FolderWalk::AddFile(const std::string& path, const FileStatus& status, bool isLink,
                         bool folderHasPicture) {
    // Hard links are files in their own right; a symbolic link to a file that is there anyway is not.
    const bool seen = !m_seenFiles.emplace(status.fileSystem, status.number).second;
    if (seen && isLink)
        return;
    if (m_files.size() >= MediaScanner::kMaxFiles) {
        if (!m_full)
            m_listener.skipped(path + " and all further files are left out: there are too many");
        m_full = true;
        return;
    }
    m_files.push_back({path, status.fileSystem, m_deviceId, status.size, status.timeNs, folderHasPicture});
    m_listener.found(path);
}

void FolderWalk::FollowLink(const std::string& path, int depth, bool folderHasPicture) {
    // A link to nowhere may lead to a disk that is not mounted now.
    const auto status = Look(path, kNoFileSystem);
    if (!status)
        return;
    if (status->type == FileType::Folder)
        Enter(path, *status, depth);
    else if (status->type == FileType::File && IsMusicFile(path))
        AddFile(path, *status, true, folderHasPicture);
}

void FolderWalk::GiveUp(const std::string& path, std::uint64_t within, FileReader::Outcome outcome,
                        const std::string& why) {
    if (outcome == FileReader::Outcome::Cancelled)
        return;
    if (outcome == FileReader::Outcome::Stalled)
        NoteStall(within);
    GiveUp(path, why);
}

void FolderWalk::GiveUp(const std::string& path, const std::string& why) {
    m_away.insert(path);
    m_listener.away({path, why});
    m_listener.skipped("Cannot scan " + path + ": " + why);
}

} // namespace korvel::media
