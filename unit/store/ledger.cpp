#include "store/ledger.h"

#include "files/names.h"
#include "store/connection.h"
#include "store/migrations.h"
#include "store/preset_row.h"
#include "store/row_hash.h"
#include "store/sqlite_fault.h"

#include <spdlog/fmt/fmt.h>

#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace ZorvicUnit {

namespace {

// The schema that brought the ledger.
constexpr std::int64_t LedgerVersion = 2;

// With the indexes: a row that is not found by its key can be neither changed nor removed.
void CheckPages(Connection& database) {
    auto statement = database.Prepare("PRAGMA integrity_check(1)");
    const std::string answer = statement.Step() ? statement.Text(0) : "no answer";
    if (answer != "ok") throw StoreDamage(answer);
}

Ledger CountPresets(Connection& database) {
    Ledger found;
    auto rows = database.Prepare("SELECT pk, record, hash FROM presets");
    while (rows.Step()) {
        const PresetRow row{rows.Integer(0), rows.Blob(1), rows.Integer(2)};
        if (!row.IsWhole()) throw StoreDamage(fmt::format("the record of preset {}", row.PK));
        ++found.Presets;
        found.Marks += row.Mark();
    }
    return found;
}

std::string SchemaOf(Connection& database) {
    std::string schema;
    auto rows = database.Prepare("SELECT name, tbl_name, sql FROM sqlite_schema ORDER BY name");
    while (rows.Step())
        schema += rows.Text(0) + '\n' + rows.Text(1) + '\n' + rows.Text(2) + '\n';
    return schema;
}

// What the steps up to this version make.
std::string RightSchema(std::int64_t version) {
    static std::mutex lock;
    static std::map<std::int64_t, std::string> known;
    const std::scoped_lock held(lock);
    std::string& schema = known[version];
    if (schema.empty()) {
        Connection fresh(":memory:", Connection::Access::Make);
        fresh.Migrate(Migrations().first(static_cast<std::size_t>(version)));
        schema = SchemaOf(fresh);
    }
    return schema;
}

// A trigger that the disk has spoilt would count wrongly from now on.
void CheckSchema(Connection& database, std::int64_t version) {
    if (std::cmp_greater(version, Migrations().size())) return;  // of a newer version, which nobody here can judge
    if (SchemaOf(database) != RightSchema(version)) throw StoreDamage("its schema");
}

void CountOthers(Connection& database, Ledger& found) {
    constexpr std::int64_t Bits = 0x7FFF'FFFF;
    for (const HashedTable& table : HashedTables) {
        auto rows = database.Prepare(
            fmt::format("SELECT hash, row_hash({}), {} FROM {}", table.Columns, table.What, table.Name));
        while (rows.Step()) {
            if (rows.Integer(0) != rows.Integer(1)) throw StoreDamage("the " + ForLog(rows.Text(2)));
            ++found.Others;
            found.OtherMarks += rows.Integer(0) & Bits;
        }
    }
}

}  // namespace

std::optional<Ledger> ReadLedger(Connection& database) {
    const std::int64_t version = database.SchemaVersion();
    if (version < LedgerVersion) return std::nullopt;
    auto row =
        database.Prepare(version < RowHashVersion ? "SELECT changes, presets, marks, 0, 0 FROM ledger"
                                                  : "SELECT changes, presets, marks, others, other_marks FROM ledger");
    if (!row.Step()) return std::nullopt;
    return Ledger{row.Integer(0), row.Integer(1), row.Integer(2), row.Integer(3), row.Integer(4)};
}

void CheckContent(Connection& database) {
    CheckPages(database);
    const std::int64_t version = database.SchemaVersion();
    if (version == 0) return;
    Ledger found = CountPresets(database);
    if (version < LedgerVersion) return;
    const auto ledger = ReadLedger(database);
    if (!ledger) throw StoreDamage("its ledger is gone");
    found.Changes = ledger->Changes;
    if (version >= RowHashVersion) {
        CheckSchema(database, version);
        CountOthers(database, found);
    }
    if (found != *ledger)
        throw StoreDamage(
            fmt::format("it should hold {} presets and {} settings and orders, and holds {} and {}, or others",
                        ledger->Presets, ledger->Others, found.Presets, found.Others));
}

}  // namespace ZorvicUnit
