#include "actions/LibraryCopies.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string_view>

#include "library/DatabaseError.h"
#include "library/DatabaseFile.h"
#include "library/MediaDatabase.h"
#include "store/KeptAside.h"
#include "store/StateFolder.h"

namespace korvel::controller {
namespace {

namespace fs = std::filesystem;
using media::DatabaseError;

constexpr std::string_view kPrefix = "library-";
constexpr std::string_view kSuffix = ".db";

std::string Described(const std::string& path) {
    media::MediaDatabase library(path);
    return std::to_string(library.ListSongs({0, 1}).total) + " songs, " +
           std::to_string(library.ListPlaylists({0, 1}).total) + " playlists";
}

// Makes `to` a copy that can be used; says what is in it.
std::string CopyWhole(const std::string& copy, const std::string& to) {
    try {
        media::CopyDatabase(copy, to);
        if (const std::string damage = media::FindDamage(to); !damage.empty())
            throw DatabaseError(DatabaseError::Kind::Damaged, damage);
        return Described(to);
    } catch (...) {
        media::RemoveDatabase(to);
        throw;
    }
}

std::string PutInPlace(const std::string& copy, const std::string& library) {
    std::string kept;
    if (fs::exists(library))
        kept = KeepAside(library, kReplaced, media::kDatabaseCompanions);
    // A log that is left would be taken for one of the file that comes.
    media::RemoveDatabase(library);
    fs::rename(copy, library);
    return kept.empty() ? "" : "; what was there is kept as " + kept;
}

} // namespace

std::string LibraryPath(const std::string& stateFolder) {
    return stateFolder + "/media.db";
}

std::vector<std::string> LibraryCopies::Stamps() const {
    std::vector<std::string> stamps;
    std::error_code failed;
    for (const auto& entry : fs::directory_iterator(Folder(), failed)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with(kPrefix) && name.ends_with(kSuffix))
            stamps.push_back(name.substr(kPrefix.size(), name.size() - kPrefix.size() - kSuffix.size()));
    }
    std::ranges::sort(stamps, std::greater<>());
    return stamps;
}

std::string LibraryCopies::PathOf(const std::string& stamp) const {
    return Folder() + "/" + std::string(kPrefix) + stamp + std::string(kSuffix);
}

std::vector<std::string> LibraryCopies::List() const {
    std::vector<std::string> paths;
    for (const std::string& stamp : Stamps())
        paths.push_back(PathOf(stamp));
    return paths;
}

std::string LibraryCopies::DamageStamp() const {
    const std::string library = LibraryPath(m_stateFolder);
    const std::string damaged = LastKeptAside(library, kDamaged);
    return damaged > LastKeptAside(library, kReplaced) ? damaged : "";
}

std::vector<std::string> LibraryCopies::ForRestoring() const {
    std::vector<std::string> stamps = Stamps();
    const std::string damage = DamageStamp();
    std::ranges::stable_partition(stamps, [&](const std::string& stamp) { return stamp < damage; });
    for (std::string& stamp : stamps)
        stamp = PathOf(stamp);
    return stamps;
}

void LibraryCopies::MakeWhenDue(std::time_t now) const {
    const std::string today = StampOf(now);
    const std::string yesterday = StampOf(now - kInterval);
    const auto isRecent = [&](const std::string& stamp) { return stamp > yesterday && stamp <= today; };
    if (std::ranges::any_of(Stamps(), isRecent))
        return;
    fs::create_directories(Folder());
    const std::string unfinished = Folder() + "/unfinished";
    try {
        media::CopyDatabase(LibraryPath(m_stateFolder), unfinished);
        if (const std::string damage = media::FindDamage(unfinished); !damage.empty())
            throw DatabaseError(DatabaseError::Kind::Damaged, "the library is damaged: " + damage);
        fs::rename(unfinished, PathOf(today));
    } catch (...) {
        media::RemoveDatabase(unfinished);
        throw;
    }
    RemoveOldest(today);
}

void LibraryCopies::RemoveOldest(const std::string& now) const {
    std::vector<std::string> stamps = Stamps();
    // Those of a clock that was wrong must not outlive all others.
    std::ranges::stable_partition(stamps, [&](const std::string& stamp) { return stamp <= now; });
    const std::string damage = DamageStamp();
    std::size_t before = 0;
    std::size_t since = 0;
    for (const std::string& stamp : stamps) {
        // A library that takes the place of a damaged one must not push out what can bring that one back.
        if (++(stamp < damage ? before : since) > kKept)
            media::RemoveDatabase(PathOf(stamp));
    }
}

std::string RestoreLibrary(const std::string& stateFolder) {
    const StateFolder taken(stateFolder);
    const LibraryCopies copies(stateFolder);
    const std::string library = LibraryPath(stateFolder);
    const std::string next = library + ".next";
    std::string refused;
    for (const std::string& copy : copies.ForRestoring()) {
        try {
            const std::string content = CopyWhole(copy, next);
            return "the library is that of " + copy + " (" + content + ")" + PutInPlace(next, library);
        } catch (const DatabaseError& error) {
            refused += "; " + copy + ": " + error.what();
        }
    }
    if (refused.empty())
        throw std::runtime_error("there is no copy of the library in " + copies.Folder());
    throw std::runtime_error("no copy of the library is good" + refused);
}

} // namespace korvel::controller
