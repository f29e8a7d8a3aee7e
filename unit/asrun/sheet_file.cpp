#include "asrun/sheet_file.h"

#include "store/connection.h"
#include "store/sqlite_fault.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace ZorvicUnit {

namespace {

constexpr std::size_t RemovedAtOnce = 200;
// More than a batch adds, so that a sheet whose limit was lowered shrinks.
constexpr int MostRemovals = 60;
// A wall clock that is wrong for a while may not empty the sheet.
constexpr std::chrono::minutes AgingPeriod(10);
constexpr std::size_t AgedAtOnce = 1000;

}  // namespace

SheetFile::SheetFile(std::filesystem::path file, SheetLimits limits) : File(std::move(file)), Limits(limits) {}

SheetFile::~SheetFile() = default;

bool SheetFile::IsOpen() const {
    const std::scoped_lock lock(Lock);
    return Rows != nullptr;
}

std::string SheetFile::TakeTrouble() {
    const std::scoped_lock lock(Lock);
    return std::exchange(Trouble, {});
}

std::optional<std::int64_t> SheetFile::Open() {
    const std::scoped_lock lock(Lock);
    try {
        Make();
    } catch (const StoreDamage& damage) {
        BeginAnew(damage.what());
    }
    NumberAtStart = Known.Number;
    return Known.Open ? std::optional(Known.AliveUS) : std::nullopt;
}

// Commits wait for no disk: a kill loses none of them, and a power cut costs the latest rather than time of a write
// that somebody waits for.
void SheetFile::Make() {
    auto rows = std::make_unique<Connection>(File, Connection::Access::Make);
    rows->UseLog();
    rows->Execute("PRAGMA synchronous = NORMAL");
    if (std::cmp_greater(rows->SchemaVersion(), SheetTable::Steps().size()))
        throw StoreDamage("it was written by a newer version of this program");
    rows->Migrate(SheetTable::Steps());
    Known = SheetTable(*rows).Load();
    Rows = std::move(rows);
    Damaged = false;
}

void SheetFile::BeginAnew(const std::string& why) {
    Rows.reset();
    SetAside();
    Trouble = fmt::format("the as-run sheet before this one is set aside as {}-damaged: {}", File.string(), why);
    spdlog::warn("{}", Trouble);
    Make();
}

// Two of them are kept: what damages sheets again and again must not fill the disk.
void SheetFile::SetAside() const {
    const std::string name = File.string();
    std::error_code missing;
    for (const char* part : {"-wal", ""}) {
        std::filesystem::rename(name + "-damaged" + part, name + "-damaged-before" + part, missing);
        std::filesystem::rename(name + part, name + "-damaged" + part, missing);
    }
    std::filesystem::remove(name + "-shm", missing);
}

void SheetFile::Write(Batch batch, std::int64_t nowUS) {
    const std::scoped_lock lock(Lock);
    if (!Rows) throw Fault(FaultKind::Internal, "the as-run sheet is not open");
    try {
        if (Damaged) throw StoreDamage("it could not be read");
        TryWrite(batch, nowUS);
    } catch (const StoreDamage& damage) {
        BeginAnew(damage.what());
        TryWrite(batch, nowUS);
    }
}

void SheetFile::TryWrite(Batch& batch, std::int64_t nowUS) {
    SheetTable::State next = Known;
    next.Open = true;
    next.AliveUS = nowUS;
    Transaction transaction(*Rows);
    SheetTable table(*Rows);
    for (auto entry : batch) {
        entry.set_number(NumberAtStart + entry.number());
        entry.set_change(++next.Change);
        next.Number = std::max(next.Number, entry.number());
        table.Put(entry);
    }
    table.Save(next);
    Prune(table, nowUS);
    transaction.Commit();
    Known = next;
}

void SheetFile::Prune(SheetTable& table, std::int64_t nowUS) {
    for (int removals = 0; table.Size() > Limits.Bytes && removals < MostRemovals; ++removals)
        table.RemoveOldest(RemovedAtOnce);
    const auto now = std::chrono::steady_clock::now();
    if (now < NextAging) return;
    NextAging = now + AgingPeriod;
    table.RemoveBefore(nowUS - std::chrono::microseconds(Limits.Age).count(), AgedAtOnce);
}

void SheetFile::Close(std::int64_t nowUS) {
    const std::scoped_lock lock(Lock);
    if (!Rows) return;
    Known.Open = false;
    Known.AliveUS = nowUS;
    SheetTable(*Rows).Save(Known);
    Rows.reset();
}

SheetFile::Batch SheetFile::Read(Place& place) {
    const std::scoped_lock lock(Lock);
    if (!Rows) throw Fault(FaultKind::Refused, "this unit keeps no as-run sheet now");
    try {
        SheetTable table(*Rows);
        if (place.Sheet != Known.Id) {
            place.Sheet = Known.Id;
            place.After = table.ChangeBefore(place.SinceUS, place.Limit);
        }
        auto entries = table.Find({.After = place.After, .SinceUS = place.SinceUS, .Most = PageSize});
        if (!entries.empty()) place.After = entries.back().change();
        return entries;
    } catch (const StoreDamage&) {
        Damaged = true;  // for the next write
        throw;
    }
}

}  // namespace ZorvicUnit
