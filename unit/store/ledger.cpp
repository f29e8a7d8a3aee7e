#include "store/ledger.h"

#include "store/connection.h"
#include "store/preset_row.h"
#include "store/sqlite_fault.h"

#include <spdlog/fmt/fmt.h>

#include <string>

namespace ZorvicUnit {

namespace {

// The schema that brought the ledger.
constexpr std::int64_t LedgerVersion = 2;

void CheckPages(Connection& database) {
    auto statement = database.Prepare("PRAGMA quick_check(1)");
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

}  // namespace

std::optional<Ledger> ReadLedger(Connection& database) {
    if (database.SchemaVersion() < LedgerVersion) return std::nullopt;
    auto row = database.Prepare("SELECT changes, presets, marks FROM ledger");
    if (!row.Step()) return std::nullopt;
    return Ledger{row.Integer(0), row.Integer(1), row.Integer(2)};
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
    if (found != *ledger)
        throw StoreDamage(
            fmt::format("it should hold {} presets and holds {}, or others", ledger->Presets, found.Presets));
}

}  // namespace ZorvicUnit
