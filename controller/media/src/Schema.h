#pragma once

#include <string>

#include "Sqlite.h"

namespace korvel::media {

// Makes the tables in a new file, checks the version of an old one. Throws std::runtime_error.
void PrepareSchema(Connection& connection, const std::string& path);

} // namespace korvel::media
