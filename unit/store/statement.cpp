#include "store/statement.h"

#include "store/connection.h"
#include "store/sqlite_fault.h"

#include <sqlite3.h>

namespace ZorvicUnit {

Statement::Statement(Connection& connection, std::string_view sql)
    : Lock(connection.Mutex), Handle(connection.Opened()) {
    if (sqlite3_prepare_v2(Handle, sql.data(), static_cast<int>(sql.size()), &Prepared, nullptr) != SQLITE_OK)
        RaiseLast(Handle, sql);
}

Statement::~Statement() {
    sqlite3_finalize(Prepared);
}

Statement& Statement::Bind(std::int64_t value) {
    if (sqlite3_bind_int64(Prepared, ++Bound, value) != SQLITE_OK) RaiseLast(Handle, sqlite3_sql(Prepared));
    return *this;
}

Statement& Statement::Bind(std::string_view text) {
    if (sqlite3_bind_text64(Prepared, ++Bound, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8) != SQLITE_OK)
        RaiseLast(Handle, sqlite3_sql(Prepared));
    return *this;
}

Statement& Statement::BindBlob(std::string_view bytes) {
    // A null pointer would bind NULL where an empty blob is meant.
    const void* data = bytes.empty() ? "" : bytes.data();
    if (sqlite3_bind_blob64(Prepared, ++Bound, data, bytes.size(), SQLITE_TRANSIENT) != SQLITE_OK)
        RaiseLast(Handle, sqlite3_sql(Prepared));
    return *this;
}

bool Statement::Step() {
    const int result = sqlite3_step(Prepared);
    if (result != SQLITE_ROW && result != SQLITE_DONE) RaiseLast(Handle, sqlite3_sql(Prepared));
    return result == SQLITE_ROW;
}

void Statement::Run() {
    while (Step()) {
    }
}

std::int64_t Statement::Integer(int column) const {
    return sqlite3_column_int64(Prepared, column);
}

std::string Statement::Text(int column) const {
    return Blob(column);
}

std::string Statement::Blob(int column) const {
    const auto* data = static_cast<const char*>(sqlite3_column_blob(Prepared, column));
    return data ? std::string(data, static_cast<std::size_t>(sqlite3_column_bytes(Prepared, column))) : std::string();
}

}  // namespace ZorvicUnit
