#include "store/mending.h"

#include "fault.h"
#include "files/file_copy.h"
#include "store/connection.h"
#include "store/copies.h"
#include "store/migrations.h"
#include "store/salvage.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <ctime>
#include <map>
#include <set>
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
};

// The ledger tells which presets must be there, so that most of what looks lost can be proved complete.
Plan FillFrom(const std::optional<GoodCopy>& copy, Salvage&& found) {
    Plan plan{std::move(found.Presets), found.Counted->Changes, found.LastKey, {}};
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
    if (Reaches(found, damaged.Acknowledged)) return FillFrom(copy, std::move(found));
    if (copy && Reaches(copy->Content, damaged.Acknowledged)) {
        Plan plan{copy->Content.Presets, copy->Content.Counted->Changes, found.LastKey, {}};
        if (!damaged.Acknowledged)
            plan.Losses.push_back("what was changed after " + copy->File.string() + " was made is lost");
        return plan;
    }
    if (!damaged.Acknowledged && !found.Presets.empty())
        return {std::move(found.Presets), 0, found.LastKey, {"nothing tells whether all presets are there"}};
    const std::string best =
        copy ? fmt::format("the newest copy {} has {}", copy->File.string(), copy->Content.Counted->Changes)
             : "there is no copy of it";
    const bool any = copy || HoldsSomething(damaged.File);
    throw Fault(
        FaultKind::Internal,
        fmt::format("{}; {} changes were acknowledged, and {}. Put the files back, or remove {} to go on with {}",
                    damaged.Damage, damaged.Acknowledged.value_or(0), best, damaged.SealFile.string(),
                    any ? "what can be read" : "a new store"));
}

using Tables = std::set<std::string>;

// Each table for itself: what one has lost must not cost the others. Gives those that could not be read.
Tables CopyTables(Connection& target, const path& from, Tables tables) {
    if (!HoldsSomething(from)) return tables;
    try {
        auto attach = target.Prepare("ATTACH ? AS other");
        attach.Bind(from.string()).Run();
    } catch (const Fault&) {
        return tables;
    }
    std::erase_if(tables, [&](const std::string& table) {
        try {
            target.Execute(fmt::format("INSERT OR IGNORE INTO {0} SELECT * FROM other.{0}", table).c_str());
            return true;
        } catch (const Fault&) {
            return false;
        }
    });
    target.Execute("DETACH other");
    return tables;
}

// A copy has orders that were done since, and the keys of requests to what may be another show.
void CopyTables(Connection& target, const DamagedDatabase& damaged) {
    Tables wanted = CopyTables(target, damaged.File, {"settings", "imports", "requests"});
    for (const std::string& lost : wanted)
        spdlog::error("store: {} has no {} that can be read", damaged.File.string(), lost);
    wanted.insert("settings");
    wanted.erase("imports");
    for (const path& copy : Copies(damaged.File).Files())
        CopyTables(target, copy, wanted);
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

void Build(const DamagedDatabase& damaged, const Plan& plan) {
    const path part = MendedOf(damaged.File).string() + ".part";
    std::filesystem::remove(part);
    {
        Connection target(part, Connection::Access::Make);
        target.KeepLogOnClose(true);
        target.Migrate(Migrations());
        CopyTables(target, damaged);
        Write(target, plan);
    }
    SyncFile(part);
    std::filesystem::rename(part, MendedOf(damaged.File));
    SyncDirectory(damaged.File.parent_path());
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
    Build(damaged, plan);
    FinishMending(damaged.File);
    spdlog::error("store: {} was made anew with {} presets, {}", damaged.File.string(), plan.Presets.size(),
                  plan.Losses.empty() ? "all that were acknowledged" : "those that could be read");
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
