// The file of a media database as a whole.
#pragma once

#include <array>
#include <string>

namespace korvel::media {

// What stands beside the file under its name and one of these belongs to it.
inline constexpr std::array<const char*, 3> kDatabaseCompanions = {"-wal", "-shm", "-journal"};

// Whether the last program that had the file open ended without closing it.
bool WasLeftOpen(const std::string& path);

// What is wrong with the database in the file, in one line; "" when it is whole. Reads all of it. Nobody else has
// it open meanwhile. Throws DatabaseError when that fails for another reason.
std::string FindDamage(const std::string& path);

// Makes `to` a copy of the database `from`, as it is at one moment although others may write to it. Throws
// DatabaseError; what is in `to` is then of no use.
void CopyDatabase(const std::string& from, const std::string& to);

// Removes the file and what belongs to it; nothing happens when it is not there.
void RemoveDatabase(const std::string& path);

} // namespace korvel::media
