// What cannot be used any more is not thrown away: it is kept beside its old place, under another name.
#pragma once

#include <cstddef>
#include <ctime>
#include <span>
#include <string>

namespace korvel::controller {

// Of one file and word; the oldest are removed.
inline constexpr std::size_t kMaxKeptAside = 3;

// "20261122-084312", in UTC: sorts as time goes.
std::string StampOf(std::time_t time);

// Renames the file or folder to "<path>.<word>-<stamp of now>", and so what stands beside it under its name
// and one of `companions`. Returns the new name. Throws std::filesystem::filesystem_error when that fails.
std::string KeepAside(const std::string& path, const std::string& word,
                      std::span<const char* const> companions = {});

// The stamp of what was last kept aside so; "" when nothing is.
std::string LastKeptAside(const std::string& path, const std::string& word);

} // namespace korvel::controller
