#include "Folders.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace korvel::media {

namespace {

using Outcome = FileReader::Outcome;

FileType TypeOf(mode_t mode) {
    return S_ISREG(mode)   ? FileType::File
           : S_ISDIR(mode) ? FileType::Folder
           : S_ISLNK(mode) ? FileType::Link
                           : FileType::Other;
}

} // namespace

FileType TypeOf(const std::string& folder, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN)
        return TypeOf(DTTOIF(entry.d_type));
    struct stat status {};
    const bool known = ::lstat((folder + "/" + entry.d_name).c_str(), &status) == 0;
    return known ? TypeOf(status.st_mode) : FileType::Other;
}

FileReader::Answer<FileStatus> LookAt(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return {Outcome::Unreadable, {}, std::strerror(errno)};
    const std::int64_t time =
        static_cast<std::int64_t>(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec;
    return {Outcome::Done,
            {TypeOf(status.st_mode), status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
             time},
            ""};
}

FileReader::Answer<std::vector<FolderEntry>> ListFolder(const std::string& path) {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(path.c_str()), ::closedir);
    if (!folder)
        return {Outcome::Unreadable, {}, std::strerror(errno)};
    std::vector<FolderEntry> entries;
    errno = 0;
    while (const dirent* entry = ::readdir(folder.get())) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            entries.push_back({name, TypeOf(path, *entry)});
        errno = 0;
    }
    if (errno != 0)
        return {Outcome::Unreadable, {}, std::strerror(errno)};
    return {Outcome::Done, std::move(entries), ""};
}

} // namespace korvel::media
