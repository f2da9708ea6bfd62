#pragma once

#include <string>

#include "Sqlite.h"

namespace korvel::media {

// Makes the tables in a new file and brings those of an older version up to date, with all that is in them.
// Throws DatabaseError.
void PrepareSchema(Connection& connection, const std::string& path);

} // namespace korvel::media
