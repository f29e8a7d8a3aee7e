#include "store/mending.h"

#include "fault.h"
#include "files/file_copy.h"
#include "files/names.h"
#include "store/connection.h"
#include "store/copies.h"
#include "store/migrations.h"
#include "store/row_hash.h"
#include "store/salvage.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <ctime>
#include <map>
#include <system_error>
#include <utility>
#include <vector>

namespace ZorvicUnit {

namespace {

using std::filesystem::path;

path MendedOf(const path& file) {
    return file.string() + "-mended";
}

struct GoodCopy {
    path File;
    Salvage Content;
};

std::optional<GoodCopy> NewestGoodCopy(const path& file) {
    for (const path& copy : Copies(file).Files()) {
        Salvage content = ReadWhatIsThere(copy);
        if (content.Counted && content.Unreadable.empty() && Proves(*content.Counted, content.Presets))
            return GoodCopy{copy, std::move(content)};
        spdlog::error("store: the copy {} is damaged too", copy.string());
    }
    return std::nullopt;
}

/// What the new database shall hold.
struct Plan {
    std::map<std::int64_t, PresetRow> Presets;
    std::int64_t Changes = 0;
    std::int64_t LastKey = 0;
    std::vector<std::string> Losses;
    std::optional<Ledger> Counted;  ///< tells of settings and orders
    path Source;                    ///< what tells which these are
};

// The ledger tells which presets must be there, so that most of what looks lost can be proved complete.
Plan FillFrom(const path& file, const std::optional<GoodCopy>& copy, Salvage&& found) {
    Plan plan{std::move(found.Presets), found.Counted->Changes, found.LastKey, {}, *found.Counted, file};
    if (copy) {
        for (const std::int64_t key : found.Unreadable)
            if (const auto kept = copy->Content.Presets.find(key); kept != copy->Content.Presets.end())
                plan.Presets.insert(*kept);
        auto both = plan.Presets;
        both.insert(copy->Content.Presets.begin(), copy->Content.Presets.end());
        const bool missing = std::cmp_less(plan.Presets.size(), found.Counted->Presets);
        if (!Proves(*found.Counted, plan.Presets) && (missing || Proves(*found.Counted, both)))
            plan.Presets = std::move(both);
    }
    if (Proves(*found.Counted, plan.Presets)) return plan;
    for (const std::int64_t key : found.Unreadable)
        plan.Losses.push_back(plan.Presets.contains(key)
                                  ? fmt::format("preset {} may be as it was when {} was made", key, copy->File.string())
                                  : fmt::format("preset {} cannot be read, and no copy has it", key));
    plan.Losses.push_back(
        fmt::format("{} presets should be there, {} are", found.Counted->Presets, plan.Presets.size()));
    return plan;
}

bool Reaches(const Salvage& content, std::optional<std::int64_t> acknowledged) {
    return content.Counted && content.Counted->Changes >= acknowledged.value_or(0);
}

Plan MakePlan(const DamagedDatabase& damaged) {
    const auto copy = NewestGoodCopy(damaged.File);
    Salvage found = ReadWhatIsThere(damaged.File, copy ? copy->Content.LastKey : 0);
    if (Reaches(found, damaged.Acknowledged)) return FillFrom(damaged.File, copy, std::move(found));
    if (copy && Reaches(copy->Content, damaged.Acknowledged)) {
        const Ledger& counted = *copy->Content.Counted;
        Plan plan{copy->Content.Presets, counted.Changes, found.LastKey, {}, counted, copy->File};
        if (!damaged.Acknowledged)
            plan.Losses.push_back("what was changed after " + copy->File.string() + " was made is lost");
        return plan;
    }
    if (!damaged.Acknowledged && !found.Presets.empty())
        return {std::move(found.Presets),
                0,
                found.LastKey,
                {"nothing tells whether all presets are there"},
                {},
                damaged.File};
    const std::string best =
        copy ? fmt::format("the newest copy {} has {}", copy->File.string(), copy->Content.Counted->Changes)
             : "there is no copy of it";
    const bool any = copy || HoldsSomething(damaged.File);
    throw Fault(
        FaultKind::Internal,
        fmt::format("{}; {} changes were acknowledged, and {}. Put the files back, or remove {} to go on with {}",
                    damaged.Damage, damaged.Acknowledged.value_or(0), best, damaged.Evidence.string(),
                    any ? "what can be read" : "a new store"));
}

class OtherDatabase {
public:
    OtherDatabase(Connection& target, const path& file) : Target(target) {
        auto attach = Target.Prepare("ATTACH ? AS other");
        attach.Bind(file.string()).Run();
    }
    ~OtherDatabase() {
        try {
            Target.Execute("DETACH other");
        } catch (const Fault& fault) {
            spdlog::error("{}", fault.what());
        }
    }
    OtherDatabase(const OtherDatabase&) = delete;
    OtherDatabase& operator=(const OtherDatabase&) = delete;

    bool HasHashes() const { return Target.Number("PRAGMA other.user_version") >= RowHashVersion; }

private:
    Connection& Target;
};

const HashedTable& Orders = HashedTables[1];
// The schema that brought the keys of requests.
constexpr std::int64_t RequestsVersion = 6;

void Run(Connection& target, const std::string& sql) {
    target.Execute(sql.c_str());
}

void Take(Connection& target, const HashedTable& table, const std::string& which) {
    Run(target, fmt::format("INSERT OR IGNORE INTO main.{0}({1}) SELECT {1} FROM other.{0} WHERE {2}", table.Name,
                            table.Columns, which));
}

std::string IsWhole(const HashedTable& table) {
    return fmt::format("hash = row_hash({})", table.Columns);
}

/// What a database, damaged or not, told of its rows that are no presets.
struct OtherRows {
    std::vector<std::string> Spoilt;
    bool Orders = false;  ///< whether it told which there are
};

// Takes those that are whole; which orders are not stays in temp.spoilt.
OtherRows TakeRows(Connection& target, const path& from) {
    const OtherDatabase other(target, from);
    const bool hashes = other.HasHashes();
    OtherRows found;
    for (const HashedTable& table : HashedTables) {
        try {
            if (hashes) {
                auto rows = target.Prepare(
                    fmt::format("SELECT {} FROM other.{} WHERE NOT {}", table.What, table.Name, IsWhole(table)));
                while (rows.Step())
                    found.Spoilt.push_back(ForLog(rows.Text(0)));
            }
            Take(target, table, hashes ? IsWhole(table) : "true");
            found.Orders = &table == &Orders;
        } catch (const Fault& fault) {
            spdlog::error("{}", fault.what());
        }
    }
    if (hashes && found.Orders)
        Run(target,
            fmt::format("INSERT INTO temp.spoilt SELECT number FROM other.imports WHERE NOT {}", IsWhole(Orders)));
    return found;
}

// Orders that are there and not in the source have been carried out since, unless that cannot tell.
void TakeRowsFromOther(Connection& target, const path& file, bool allOrders) {
    const OtherDatabase other(target, file);
    for (const HashedTable& table : HashedTables)
        Take(target, table,
             fmt::format("{} AND {}", other.HasHashes() ? IsWhole(table) : "true",
                         &table == &Orders && !allOrders ? "number IN temp.spoilt" : "true"));
}

// What others know may be of another show.
void TakeRequests(Connection& target, const path& from) {
    const OtherDatabase other(target, from);
    if (target.Number("PRAGMA other.user_version") >= RequestsVersion)
        Run(target, "INSERT OR IGNORE INTO main.requests SELECT * FROM other.requests");
}

// Each source for itself: what one has lost must not cost the others.
void TakeOtherRows(Connection& target, const path& database, const path& source) {
    Run(target, "CREATE TEMP TABLE spoilt(number)");
    OtherRows found;
    const auto attempt = [](const path& from, const auto& take) {
        try {
            if (HoldsSomething(from)) take();
        } catch (const Fault& fault) {
            spdlog::error("{}", fault.what());
        }
    };
    attempt(source, [&] { found = TakeRows(target, source); });
    attempt(source, [&] { TakeRequests(target, source); });
    for (const std::string& row : found.Spoilt)
        spdlog::error("store: the {} is damaged: as it was when a copy was made, or lost", row);
    std::vector<path> others = Copies(database).Files();
    others.push_back(database);
    std::erase(others, source);
    for (const path& other : others) {
        attempt(other, [&] {
            TakeRowsFromOther(target, other, !found.Orders);
            found.Orders = true;
        });
    }
}

void Write(Connection& target, const Plan& plan) {
    Transaction transaction(target);
    for (const auto& [key, row] : plan.Presets)
        target.Prepare("INSERT INTO presets(pk, record, hash) VALUES(?, ?, ?)")
            .Bind(key)
            .BindBlob(row.Record)
            .Bind(row.Hash)
            .Run();
    target.Execute("DELETE FROM sqlite_sequence WHERE name = 'presets'");
    target.Prepare("INSERT INTO sqlite_sequence(name, seq) VALUES('presets', ?)").Bind(plan.LastKey).Run();
    // The key of a preset that is gone may be given to another.
    target.Execute("DELETE FROM requests WHERE pk NOT IN (SELECT pk FROM presets)");
    target.Prepare("UPDATE ledger SET changes = ?").Bind(plan.Changes).Run();
    transaction.Commit();
}

// False when settings or orders are lost, or older than they were.
bool ReportLostRows(Connection& target, const std::optional<Ledger>& counted) {
    if (counted) {
        const Ledger found = ReadLedger(target).value_or(Ledger());
        if (counted->Others == 0 || (found.Others == counted->Others && found.OtherMarks == counted->OtherMarks))
            return true;
        spdlog::error("store: {} settings and orders to import should be there, {} are, some perhaps of an older copy",
                      counted->Others, found.Others);
    }
    if (target.Number("SELECT count(*) FROM settings WHERE name = 'guid'") == 0)
        spdlog::error("store: the unit's identifier is lost: for consoles and certificates it is another unit now");
    return false;
}

// False when that cost settings or orders.
bool Build(const DamagedDatabase& damaged, const Plan& plan) {
    bool complete = false;
    const path part = MendedOf(damaged.File).string() + ".part";
    std::filesystem::remove(part);
    {
        Connection target(part, Connection::Access::Make);
        target.KeepLogOnClose(true);
        target.Migrate(Migrations());
        TakeOtherRows(target, damaged.File, plan.Source);
        Write(target, plan);
        complete = ReportLostRows(target, plan.Counted);
    }
    SyncFile(part);
    std::filesystem::rename(part, MendedOf(damaged.File));
    SyncDirectory(damaged.File.parent_path());
    return complete;
}

path AsideOf(const path& file) {
    std::tm now{};
    const std::time_t seconds = std::time(nullptr);
    gmtime_r(&seconds, &now);
    const std::string base =
        fmt::format("{}-damaged-{:04}{:02}{:02}", file.string(), now.tm_year + 1900, now.tm_mon + 1, now.tm_mday);
    path aside = base;
    for (int number = 2; std::filesystem::exists(aside); ++number)
        aside = fmt::format("{}-{}", base, number);
    return aside;
}

}  // namespace

void Mend(const DamagedDatabase& damaged) {
    const Plan plan = MakePlan(damaged);
    spdlog::error("{}", damaged.Damage);
    for (const std::string& loss : plan.Losses)
        spdlog::error("store: {}", loss);
    const bool complete = Build(damaged, plan) && plan.Losses.empty();
    FinishMending(damaged.File);
    spdlog::error("store: {} was made anew with {} presets, {}", damaged.File.string(), plan.Presets.size(),
                  complete ? "all that were acknowledged" : "what could be read");
}

// The log goes first: it must never meet another database than its own.
void FinishMending(const path& file) {
    if (!std::filesystem::exists(MendedOf(file))) return;
    const path aside = AsideOf(file);
    std::error_code missing;
    std::filesystem::create_hard_link(file, aside, missing);
    if (missing) std::filesystem::copy_file(file, aside, missing);  // not every file system has links
    std::filesystem::rename(file.string() + "-wal", aside.string() + "-wal", missing);
    std::filesystem::remove(file.string() + "-shm", missing);
    SyncDirectory(file.parent_path());
    std::filesystem::rename(MendedOf(file), file);
    SyncDirectory(file.parent_path());
    spdlog::error("store: the damaged database is kept as {}", aside.string());
}

}  // namespace ZorvicUnit
