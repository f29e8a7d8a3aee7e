#include "store/migrations.h"

#include <array>

namespace ZorvicUnit {

namespace {

constexpr std::array<const char*, 6> Steps = {
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
    // The ledger says what must be there: how many presets, and the sum of a number that each makes of its key and its
    // hash. It counts the changes too, in the transaction of each, to be compared with what has been acknowledged.
    R"sql(
    ALTER TABLE presets ADD COLUMN mark INTEGER
        AS (((hash & 2147483647) * (pk * 2654435761 & 2147483647 | 1)) >> 16 & 2147483647) VIRTUAL;
    CREATE TABLE ledger(
        changes INTEGER NOT NULL,
        presets INTEGER NOT NULL,
        marks INTEGER NOT NULL);
    INSERT INTO ledger SELECT 0, count(*), coalesce(sum(mark), 0) FROM presets;
    CREATE TRIGGER preset_inserted AFTER INSERT ON presets BEGIN
        UPDATE ledger SET changes = changes + 1, presets = presets + 1, marks = marks + new.mark;
    END;
    CREATE TRIGGER preset_updated AFTER UPDATE ON presets BEGIN
        UPDATE ledger SET changes = changes + 1, marks = marks - old.mark + new.mark;
    END;
    CREATE TRIGGER preset_deleted AFTER DELETE ON presets BEGIN
        UPDATE ledger SET changes = changes + 1, presets = presets - 1, marks = marks - old.mark;
    END;
    CREATE TRIGGER setting_made AFTER INSERT ON settings BEGIN
        UPDATE ledger SET changes = changes + 1;
    END;
    )sql",
    // Files that are no media, and those whose reading crashed or took too long: neither is tried again.
    R"sql(
    CREATE TABLE refusals(
        path TEXT PRIMARY KEY,
        size INTEGER NOT NULL,
        modified_ns INTEGER NOT NULL,
        broken INTEGER NOT NULL,
        reason TEXT NOT NULL) WITHOUT ROWID;
    )sql",
    // What can be computed again went to a file of its own. Orders to import stay until they are done, or until what
    // became of them was dismissed; the stamp of the copy tells an order that was done in the moment of a kill.
    R"sql(
    DROP TABLE assets;
    DROP TABLE refusals;
    CREATE TABLE imports(
        number INTEGER PRIMARY KEY,
        path TEXT NOT NULL UNIQUE,
        source TEXT NOT NULL,
        size INTEGER NOT NULL,
        modified_ns INTEGER NOT NULL,
        copy_size INTEGER NOT NULL DEFAULT 0,
        copy_modified_ns INTEGER NOT NULL DEFAULT 0,
        problem TEXT NOT NULL DEFAULT '');
    CREATE TRIGGER import_ordered AFTER INSERT ON imports BEGIN
        UPDATE ledger SET changes = changes + 1;
    END;
    )sql",
    // What is no preset is told from what the disk has spoilt, too: each row by a hash, all of them by their number and
    // a
    // sum over the hashes.
    R"sql(
    ALTER TABLE settings ADD COLUMN hash INTEGER NOT NULL DEFAULT 0;
    ALTER TABLE imports ADD COLUMN hash INTEGER NOT NULL DEFAULT 0;
    UPDATE settings SET hash = row_hash(name, value);
    UPDATE imports SET
        hash = row_hash(number, path, source, size, modified_ns, copy_size, copy_modified_ns, problem);
    ALTER TABLE ledger ADD COLUMN others INTEGER NOT NULL DEFAULT 0;
    ALTER TABLE ledger ADD COLUMN other_marks INTEGER NOT NULL DEFAULT 0;
    UPDATE ledger SET (others, other_marks) = (SELECT count(*), coalesce(sum(hash & 2147483647), 0)
        FROM (SELECT hash FROM settings UNION ALL SELECT hash FROM imports));
    CREATE TRIGGER setting_inserted AFTER INSERT ON settings BEGIN
        UPDATE settings SET hash = row_hash(name, value) WHERE name = new.name;
        UPDATE ledger SET others = others + 1,
            other_marks = other_marks + (SELECT hash & 2147483647 FROM settings WHERE name = new.name);
    END;
    CREATE TRIGGER setting_updated AFTER UPDATE OF name, value ON settings BEGIN
        UPDATE settings SET hash = row_hash(name, value) WHERE name = new.name;
        UPDATE ledger SET other_marks = other_marks - (old.hash & 2147483647) +
            (SELECT hash & 2147483647 FROM settings WHERE name = new.name);
    END;
    CREATE TRIGGER setting_deleted AFTER DELETE ON settings BEGIN
        UPDATE ledger SET others = others - 1, other_marks = other_marks - (old.hash & 2147483647);
    END;
    CREATE TRIGGER import_inserted AFTER INSERT ON imports BEGIN
        UPDATE imports SET
            hash = row_hash(number, path, source, size, modified_ns, copy_size, copy_modified_ns, problem)
            WHERE number = new.number;
        UPDATE ledger SET others = others + 1,
            other_marks = other_marks + (SELECT hash & 2147483647 FROM imports WHERE number = new.number);
    END;
    CREATE TRIGGER import_updated AFTER UPDATE OF
        number, path, source, size, modified_ns, copy_size, copy_modified_ns, problem ON imports BEGIN
        UPDATE imports SET
            hash = row_hash(number, path, source, size, modified_ns, copy_size, copy_modified_ns, problem)
            WHERE number = new.number;
        UPDATE ledger SET other_marks = other_marks - (old.hash & 2147483647) +
            (SELECT hash & 2147483647 FROM imports WHERE number = new.number);
    END;
    CREATE TRIGGER import_deleted AFTER DELETE ON imports BEGIN
        UPDATE ledger SET others = others - 1, other_marks = other_marks - (old.hash & 2147483647);
    END;
    )sql",
    // What requests to create have made, written with it: one that is repeated after a restart is not done again.
    R"sql(
    CREATE TABLE requests(
        number INTEGER PRIMARY KEY,
        key INTEGER NOT NULL UNIQUE,
        pk INTEGER NOT NULL);
    )sql",
};

}  // namespace

std::span<const char* const> Migrations() {
    return Steps;
}

}  // namespace ZorvicUnit
