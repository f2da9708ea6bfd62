#include "Sqlite.h"

#include <cerrno>

#include "library/DatabaseError.h"
#include "library/Utf8.h"

namespace korvel::media {

namespace {

// A file that may not grow is a disk that is full to whoever writes into it.
bool MeansNoRoom(int error) {
    return error == ENOSPC || error == EDQUOT || error == EFBIG;
}

// What the system last said against the database's file, or against its log.
int LastErrorOf(sqlite3* database, bool ofLog) {
    int error = 0;
    if (!ofLog) {
        sqlite3_file_control(database, "main", SQLITE_FCNTL_LAST_ERRNO, &error);
        return error;
    }
    sqlite3_file* log = nullptr;
    sqlite3_file_control(database, "main", SQLITE_FCNTL_JOURNAL_POINTER, &log);
    if (log && log->pMethods)
        log->pMethods->xFileControl(log, SQLITE_FCNTL_LAST_ERRNO, &error);
    return error;
}

DatabaseError::Kind KindOf(sqlite3* database) {
    using Kind = DatabaseError::Kind;
    const int result = sqlite3_extended_errcode(database);
    switch (result & 0xFF) {
        case SQLITE_FULL:
            return Kind::NoRoom;
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
            return Kind::Damaged;
        case SQLITE_CANTOPEN:
            return MeansNoRoom(sqlite3_system_errno(database)) ? Kind::NoRoom : Kind::Other;
        case SQLITE_IOERR:
            // The file that the connections share could not be made larger: nothing else stops that.
            if (result == SQLITE_IOERR_SHMSIZE || MeansNoRoom(LastErrorOf(database, false)) ||
                MeansNoRoom(LastErrorOf(database, true)))
                return Kind::NoRoom;
            return Kind::Other;
        default:
            return Kind::Other;
    }
}

[[noreturn]] void Fail(sqlite3* database) {
    const DatabaseError::Kind kind = KindOf(database);
    // For a file that may not grow SQLite speaks of an I/O error.
    const char* what =
        kind == DatabaseError::Kind::NoRoom ? "no room is left on the disk" : sqlite3_errmsg(database);
    throw DatabaseError(kind, std::string("media database: ") + what);
}

void Check(sqlite3* database, int result) {
    if (result != SQLITE_OK)
        Fail(database);
}

// FOLD(text) in SQL, for sorting by the names that a query has gathered.
void FoldFunction(sqlite3_context* context, int, sqlite3_value** values) {
    try {
        const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(values[0]));
        const auto length = static_cast<std::size_t>(sqlite3_value_bytes(values[0]));
        const std::string folded = FoldText(text ? std::string_view(text, length) : std::string_view());
        sqlite3_result_text64(context, folded.data(), folded.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    } catch (const std::exception&) {
        sqlite3_result_error_nomem(context);
    }
}

} // namespace

Query& Query::Bind(std::int64_t value) {
    Check(m_database, sqlite3_bind_int64(m_statement, ++m_bound, value));
    return *this;
}

Query& Query::Bind(std::string_view text) {
    // A null pointer would bind NULL.
    const char* bytes = text.data() ? text.data() : "";
    Check(m_database,
          sqlite3_bind_text64(m_statement, ++m_bound, bytes, text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
    return *this;
}

Query& Query::BindNull() {
    Check(m_database, sqlite3_bind_null(m_statement, ++m_bound));
    return *this;
}

bool Query::Next() {
    const int result = sqlite3_step(m_statement);
    if (result != SQLITE_ROW && result != SQLITE_DONE)
        Fail(m_database);
    return result == SQLITE_ROW;
}

void Query::Run() {
    while (Next()) {
    }
}

std::string Query::Text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
    return text ? std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column))) : "";
}

Query::~Query() {
    if (m_owned) {
        sqlite3_finalize(m_statement);
        return;
    }
    sqlite3_reset(m_statement);
    sqlite3_clear_bindings(m_statement);
}

Connection::Connection(const std::string& path, int busyTimeoutMs) {
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    try {
        Check(m_database, sqlite3_open_v2(path.c_str(), &m_database, flags, nullptr));
        Check(m_database, sqlite3_busy_timeout(m_database, busyTimeoutMs));
        Check(m_database, sqlite3_create_function(m_database, "FOLD", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                                  nullptr, FoldFunction, nullptr, nullptr));
    } catch (...) {
        Close();
        throw;
    }
}

Connection::~Connection() {
    Close();
}

void Connection::Close() {
    for (const auto& statement : m_statements)
        sqlite3_finalize(statement.second);
    sqlite3_close(m_database);
}

void Connection::Execute(const char* statements) {
    Check(m_database, sqlite3_exec(m_database, statements, nullptr, nullptr, nullptr));
}

Query Connection::Prepare(std::string_view sql) {
    const std::string key(sql);
    const auto found = m_statements.find(key);
    if (found != m_statements.end() && !sqlite3_stmt_busy(found->second))
        return Query(m_database, found->second, false);
    sqlite3_stmt* statement = nullptr;
    Check(m_database, sqlite3_prepare_v2(m_database, key.c_str(), -1, &statement, nullptr));
    // A statement that is in the middle of its rows gets a twin for this one use.
    if (found != m_statements.end())
        return Query(m_database, statement, true);
    m_statements.emplace(key, statement);
    return Query(m_database, statement, false);
}

void Connection::InTransaction(const std::function<void()>& body) {
    const bool outermost = sqlite3_get_autocommit(m_database) != 0;
    // The write lock is taken at once: a transaction that first reads could not wait for it later.
    Execute(outermost ? "BEGIN IMMEDIATE" : "SAVEPOINT inner");
    try {
        body();
        Execute(outermost ? "COMMIT" : "RELEASE inner");
    } catch (...) {
        // SQLite has rolled back by itself after some failures.
        if (!sqlite3_get_autocommit(m_database))
            sqlite3_exec(m_database, outermost ? "ROLLBACK" : "ROLLBACK TO inner; RELEASE inner", nullptr,
                         nullptr, nullptr);
        throw;
    }
}

void Connection::RollBack() {
    if (!sqlite3_get_autocommit(m_database))
        sqlite3_exec(m_database, "ROLLBACK", nullptr, nullptr, nullptr);
}

void Connection::StayAlone() {
    Execute("PRAGMA locking_mode = EXCLUSIVE");
}

void Connection::CopyTo(Connection& target) {
    sqlite3_backup* backup = sqlite3_backup_init(target.m_database, "main", m_database, "main");
    if (!backup)
        Fail(target.m_database);
    // In one step: who reads holds nobody up, and a copy in steps begins anew after each change.
    const int result = sqlite3_backup_step(backup, -1);
    sqlite3_backup_finish(backup);
    if (result != SQLITE_DONE)
        Fail(target.m_database);
}

} // namespace korvel::media
