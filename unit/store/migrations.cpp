#include "store/migrations.h"

#include <array>

namespace ZorvicUnit {

namespace {

constexpr std::array<const char*, 1> Steps = {
    // AUTOINCREMENT, because a key must not come back after the highest preset is deleted. The hash tells a record that
    // the disk has spoilt from one that was stored so.
    R"sql(
    CREATE TABLE settings(
        name TEXT PRIMARY KEY,
        value TEXT NOT NULL) WITHOUT ROWID;
    CREATE TABLE presets(
        pk INTEGER PRIMARY KEY AUTOINCREMENT,
        record BLOB NOT NULL,
        hash INTEGER NOT NULL);
    CREATE TABLE assets(
        path TEXT PRIMARY KEY,
        size INTEGER,
        modified_ns INTEGER,
        checksum TEXT,
        metadata BLOB,
        envelope BLOB);
    )sql",
};

}  // namespace

std::span<const char* const> Migrations() {
    return Steps;
}

}  // namespace ZorvicUnit
