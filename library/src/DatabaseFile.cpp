#include "library/DatabaseFile.h"

#include <filesystem>

#include "Sqlite.h"
#include "library/DatabaseError.h"
#include "library/MediaDatabase.h"
#include "library/Utf8.h"

namespace korvel::media {

namespace fs = std::filesystem;

bool WasLeftOpen(const std::string& path) {
    // The last one that closes the file takes what is in the log into it, and removes the log.
    std::error_code failed;
    return fs::exists(path + "-wal", failed);
}

std::string FindDamage(const std::string& path) {
    try {
        Connection connection(path, MediaDatabase::kBusyTimeoutMs);
        // A full disk must not keep it from being read.
        connection.StayAlone();
        Query check = connection.Prepare("PRAGMA integrity_check(1)");
        const std::string found = check.Next() ? CleanText(check.Text(0)) : "nothing can be read";
        return found == "ok" ? "" : found;
    } catch (const DatabaseError& error) {
        if (error.GetKind() != DatabaseError::Kind::Damaged)
            throw;
        return error.what();
    }
}

void CopyDatabase(const std::string& from, const std::string& to) {
    RemoveDatabase(to);
    Connection source(from, MediaDatabase::kBusyTimeoutMs);
    Connection target(to, MediaDatabase::kBusyTimeoutMs);
    source.CopyTo(target);
}

void RemoveDatabase(const std::string& path) {
    std::error_code ignored;
    fs::remove(path, ignored);
    for (const char* companion : kDatabaseCompanions)
        fs::remove(path + companion, ignored);
}

} // namespace korvel::media
