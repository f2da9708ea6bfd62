#include "StatementCount.h"

#include <sqlite3.h>

namespace korvel::media {
namespace {

std::uint64_t g_statements = 0;
std::uint64_t g_steps = 0;

int OnStatementEnd(unsigned, void*, void* statement, void*) {
    ++g_statements;
    auto* ended = static_cast<sqlite3_stmt*>(statement);
    g_steps += static_cast<std::uint64_t>(sqlite3_stmt_status(ended, SQLITE_STMTSTATUS_VM_STEP, 1));
    return 0;
}

int OnOpened(sqlite3* database, char**, const struct sqlite3_api_routines*) {
    return sqlite3_trace_v2(database, SQLITE_TRACE_PROFILE, OnStatementEnd, nullptr);
}

using Extension = void (*)();

} // namespace

StatementCount::StatementCount() {
    Reset();
    sqlite3_auto_extension(reinterpret_cast<Extension>(OnOpened));
}

StatementCount::~StatementCount() {
    sqlite3_cancel_auto_extension(reinterpret_cast<Extension>(OnOpened));
}

void StatementCount::Reset() {
    g_statements = 0;
    g_steps = 0;
}

std::uint64_t StatementCount::Statements() const {
    return g_statements;
}

std::uint64_t StatementCount::Steps() const {
    return g_steps;
}

} // namespace korvel::media
