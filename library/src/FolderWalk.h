// Finds the music files below folders.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "library/FileReader.h"
#include "library/MediaScanner.h"

namespace korvel::media {

struct FoundFile {
    std::string location;
    std::uint64_t fileSystem = 0;
    std::uint32_t deviceId = 0;
    std::uint64_t fileSize = 0;
    std::int64_t fileTimeNs = 0;
    bool folderHasPicture = false;
};

// Walks folders one after the other. Every folder is entered once, by its real path before any symbolic link
// to it, so that links in a circle end and a link beside a folder does not double its songs.
class FolderWalk {
public:
    struct Listener {
        std::function<void(const std::string& path)> found;      // every file
        std::function<void(const std::string& why)> skipped;     // everything left out
        std::function<void(const AwayPlace& place)> away;        // what cannot be looked into
        std::function<bool(const std::string& folder)> hasSongs; // whether an earlier scan found some below
    };

    // Looks at everything through `reader`: a disk that does not answer is given up.
    FolderWalk(FileReader& reader, std::stop_token stop, Listener listener);

    void Walk(const ScanFolder& folder);

    const std::vector<FoundFile>& GetFiles() const { return m_files; }
    // Whether the path is, or is below, a place that could not be looked into.
    bool IsAway(const std::string& location) const;
    // Whether files were left out because there are too many: nothing is known of those.
    bool IsFull() const { return m_full; }

    // A file system that kept the reader waiting too often is left alone for the rest of the scan.
    static constexpr int kMaxStalls = 3;
    void NoteStall(std::uint64_t fileSystem) { ++m_stalls[fileSystem]; }
    bool Hangs(std::uint64_t fileSystem) const;

private:
    using FileIdentity = std::pair<std::uint64_t, std::uint64_t>; // file system, number

    struct Names {
        std::vector<std::string> files;
        std::vector<std::string> folders;
        std::vector<std::string> links;
        bool hasPicture = false;
        bool empty = true; // nothing at all is in it
    };

    // What is at the path, looked for in the file system `within`; none after GiveUp().
    std::optional<FileStatus> Look(const std::string& path, std::uint64_t within);
    void Enter(const std::string& path, const FileStatus& status, int depth);
    bool ListNames(const std::string& path, std::uint64_t within, Names& names);
    void SortOut(const std::string& folder, const FolderEntry& entry, Names& names);
    void AddFiles(const std::string& folder, const Names& names, std::uint64_t within);
    void AddFile(const std::string& path, const FileStatus& status, bool isLink, bool folderHasPicture);
    void FollowLink(const std::string& path, int depth, bool folderHasPicture);
    void GiveUp(const std::string& path, const std::string& why);
    // After an answer that is not Done.
    void GiveUp(const std::string& path, std::uint64_t within, FileReader::Outcome outcome,
                const std::string& why);

    struct Link {
        std::string path;
        int depth;
        bool folderHasPicture;
    };

    FileReader& m_reader;
    std::stop_token m_stop;
    Listener m_listener;
    std::uint32_t m_deviceId = 0;
    std::vector<FoundFile> m_files;
    std::set<std::string> m_away;
    std::map<std::uint64_t, int> m_stalls; // by file system
    std::vector<Link> m_links;             // to be followed when the real folders are done
    std::set<FileIdentity> m_seenFolders;
    std::set<FileIdentity> m_seenFiles;
    bool m_full = false;
};

} // namespace korvel::media
