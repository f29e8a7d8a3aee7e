#include "store/row_hash.h"

#include "store/sqlite_fault.h"

#include <sqlite3.h>
#include <xxhash.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace ZorvicUnit {

namespace {

void RowHash(sqlite3_context* context, int count, sqlite3_value** values) {
    std::string row;
    for (int i = 0; i < count; ++i) {
        // A value of another kind, or the same bytes shared out otherwise, make another row.
        const int kind = sqlite3_value_type(values[i]);
        const void* const bytes = sqlite3_value_blob(values[i]);
        const auto size = static_cast<std::size_t>(sqlite3_value_bytes(values[i]));
        row += std::to_string(kind) + ' ' + std::to_string(size) + ' ';
        if (bytes != nullptr) row.append(static_cast<const char*>(bytes), size);
    }
    sqlite3_result_int64(context, static_cast<std::int64_t>(XXH3_64bits(row.data(), row.size())));
}

}  // namespace

void AddRowHash(sqlite3* database) {
    const int manner = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    if (sqlite3_create_function_v2(database, "row_hash", -1, manner, nullptr, &RowHash, nullptr, nullptr, nullptr) !=
        SQLITE_OK)
        RaiseLast(database, "add row_hash");
}

}  // namespace ZorvicUnit
