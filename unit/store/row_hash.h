#pragma once

#include <array>

struct sqlite3;

namespace ZorvicUnit {

/// A table whose rows carry a hash of all their columns, which tells what the disk has spoilt from what was stored so.
/// Triggers keep it.
struct HashedTable {
    const char* Name;
    const char* Columns;  ///< but the hash itself
    const char* What;     ///< says which row it is
};

inline constexpr std::array HashedTables = {
    HashedTable{"settings", "name, value", "'setting ' || name"},
    HashedTable{"imports", "number, path, source, size, modified_ns, copy_size, copy_modified_ns, problem",
                "'order to import ' || path"}};

/// The schema that brought the hashes.
inline constexpr int RowHashVersion = 5;

/// Lets statements use row_hash(column, ...), an integer.
void AddRowHash(sqlite3* database);

}  // namespace ZorvicUnit
