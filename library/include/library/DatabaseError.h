#pragma once

#include <stdexcept>
#include <string>

namespace korvel::media {

// Why a database was not read or written, in one line.
class DatabaseError : public std::runtime_error {
public:
    enum class Kind {
        NoRoom,  // the disk is full, or the file may not grow
        Damaged, // what is in the file is no media database, or no longer
        Other
    };

    DatabaseError(Kind kind, const std::string& what) : std::runtime_error(what), m_kind(kind) {}
    Kind GetKind() const { return m_kind; }

private:
    Kind m_kind;
};

} // namespace korvel::media
