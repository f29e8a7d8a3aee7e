#include "store/examination.h"

#include "store/connection.h"
#include "store/copies.h"
#include "store/evidence.h"
#include "store/ledger.h"
#include "store/mending.h"
#include "store/migrations.h"
#include "store/salvage.h"
#include "store/seal.h"
#include "store/sqlite_fault.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace ZorvicUnit {

namespace {

std::string Missing(const std::filesystem::path& file, const std::filesystem::path& evidence, const char* how) {
    return fmt::format("{} is {}, and {} says that the store has been used", file.string(), how, evidence.string());
}

// SQLite would make an empty database in the place of the lost one, and remove its log. False for a new store.
bool IsUsed(const std::filesystem::path& file, const Seal& seal) {
    if (HoldsSomething(file)) return true;
    const auto evidence = EvidenceOfUse(file, seal);
    if (!evidence) return false;
    throw StoreDamage(Missing(file, *evidence, std::filesystem::exists(file) ? "empty" : "missing"));
}

void CheckVersion(std::int64_t version) {
    if (version >= 0 && std::cmp_less_equal(version, Migrations().size())) return;
    throw Fault(FaultKind::Internal, fmt::format("store: schema {} was written by a newer version of this program "
                                                 "(this one knows up to {})",
                                                 version, Migrations().size()));
}

// A copy is on disk for certain, where the seal may lag after a power cut. Without a readable seal, older files may
// have been put back on purpose.
std::optional<std::int64_t> AcknowledgedIn(const std::filesystem::path& file, const Seal& seal) {
    const auto sealed = seal.Changes();
    return sealed ? std::optional(std::max(*sealed, Copies(file).Changes())) : std::nullopt;
}

// The copies that are made from now on would take the place of what somebody may yet want.
void KeepNewerCopies(const std::filesystem::path& file, std::int64_t changes) {
    const Copies copies(file);
    if (copies.Changes() <= changes) return;
    for (const auto& [copy, kept] : copies.SetAside())
        spdlog::warn("store: {} holds changes that {} does not: kept as {}", copy.string(), file.string(),
                     kept.string());
}

void CheckChanges(Connection& database, const Seal& seal) {
    const auto acknowledged = AcknowledgedIn(database.File(), seal);
    const auto ledger = ReadLedger(database);
    const std::int64_t changes = ledger ? ledger->Changes : -1;
    if (acknowledged && *acknowledged > changes)
        throw StoreDamage(fmt::format("the end of what was stored is lost: {} has {} changes and {} were acknowledged",
                                      database.File().string(), std::max<std::int64_t>(changes, 0), *acknowledged));
    if (acknowledged || !ledger) return;
    spdlog::warn("store: {} is {}: nothing tells whether the latest changes are there", seal.File().string(),
                 seal.Exists() ? "damaged" : "missing");
    KeepNewerCopies(database.File(), changes);
}

void Examine(const std::filesystem::path& file, const Seal& seal) {
    if (!IsUsed(file, seal)) return;
    Connection database(file, Connection::Access::Write);
    // Until it is known to be whole, closing must not bring a log into it that may be the only way to mend it.
    database.KeepLogOnClose(true);
    CheckVersion(database.SchemaVersion());
    const auto evidence = EvidenceOfUse(file, seal);
    if (database.SchemaVersion() == 0 && evidence && *evidence != file.string() + "-wal")
        throw StoreDamage(Missing(file, *evidence, "without content"));
    CheckContent(database);
    CheckChanges(database, seal);
}

}  // namespace

void MakeFit(const std::filesystem::path& file, const std::function<void(const std::string&)>& tell) {
    FinishMending(file);
    const Seal seal(file.string() + "-seal");
    try {
        Examine(file, seal);
        return;
    } catch (const StoreDamage& damage) {
        Mend({file, EvidenceOfUse(file, seal).value_or(seal.File()), AcknowledgedIn(file, seal), damage.what()});
        if (tell) tell(std::string("the store was mended: ") + damage.what());
    }
    Examine(file, seal);
}

}  // namespace ZorvicUnit
