#include "asrun/sheet_table.h"

#include "store/connection.h"

#include <array>

namespace ZorvicUnit {

namespace {

// Entries are read in the order of their changes, from a time on.
constexpr std::array<const char*, 1> Schema = {R"sql(
    CREATE TABLE entries(
        number INTEGER PRIMARY KEY,
        change INTEGER NOT NULL,
        wall_us INTEGER NOT NULL,
        record BLOB NOT NULL);
    CREATE UNIQUE INDEX entries_change ON entries(change);
    CREATE INDEX entries_wall ON entries(wall_us, change);
    CREATE TABLE state(
        id INTEGER NOT NULL,
        number INTEGER NOT NULL,
        change INTEGER NOT NULL,
        alive_us INTEGER NOT NULL,
        open INTEGER NOT NULL);
    INSERT INTO state VALUES(abs(random()), 0, 0, 0, 0);
    )sql"};

std::int64_t Signed(std::uint64_t number) {
    return static_cast<std::int64_t>(number);
}

std::uint64_t Unsigned(std::int64_t number) {
    return static_cast<std::uint64_t>(number);
}

}  // namespace

std::span<const char* const> SheetTable::Steps() {
    return Schema;
}

SheetTable::State SheetTable::Load() {
    auto row = Rows.Prepare("SELECT id, number, change, alive_us, open FROM state");
    if (!row.Step()) return {};
    return {.Id = Unsigned(row.Integer(0)),
            .Number = Unsigned(row.Integer(1)),
            .Change = Unsigned(row.Integer(2)),
            .AliveUS = row.Integer(3),
            .Open = row.Integer(4) != 0};
}

void SheetTable::Save(const State& state) {
    auto row = Rows.Prepare("UPDATE state SET number = ?, change = ?, alive_us = ?, open = ?");
    row.Bind(Signed(state.Number)).Bind(Signed(state.Change)).Bind(state.AliveUS).Bind(std::int64_t{state.Open}).Run();
}

void SheetTable::Put(const zorvic::v1::AsRunEntry& entry) {
    auto row = Rows.Prepare("INSERT OR REPLACE INTO entries(number, change, wall_us, record) VALUES(?, ?, ?, ?)");
    row.Bind(Signed(entry.number())).Bind(Signed(entry.change())).Bind(entry.wall_us());
    row.BindBlob(entry.SerializeAsString()).Run();
}

// The plus keeps the database from collecting and sorting all that is young enough.
std::vector<zorvic::v1::AsRunEntry> SheetTable::Find(const Query& query) {
    std::vector<zorvic::v1::AsRunEntry> entries;
    auto rows = Rows.Prepare("SELECT record FROM entries WHERE change > ? AND +wall_us >= ? ORDER BY change LIMIT ?");
    rows.Bind(Signed(query.After)).Bind(query.SinceUS).Bind(static_cast<std::int64_t>(query.Most));
    while (rows.Step()) {
        zorvic::v1::AsRunEntry entry;
        if (entry.ParseFromString(rows.Blob(0))) entries.push_back(std::move(entry));
    }
    return entries;
}

std::uint64_t SheetTable::ChangeBefore(std::int64_t sinceUS, std::uint32_t limit) {
    if (limit > 0) {
        auto newest =
            Rows.Prepare("SELECT change FROM entries WHERE +wall_us >= ? ORDER BY change DESC LIMIT 1 OFFSET ?");
        if (newest.Bind(sinceUS).Bind(std::int64_t{limit}).Step()) return Unsigned(newest.Integer(0));
    }
    if (sinceUS <= 0) return 0;
    auto first = Rows.Prepare("SELECT MIN(change) FROM entries WHERE wall_us >= ?");
    return first.Bind(sinceUS).Step() && first.Integer(0) > 0 ? Unsigned(first.Integer(0) - 1) : 0;
}

std::uint64_t SheetTable::Size() {
    return Unsigned((Rows.Number("PRAGMA page_count") - Rows.Number("PRAGMA freelist_count")) *
                    Rows.Number("PRAGMA page_size"));
}

void SheetTable::RemoveOldest(std::size_t count) {
    auto rows =
        Rows.Prepare("DELETE FROM entries WHERE number IN (SELECT number FROM entries ORDER BY number LIMIT ?)");
    rows.Bind(static_cast<std::int64_t>(count)).Run();
}

void SheetTable::RemoveBefore(std::int64_t wallUS, std::size_t most) {
    auto rows =
        Rows.Prepare("DELETE FROM entries WHERE number IN (SELECT number FROM entries WHERE wall_us < ? LIMIT ?)");
    rows.Bind(wallUS).Bind(static_cast<std::int64_t>(most)).Run();
}

}  // namespace ZorvicUnit
