// A thin layer over SQLite: connections, prepared statements, transactions. Every failure is a DatabaseError.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace korvel::media {

// A prepared statement in use. Unbinds and resets it when it goes out of scope.
class Query {
public:
    // Each further call binds the next parameter.
    Query& Bind(std::int64_t value);
    Query& Bind(std::uint32_t value) { return Bind(static_cast<std::int64_t>(value)); }
    Query& Bind(std::int32_t value) { return Bind(static_cast<std::int64_t>(value)); }
    Query& Bind(std::string_view text);
    Query& BindNull();

    // Moves to the next row; false behind the last.
    bool Next();
    // Runs a statement that gives no rows.
    void Run();

    std::int64_t Int(int column) const { return sqlite3_column_int64(m_statement, column); }
    std::uint32_t UInt(int column) const { return static_cast<std::uint32_t>(Int(column)); }
    std::string Text(int column) const;

    ~Query();
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

private:
    friend class Connection;
    Query(sqlite3* database, sqlite3_stmt* statement, bool owned)
        : m_database(database), m_statement(statement), m_owned(owned) {}

    sqlite3* m_database;
    sqlite3_stmt* m_statement;
    bool m_owned;
    int m_bound = 0;
};

class Connection {
public:
    Connection(const std::string& path, int busyTimeoutMs);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Runs statements that take no parameters.
    void Execute(const char* statements);
    // The prepared statement `sql`, kept for its next use.
    Query Prepare(std::string_view sql);
    std::uint32_t LastId() const { return static_cast<std::uint32_t>(sqlite3_last_insert_rowid(m_database)); }
    // Rows that the last statement changed.
    int Changes() const { return sqlite3_changes(m_database); }
    void InTransaction(const std::function<void()>& body);
    // The same in parts, not nested. RollBack() does nothing outside a transaction.
    void Begin() { Execute("BEGIN IMMEDIATE"); }
    void Commit() { Execute("COMMIT"); }
    void RollBack();
    // Before anything else: no other connection can open the file, and no other file is shared with one.
    void StayAlone();
    // Makes the database of `target` a copy of this one.
    void CopyTo(Connection& target);

private:
    void Close();

    sqlite3* m_database = nullptr;
    std::unordered_map<std::string, sqlite3_stmt*> m_statements;
};

} // namespace korvel::media
